#pragma once

#include <vector>

namespace VELTRO::KELVO::Bench {

void PrintMachine();

std::vector<int> AllowedCpus();

// Every thread of the process, not only the caller's: code under test may keep threads from an earlier mode.
void PinAllThreads(const std::vector<int>& cpus);

}  // namespace VELTRO::KELVO::Bench
