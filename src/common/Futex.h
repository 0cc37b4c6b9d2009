// Sleeping on a word of memory: what costs no system call when nobody has to sleep, and one when somebody has to.
#pragma once

#include <atomic>
#include <cstdint>

#include "common/Deadline.h"

namespace VELTRO::KELVO::ClientLib {

using FutexWord = std::atomic<std::uint32_t>;

// Sleeps as long as `word` is `value` and nobody wakes; false when `deadline` has come. May return early.
bool FutexWait(FutexWord& word, std::uint32_t value, Deadline deadline);
// Wakes one thread that sleeps on the word.
void FutexWake(FutexWord& word);

// Whether two threads of this one's kind can run at once.
bool HasProcessors();

// Wakes the one thread that waits for it; a post that comes before is kept.
class Signal {
 public:
  void Post() {
    if (state_.exchange(Posted, std::memory_order_release) == Awaited) FutexWake(state_);
  }
  // Whether it was posted before `deadline`; takes the post.
  bool WaitUntil(Deadline deadline) {
    for (;;) {
      std::uint32_t state = Posted;
      if (state_.compare_exchange_strong(state, Empty, std::memory_order_acquire)) return true;
      if (state == Empty && !state_.compare_exchange_strong(state, Awaited, std::memory_order_relaxed))
        continue;
      if (!FutexWait(state_, Awaited, deadline)) return TakeLate();
    }
  }
  void Wait() { WaitUntil(Deadline::max()); }
  bool IsPosted() const { return state_.load(std::memory_order_acquire) == Posted; }

 private:
  enum : std::uint32_t { Empty, Awaited, Posted };

  // The deadline has come: takes a post of the last moment.
  bool TakeLate() { return state_.exchange(Empty, std::memory_order_acquire) == Posted; }

  FutexWord state_{Empty};
};

// A lock that is waited for until a deadline.
class TimedLock {
 public:
  bool TryLock() {
    std::uint32_t state = Free;
    return state_.compare_exchange_strong(state, Held, std::memory_order_acquire);
  }
  // False when the lock is not free before `deadline`.
  bool LockUntil(Deadline deadline) {
    if (TryLock() || TryLockForAMoment()) return true;
    while (state_.exchange(Wanted, std::memory_order_acquire) != Free) {
      if (!FutexWait(state_, Wanted, deadline)) return false;
    }
    return true;
  }
  void Unlock() {
    if (state_.exchange(Free, std::memory_order_release) == Wanted) FutexWake(state_);
  }

 private:
  enum : std::uint32_t { Free, Held, Wanted };

  // Looks again and again, where whoever holds the lock can be running meanwhile.
  bool TryLockForAMoment();

  FutexWord state_{Free};
  const bool hasProcessors_ = HasProcessors();
};

}  // namespace VELTRO::KELVO::ClientLib
