// Points in time that bound an operation as a whole, on the steady clock.
#pragma once

#include <algorithm>
#include <chrono>

namespace VELTRO::KELVO::ClientLib {

using Deadline = std::chrono::steady_clock::time_point;

// Now plus `timeout`; a time-out of many years must not wrap to the past.
inline Deadline DeadlineAfter(std::chrono::milliseconds timeout) {
  constexpr std::chrono::milliseconds longest = std::chrono::hours(24 * 365 * 10);
  return std::chrono::steady_clock::now() + std::min(timeout, longest);
}

// Whole milliseconds until `deadline`, rounded up so that a poll does not spin in the last one; 0 when it is
// over.
inline int MillisecondsUntil(Deadline deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1'000'000'000));
}

}  // namespace VELTRO::KELVO::ClientLib
