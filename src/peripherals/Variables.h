// What is told of the card's variables.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "config/Record.h"
#include "peripherals/PeripheralEnums.h"

namespace VELTRO::KELVO::ClientLib {

// How INCR_COUNTER counts an integer: by Step; beyond Maximum it goes on at Minimum, and the other way round.
struct MarkCounter {
  static constexpr std::string_view WireName = "MarkCounter";
  // clang-format off
  KELVO_FIELDS(
      (std::int32_t, Start, 0),
      (std::int32_t, Step, 1),
      (std::int32_t, Minimum, std::numeric_limits<std::int32_t>::min()),
      (std::int32_t, Maximum, std::numeric_limits<std::int32_t>::max()))
  // clang-format on
};

// One that only lists have used has no name, as lists know variables by the hash of their names alone.
struct CardVariable {
  static constexpr std::string_view WireName = "CardVariable";
  static constexpr std::string_view Name = WireName;
  // clang-format off
  KELVO_FIELDS(
      (std::uint32_t, Id, 0),
      (VariableKind, Kind, VariableKind::Boolean),
      (std::int32_t, Value, 0),
      (std::string, VariableName, {}))
  // clang-format on
};

}  // namespace VELTRO::KELVO::ClientLib
