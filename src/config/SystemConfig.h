// What holds for the card as a whole.
#pragma once

#include <string>

#include "config/Record.h"
#include "config/ScannerMonitoringConfig.h"

namespace VELTRO::KELVO::ClientLib {

class SystemConfig : public Record<SystemConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 5;
  static constexpr std::string_view WireName = "SystemConfig";
  static constexpr std::string_view Name = WireName;

  // clang-format off
  KELVO_FIELDS(
      (std::string, TimeZone, "UTC"),
      (bool, EnableStandAloneMode, false),
      (std::int32_t, StandAloneListID, 0),
      (std::int32_t, StandAloneExecuteOnErrorListID, 0),
      (ScannerMonitoringConfig, ScannerMonitoring, {}))
  // clang-format on
};

extern template class Record<SystemConfig>;

}  // namespace VELTRO::KELVO::ClientLib
