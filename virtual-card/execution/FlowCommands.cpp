#include <cmath>

#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::VirtualCard {

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
  if (!run.Time.IsAborted()) run.Clients.NotifyProgress(value);
}

void StartLoop(Run& run, std::int32_t count) {
  const std::size_t end = run.Commands.LoopEndOf(run.Current);
  if (count > 0) {
    run.Loops.push_back({run.Current, end, count});
  } else {
    run.Next = end + 1;
  }
}

void EndLoop(Run& run) {
  // Whoever goes round a loop has come through its start: nothing else leads into it.
  Run::Loop& loop = run.Loops.back();
  if (--loop.PassesLeft > 0) {
    run.Next = loop.Start + 1;
  } else {
    run.Loops.pop_back();
  }
}

void BreakLoop(Run& run) {
  if (run.Loops.empty()) throw std::runtime_error("No loop is open here.");
  run.Next = run.Loops.back().End + 1;
  run.Loops.pop_back();
}

}  // namespace

std::span<const CommandRow> FlowCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::NOOP, [](Run&) {}},
      {CommandCode::PROGRESS_ID, [](Run& run, std::int32_t value) { Progress(run, value); }},
      {CommandCode::SLEEP, [](Run& run, double duration) { Sleep(run, duration); }},
      {CommandCode2::LOOP_START, [](Run& run, std::int32_t count, std::int32_t) { StartLoop(run, count); }},
      {CommandCode2::LOOP_END, [](Run& run, std::int32_t) { EndLoop(run); }},
      {CommandCode2::LOOP_BREAK, [](Run& run) { BreakLoop(run); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
