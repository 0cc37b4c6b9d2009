// Runs of the tool that are logged because the user has said so once for all of them ("log on").
#pragma once

#include <string>

namespace VELTRO::KELVO::Tool {

// From now on each run of this user's tool has a log of its own in this directory, which is made if it is not there;
// none for an empty text. Throws Failure, Refused.
void LogRunsIn(const std::string& directory);
// Where this run's log goes; empty without any.
std::string FileOfLoggedRun();

}  // namespace VELTRO::KELVO::Tool
