// How the card drives its laser.
#pragma once

#include "common/KelvoAPIEnums.h"
#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

// The fields that end in 1 are those of the second power channel. The defaults are deliberately uneven.
class LaserConfig : public Record<LaserConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 8;
  static constexpr std::string_view WireName = "LaserConfig";
  // clang-format off
  KELVO_FIELDS(
      (Polarity, FpsPolarity, Polarity::ActiveHigh),
      (Polarity, GatePolarity, Polarity::ActiveHigh),
      (Polarity, LMPolarity, Polarity::ActiveHigh),
      (double, FpsStart, 0),
      (double, FpsWidth, 0),
      (double, GateSetup, 0),
      (double, GateHold, 0),
      (double, LaserTriggerDelay, 0),
      (double, PowerScale, 0),
      (double, PowerScale1, 0),
      (double, PowerChangeSetup, 0),
      (double, PowerWriteDelay, 1),
      (double, PowerWriteWidth, 2),
      (PowerTarget, HotPowerTarget, PowerTarget::Dac0),
      (PowerTarget, HotPowerTarget1, PowerTarget::None),
      (PowerTarget, SimmerPowerTarget, PowerTarget::Dac1),
      (std::uint16_t, SimmerPower, 0),
      (bool, EnableTickle, false),
      (double, TickleFrequency, 0),
      (double, TickleWidth, 0),
      (bool, EnableLaserSync, false),
      (bool, EnableGateModulatesLm, false),
      (bool, EnablePowerCorrection, false),
      (bool, EnablePowerCorrection1, false),
      (bool, EnableVelocityCorrection, false),
      (bool, EnableVelocityCorrection1, false),
      (bool, EnablePowerCalibration, false),
      (bool, EnablePowerCalibration1, false),
      (bool, EnableEquallySpacedPulses, false))
  // clang-format on
};

extern template class Record<LaserConfig>;

}  // namespace VELTRO::KELVO::ClientLib
