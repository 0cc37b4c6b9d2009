#include <cmath>

#include "execution/CommandTable.h"
#include "execution/Conditions.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::CommandCode2;

namespace {

void Sleep(Run& run, double duration) {
  if (!std::isfinite(duration) || duration < 0) {
    throw std::runtime_error("The duration must be finite and not negative.");
  }
  run.Galvos.Sleep(duration);
}

// The value goes out when the run is there in real time, too.
void Progress(Run& run, std::int32_t value) {
  run.Time.CatchUp();
  if (!run.Time.IsAborted()) run.Around.TellProgress(value);
}

// A negative time-out is none.
template <class F>
void WaitFor(Run& run, std::int32_t timeout, F condition) {
  run.Galvos.EndMarks();
  run.Time.WaitFor(timeout < 0 ? Clock::Forever : timeout, condition);
}

}  // namespace

std::span<const CommandRow> WaitCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::PROGRESS_ID, [](Run& run, std::int32_t value) { Progress(run, value); }},
      {CommandCode::SLEEP, [](Run& run, double duration) { Sleep(run, duration); }},
      {CommandCode::WAIT_START,
       [](Run& run, std::int32_t timeout) {
         WaitFor(run, timeout, [&run] { return run.Around.Inputs.TakeStart(); });
       }},
      {CommandCode::WAIT_INPUT,
       [](Run& run, InputCondition input, std::int32_t timeout) {
         WaitFor(run, timeout, [&run, input] { return input.Holds(run); });
       }},
      {CommandCode2::WAIT_SIGNAL,
       [](Run& run, std::uint32_t name, std::int32_t timeout) {
         WaitFor(run, timeout, [&run, name] { return run.Around.Variables.IsSignalSet(name); });
       }},
      {CommandCode2::SUSPEND,
       [](Run& run) { WaitFor(run, -1, [&run] { return run.Around.Inputs.TakeResume(); }); }},
      // Conditions are evaluated when the galvos are there.
      {CommandCode2::EVALUATION_LEADTIME, [](Run&, double) {}},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
