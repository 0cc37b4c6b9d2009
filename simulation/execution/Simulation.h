// A list's way from its commands to motion to a drawing.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "drawing/Canvas.h"
#include "execution/Carets.h"
#include "execution/Clock.h"
#include "execution/GalvoPosition.h"
#include "execution/Motion.h"
#include "execution/Program.h"
#include "lists/ListExecutionStats.h"
#include "surroundings/RunSurroundings.h"

namespace VELTRO::KELVO::Simulation {

struct RunSettings {
  double Speed = 1;                                 // simulated time per real time; infinite: no waiting
  std::optional<std::int32_t> StandaloneList = {};  // that GOTO_STANDALONE_LIST branches to
  double Limit = Clock::Forever;                   // simulated microseconds after which it ends with an error
  std::uint64_t MostCommands = ~std::uint64_t{0};  // after which it ends with an error
  // Nothing changes outside while it runs: a wait without end for what is not there is an error.
  bool IsAlone = false;
};

struct RunResult {
  ClientLib::ListExecutionStats Stats;
  MotionTotals Totals;
  std::optional<std::string> Error;
  std::optional<CommandPlace> ErrorPlace;  // when it is about a command of a list that has an id
  bool Aborted;
};

// What a run leaves behind, and others may look at while it goes on.
struct RunTraces {
  Carets& Places;                        // in the lists
  GalvoPosition& Position;               // where it begins, too
  Canvas& Picture;                       // of which it is one run
  std::atomic<std::uint64_t>& Commands;  // counts those that are carried out, as nobody else does meanwhile
};

// Runs the list to its end, in the calling thread. What fails, for want of memory also, is the run's error.
RunResult Simulate(const RunSettings& settings, const RunSurroundings& surroundings, const RunTraces& traces,
                   std::int32_t listId, ListSnapshot list) noexcept;

}  // namespace VELTRO::KELVO::Simulation
