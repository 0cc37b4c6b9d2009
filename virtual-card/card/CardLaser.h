// The laser as clients see and switch it outside of lists.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "card/StateDirectory.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. Nothing here draws: only runs do.
class CardLaser {
 public:
  using Calibration = std::vector<std::uint32_t>;

  static constexpr int Engines = 2;

  explicit CardLaser(StateDirectory& directory) : directory_(directory) {}

  void EnablePilot(bool on);
  bool IsPilotEnabled();
  void Arm(bool on);
  bool IsArmed();
  // LaserStatus flags.
  std::int32_t GetStatus();

  // Throw std::runtime_error "There is no power target TARGET.".
  void SetPowerScale(std::int32_t target, double scale);
  double GetPowerScale(std::int32_t target);

  // Throw std::runtime_error "There is no laser engine ENGINE.".
  void CreateCalibration(std::int32_t engine);  // 0, 1, ..., 255
  // Throws also std::runtime_error "The power calibration has too many values.".
  void SetCalibration(std::int32_t engine, Calibration values);
  Calibration GetCalibration(std::int32_t engine);
  void StoreCalibration(std::int32_t engine);
  void LoadCalibration(std::int32_t engine);  // without a stored one: empty

 private:
  static std::string NameOf(std::int32_t engine);

  StateDirectory& directory_;
  ClientLib::Mutex mutex_;
  bool pilot_ KELVO_GUARDED_BY(mutex_) = false;
  bool armed_ KELVO_GUARDED_BY(mutex_) = false;
  std::map<std::int32_t, double> scales_ KELVO_GUARDED_BY(mutex_);  // those that are not 1
  std::map<std::int32_t, Calibration> calibrations_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
