// The fuzzers' own check.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace VELTRO::KELVO::Fuzz {

// A check that fails ends the process, which makes libFuzzer keep the input.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s\n", what);
  std::abort();
}

}  // namespace VELTRO::KELVO::Fuzz
