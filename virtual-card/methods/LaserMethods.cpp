#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

std::span<const Method> LaserMethods() {
  static constexpr Method Rows[] = {
      // Outside of runs the virtual laser shines on nothing.
      {"LaserOn", [](Card&) {}},
      {"LaserOff", [](Card&) {}},
      {"EnablePilot", [](Card& card, bool on) { card.Laser.EnablePilot(on); }},
      {"IsPilotEnabled", [](Card& card) { return card.Laser.IsPilotEnabled(); }},
      {"ArmLaser", [](Card& card, bool on) { card.Laser.Arm(on); }},
      {"IsLaserArmed", [](Card& card) { return card.Laser.IsArmed(); }},
      {"ReadLaserStatus", [](Card& card) { return card.Laser.GetStatus(); }},
      {"SetPowerScaleByTarget",
       [](Card& card, std::int32_t target, double scale) { card.Laser.SetPowerScale(target, scale); }},
      {"GetPowerScaleByTarget",
       [](Card& card, std::int32_t target) { return card.Laser.GetPowerScale(target); }},
      {"CreatePowerCalibrationByEngine",
       [](Card& card, std::int32_t engine) { card.Laser.CreateCalibration(engine); }},
      {"LoadPowerCalibrationByEngine",
       [](Card& card, std::int32_t engine) { card.Laser.LoadCalibration(engine); }},
      {"StorePowerCalibrationByEngine",
       [](Card& card, std::int32_t engine) { card.Laser.StoreCalibration(engine); }},
      {"GetPowerCalibrationByEngine",
       [](Card& card, std::int32_t engine) { return card.Laser.GetCalibration(engine); }},
      {"SetPowerCalibrationByEngine",
       [](Card& card, CardLaser::Calibration values, std::int32_t engine) {
         card.Laser.SetCalibration(engine, std::move(values));
       }},
  };
  return Rows;
}

std::span<const Method> ConfigurationMethods() {
  static constexpr Method Rows[] = {
      {"BeginUpdate", [](Card& card) { card.Configuration.BeginUpdate(); }},
      {"EndUpdate", [](Card& card) { card.Configuration.EndUpdate(true); }},
      {"AbortUpdate", [](Card& card) { card.Configuration.EndUpdate(false); }},
      {"IsUpdateActive", [](Card& card) { return card.Configuration.IsUpdateActive(); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
