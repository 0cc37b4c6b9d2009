// What is wrong with the way through a list, found without running it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "lists/CommandList.h"

namespace VELTRO::KELVO::Simulation {

struct FlowFault {
  std::size_t First, Last;  // indices of commands
  std::string Text;
};

// Loops that do not match, branches that lead out of the list, commands that are never reached; those of each kind in the
// order of the list. Conditions may turn out either way.
std::vector<FlowFault> CheckFlow(const ClientLib::CommandList& list);

}  // namespace VELTRO::KELVO::Simulation
