// The card's SPI modules.
#pragma once

#include <string_view>
#include <vector>

#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

class SpiModule : public Record<SpiModule> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 1;
  // clang-format off
  KELVO_FIELDS(
      (std::int32_t, Mode, 0),
      (double, ClockFrequency, 1),
      (std::int32_t, WordLength, 8),
      (bool, LsbFirst, false),
      (bool, SelectActiveHigh, false))
  // clang-format on
};

class SpiConfig : public Record<SpiConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 3;
  static constexpr std::string_view WireName = "SpiConfig";
  static constexpr std::string_view Name = WireName;

  KELVO_FIELDS((std::vector<SpiModule>, Modules, std::vector<SpiModule>(2)))
};

extern template class Record<SpiModule>;
extern template class Record<SpiConfig>;

}  // namespace VELTRO::KELVO::ClientLib
