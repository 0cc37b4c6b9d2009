#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using Name = std::uint32_t;

std::span<const CommandRow> VariableCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::BOOLEAN_SET,
       [](Run& run, Name name, bool v) { run.Around.Variables.SetBoolean(name, v); }},
      {CommandCode::INTEGER_SET,
       [](Run& run, Name name, std::int32_t v) { run.Around.Variables.SetInteger(name, v); }},
      {CommandCode::INCR_COUNTER, [](Run& run, Name name) { run.Around.Variables.Increment(name); }},
      {CommandCode::SIGNAL_SET, [](Run& run, Name name) { run.Around.Variables.SetSignal(name, true); }},
      {CommandCode::SIGNAL_RESET, [](Run& run, Name name) { run.Around.Variables.SetSignal(name, false); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
