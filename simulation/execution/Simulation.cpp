#include "execution/Simulation.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "execution/CommandInterpreter.h"
#include "execution/ErrorOf.h"
#include "execution/Motion.h"
#include "execution/Programs.h"
#include "execution/Run.h"
#include "execution/StartingValues.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::ListExecutionStats;

namespace {

// A count that its field cannot hold is told as the largest that it can.
std::int32_t Saturated(double count) {
  return static_cast<std::int32_t>(std::min<double>(count, std::numeric_limits<std::int32_t>::max()));
}

ListExecutionStats MakeStats(const Clock& clock, const Motion& motion) {
  ListExecutionStats stats;
  stats.MacroVectors = Saturated(static_cast<double>(motion.GetMacroVectors()));
  stats.MicroVectors = Saturated(motion.GetMicroVectors());
  stats.ComputationTime = clock.GetComputationTime();
  stats.ExecutionTime = clock.Now();
  if (stats.MicroVectors > 0) {
    stats.ComputationTimePerMicroVector = stats.ComputationTime / motion.GetMicroVectors();
  }
  return stats;
}

}  // namespace

RunResult Simulate(const RunSettings& settings, const RunSurroundings& surroundings, const RunTraces& traces,
                   std::int32_t listId, ListSnapshot list) noexcept {
  traces.Picture.BeginRun();
  Clock clock(settings.Speed, surroundings.Abort, settings.Limit, settings.IsAlone);
  Motion motion(clock, traces.Picture, traces.Position);
  std::optional<CommandPlace> place;
  std::optional<std::string> error = ErrorOf([&] {
    try {
      Programs programs(surroundings.Lists);
      CallStack calls(traces.Places);
      calls.Enter(programs.PrepareList(listId, std::move(list)));
      calls.Enter(std::make_shared<const Program>("Process variables",
                                                  StartingValues(surroundings.GetProcessVariables())));
      Run run{clock, motion, surroundings, programs, calls, settings.StandaloneList, traces.Commands};
      run.MostCommands = settings.MostCommands;
      Interpret(run);
    } catch (const CommandError& fault) {
      place = fault.GetPlace();
      throw;
    }
  });
  std::optional<std::string> another = ErrorOf([&] { motion.Stop(); });
  return {MakeStats(clock, motion), motion.GetTotals(), error ? std::move(error) : std::move(another), place,
          clock.IsAborted()};
}

}  // namespace VELTRO::KELVO::Simulation
