// What the card has done so far.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace VELTRO::KELVO::VirtualCard {

struct CardCounters {
  using Counter = std::atomic<std::uint64_t>;

  const std::chrono::steady_clock::time_point Start = std::chrono::steady_clock::now();
  Counter Connections{0};  // that there are now
  Counter Calls{0};
  Counter FailedCalls{0};
  Counter Runs{0};
  Counter AbortedRuns{0};
  Counter ListCommands{0};
};

}  // namespace VELTRO::KELVO::VirtualCard
