// The card's serial ports.
#pragma once

#include <string_view>
#include <vector>

#include "config/Record.h"
#include "peripherals/PeripheralEnums.h"

namespace VELTRO::KELVO::ClientLib {

class PortConfig : public Record<PortConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 1;
  // clang-format off
  KELVO_FIELDS(
      (std::int32_t, BaudRate, 115200),
      (std::int32_t, DataBits, 8),
      (SerialPortParity, Parity, SerialPortParity::None),
      (SerialPortStopBits, StopBits, SerialPortStopBits::One),
      (SerialPortHandshake, Handshake, SerialPortHandshake::None),
      (SerialPortLineEnd, LineEnd, SerialPortLineEnd::CrLf),
      (std::uint32_t, ResponseTimeout, 1000))
  // clang-format on
};

class SerialPortConfig : public Record<SerialPortConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 1;
  static constexpr std::string_view WireName = "SerialPortConfig";
  static constexpr std::string_view Name = WireName;

  KELVO_FIELDS((std::vector<PortConfig>, Ports, std::vector<PortConfig>(1)))
};

extern template class Record<PortConfig>;
extern template class Record<SerialPortConfig>;

}  // namespace VELTRO::KELVO::ClientLib
