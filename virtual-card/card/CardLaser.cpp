#include "card/CardLaser.h"

#include <numeric>
#include <stdexcept>
#include <utility>

#include "card/StoredForm.h"
#include "common/KelvoAPIEnums.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::LaserStatus;
using ClientLib::MutexLock;

namespace {

constexpr std::size_t CalibrationSteps = 256;
constexpr std::size_t MostSteps = 65536;

void Check(bool isThere, const char* what, std::int32_t number) {
  if (!isThere)
    throw std::runtime_error(std::string("There is no ") + what + " " + std::to_string(number) + ".");
}

void CheckTarget(std::int32_t target) {
  Check(ClientLib::PowerTarget::_is_valid(target), "power target", target);
}

void CheckEngine(std::int32_t engine) {
  Check(engine >= 0 && engine < CardLaser::Engines, "laser engine", engine);
}

}  // namespace

std::string CardLaser::NameOf(std::int32_t engine) {
  CheckEngine(engine);
  return "PowerCalibration" + std::to_string(engine);
}

void CardLaser::EnablePilot(bool on) {
  const MutexLock lock(mutex_);
  pilot_ = on;
}

bool CardLaser::IsPilotEnabled() {
  const MutexLock lock(mutex_);
  return pilot_;
}

void CardLaser::Arm(bool on) {
  const MutexLock lock(mutex_);
  armed_ = on;
}

bool CardLaser::IsArmed() {
  const MutexLock lock(mutex_);
  return armed_;
}

std::int32_t CardLaser::GetStatus() {
  return (IsPilotEnabled() ? LaserStatus::Pilot : 0) | (IsArmed() ? LaserStatus::Armed : 0);
}

void CardLaser::SetPowerScale(std::int32_t target, double scale) {
  CheckTarget(target);
  const MutexLock lock(mutex_);
  scales_[target] = scale;
}

double CardLaser::GetPowerScale(std::int32_t target) {
  CheckTarget(target);
  const MutexLock lock(mutex_);
  const auto found = scales_.find(target);
  return found == scales_.end() ? 1 : found->second;
}

void CardLaser::CreateCalibration(std::int32_t engine) {
  Calibration values(CalibrationSteps);
  std::iota(values.begin(), values.end(), 0U);
  SetCalibration(engine, std::move(values));
}

void CardLaser::SetCalibration(std::int32_t engine, Calibration values) {
  CheckEngine(engine);
  if (values.size() > MostSteps) throw std::runtime_error("The power calibration has too many values.");
  const MutexLock lock(mutex_);
  calibrations_[engine] = std::move(values);
}

CardLaser::Calibration CardLaser::GetCalibration(std::int32_t engine) {
  CheckEngine(engine);
  const MutexLock lock(mutex_);
  return calibrations_[engine];
}

void CardLaser::StoreCalibration(std::int32_t engine) {
  directory_.Write(NameOf(engine), ToStored(GetCalibration(engine)));
}

void CardLaser::LoadCalibration(std::int32_t engine) {
  const auto bytes = directory_.Read(NameOf(engine));
  SetCalibration(engine, bytes ? FromStored<Calibration>(*bytes) : Calibration());
}

}  // namespace VELTRO::KELVO::VirtualCard
