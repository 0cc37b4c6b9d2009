// The adapter board, which brings the card's pins to the connectors of a laser and a machine.
#pragma once

#include <string>
#include <string_view>

#include "config/Record.h"
#include "peripherals/PeripheralEnums.h"

namespace VELTRO::KELVO::ClientLib {

class AdapterBoardConfig : public Record<AdapterBoardConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 4;
  static constexpr std::string_view WireName = "AdapterBoardConfig";
  // clang-format off
  KELVO_FIELDS(
      (IOVoltage, InputVoltage, IOVoltage::Volt24),
      (IOVoltage, OutputVoltage, IOVoltage::Volt24),
      (IOVoltage, LaserVoltage, IOVoltage::Volt5),
      (bool, EnableTermination, false))
  // clang-format on
};

// Texts are empty when no board is there.
struct AdapterBoardIdentity {
  static constexpr std::string_view WireName = "AdapterBoardIdentity";
  static constexpr std::string_view Name = WireName;

  KELVO_FIELDS((std::string, Type, {}), (std::string, SerialNumber, {}), (std::string, Revision, {}))
};

extern template class Record<AdapterBoardConfig>;

}  // namespace VELTRO::KELVO::ClientLib
