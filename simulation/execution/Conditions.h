// Conditions of branches, calls, exits and waits, as values of their commands.
#pragma once

#include <cstdint>

#include "execution/Run.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::Simulation {

// On the bits of an input port that are in the mask.
struct InputCondition {
  std::uint32_t Mask;
  std::int32_t Port;
  bool Expected;  // the outcome for which the condition holds
  bool All;       // all bits must be those of the value; else one is enough
  std::uint32_t Value;

  static InputCondition Read(ClientLib::Command::CommandValueReader& values) {
    return {values.AsUInt32(), values.AsInt32(), values.AsBool(), values.AsBool(), values.AsUInt32()};
  }
  bool Holds(Run& run) const {
    const std::uint32_t equal = ~(run.Around.Ports.Get(Port) ^ Value) & Mask;
    return (All ? equal == Mask : equal != 0) == Expected;
  }
};

// On a boolean variable.
struct FlagCondition {
  std::uint32_t Name;
  bool Value;

  static FlagCondition Read(ClientLib::Command::CommandValueReader& values) {
    return {values.AsUInt32(), values.AsBool()};
  }
  bool Holds(Run& run) const { return run.Around.Variables.GetBoolean(Name) == Value; }
};

}  // namespace VELTRO::KELVO::Simulation
