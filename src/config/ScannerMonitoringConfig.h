// How the card watches its scan heads.
#pragma once

#include <vector>

#include "common/KelvoAPIEnums.h"
#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

// ScanHeadAxes has an entry for each head.
class ScannerMonitoringConfig : public Record<ScannerMonitoringConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 2;
  static constexpr const char* Name = "ScannerMonitoringConfig";

  // clang-format off
  KELVO_FIELDS(
      (bool, Enabled, false),
      (bool, UsePingPong, false),
      (std::uint32_t, Command, 21120),
      (std::uint32_t, Mask, 11136),
      (std::uint32_t, GoodValue, 11136),
      (std::uint32_t, Command1, 0),
      (std::uint32_t, Mask1, 0),
      (std::uint32_t, GoodValue1, 0),
      (std::uint32_t, Period, 1000),
      (std::uint32_t, MinConsecutiveErrors, 3),
      (bool, ContinueOnError, false),
      (std::vector<Axes>, ScanHeadAxes, {Axes::XY}))
  // clang-format on
};

extern template class Record<ScannerMonitoringConfig>;

}  // namespace VELTRO::KELVO::ClientLib
