// From the words of a command line to a verb and what was given for it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Verb.h"

namespace VELTRO::KELVO::Tool {

struct CommandLine {
  const Verb* Called;
  Arguments Given;  // for the verb's parameters and the common options
};

// Nothing when help or the version was asked for and has been printed. Throws Failure, WrongUsage.
std::optional<CommandLine> ParseCommandLine(const std::vector<std::string>& words);

}  // namespace VELTRO::KELVO::Tool
