// Executes the commands of a run one after another.
#pragma once

#include "execution/Run.h"

namespace VELTRO::KELVO::VirtualCard {

// Returns at the end of the list, or when the run is aborted. Throws CommandError for a command that cannot
// be executed.
void Interpret(Run& run);

}  // namespace VELTRO::KELVO::VirtualCard
