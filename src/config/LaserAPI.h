// The laser: its configuration, the laser itself outside of lists, and its power calibration.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/LaserConfig.h"
#include "config/RecordAPI.h"

namespace VELTRO::KELVO::ClientLib {

class LaserAPI : public RecordAPI<LaserConfig> {
 public:
  using Calibration = std::vector<std::uint32_t>;

  using RecordAPI::RecordAPI;

  void LaserOn() { caller_.Call("LaserOn"); }
  void LaserOff() { caller_.Call("LaserOff"); }
  void EnablePilot(bool on) { caller_.Call("EnablePilot", on); }
  bool IsPilotEnabled() { return caller_.Call<bool>("IsPilotEnabled"); }
  void ArmLaser(bool on) { caller_.Call("ArmLaser", on); }
  bool IsLaserArmed() { return caller_.Call<bool>("IsLaserArmed"); }
  // LaserStatus flags.
  std::int32_t ReadLaserStatus() { return caller_.Call<std::int32_t>("ReadLaserStatus"); }
  void SetPowerScale(int target, double scale) { caller_.Call("SetPowerScaleByTarget", target, scale); }
  double GetPowerScale(int target) { return caller_.Call<double>("GetPowerScaleByTarget", target); }
  void CreatePowerCalibration(int engine) { caller_.Call("CreatePowerCalibrationByEngine", engine); }
  void LoadPowerCalibration(int engine) { caller_.Call("LoadPowerCalibrationByEngine", engine); }
  void StorePowerCalibration(int engine) { caller_.Call("StorePowerCalibrationByEngine", engine); }
  Calibration GetPowerCalibration(int engine) {
    return caller_.Call<Calibration>("GetPowerCalibrationByEngine", engine);
  }
  void SetPowerCalibration(const Calibration& values, int engine) {
    caller_.Call("SetPowerCalibrationByEngine", values, engine);
  }
  // Writes the table to a file, a value a line; a file that is there stays until all is well (ReplacedFile). Throws
  // std::runtime_error "Cannot open 'PATH': REASON." before the card is asked, or "Cannot write 'PATH'.".
  void GetPowerCalibration(const std::string& path, int engine);
  // Sends the table of a file. Throws std::runtime_error "Cannot open 'PATH': REASON.", "Cannot read 'PATH'.", "Illegal
  // format!", or "'PATH' is too long for a power calibration." beyond 1048576 values or 16 MiB, and sends nothing then.
  void SetPowerCalibration(const std::string& path, int engine);
};

}  // namespace VELTRO::KELVO::ClientLib
