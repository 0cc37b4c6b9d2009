// The card's ports of pins.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/KelvoAPIEnums.h"
#include "config/Record.h"
#include "peripherals/PeripheralEnums.h"

namespace VELTRO::KELVO::ClientLib {

// One port of 32 pins: a group of fields without a version.
struct GpioPort {
  // clang-format off
  KELVO_FIELDS(
      (IODirection, Direction, IODirection::Input),
      (IOVoltage, Voltage, IOVoltage::Volt24),
      (Polarity, PinPolarity, Polarity::ActiveHigh),
      (double, DebounceTime, 0),
      (std::string, PortName, {}),
      (std::vector<std::string>, PinNames, {}))
  // clang-format on

  std::string ToString() const;
};

// Both count from 0.
struct PinPlace {
  std::int32_t Port;
  std::int32_t Pin;
};

class GpioConfig : public Record<GpioConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 1;
  static constexpr std::string_view WireName = "GpioConfig";
  static constexpr std::string_view Name = WireName;

  // The card's ports by turns, beginning with an input.
  static std::vector<GpioPort> DefaultPorts();
  // Throws std::runtime_error "There is no pin 'NAME'.".
  PinPlace FindPin(std::string_view name) const;

  KELVO_FIELDS((std::vector<GpioPort>, Ports, DefaultPorts()))
};

extern template class Record<GpioConfig>;

}  // namespace VELTRO::KELVO::ClientLib
