// What holds at the start of every run: the card's process variables, as the commands that set the same.
#pragma once

#include "config/ProcessVariables.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::Simulation {

// They run ahead of the list, so that a variable and its command are checked and take effect in one way.
ClientLib::CommandList StartingValues(const ClientLib::ProcessVariables& variables);

}  // namespace VELTRO::KELVO::Simulation
