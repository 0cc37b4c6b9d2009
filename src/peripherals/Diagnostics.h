// What the card tells of itself.
#pragma once

#include <string>
#include <string_view>

#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

// A counter, which has no unit, or a temperature or the like.
struct Measurement {
  static constexpr std::string_view WireName = "Measurement";
  static constexpr std::string_view Name = WireName;

  KELVO_FIELDS((std::string, Quantity, {}), (double, Value, 0), (std::string, Unit, {}))
};

struct SelfTestResult {
  static constexpr std::string_view WireName = "SelfTestResult";
  static constexpr std::string_view Name = WireName;

  KELVO_FIELDS((std::string, Subject, {}), (bool, Passed, false), (std::string, Finding, {}))
};

}  // namespace VELTRO::KELVO::ClientLib
