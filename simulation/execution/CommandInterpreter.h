// Executes the commands of a run one after another.
#pragma once

#include "execution/Run.h"

namespace VELTRO::KELVO::Simulation {

// Returns at the end of the list that the run is in, when real time is there, too; or when the run is aborted.
// Throws CommandError for a command that cannot be executed, or in which the run expired.
void Interpret(Run& run);

}  // namespace VELTRO::KELVO::Simulation
