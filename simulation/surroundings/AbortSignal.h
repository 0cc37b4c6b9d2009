// The request to end a run, and the knock that has a run look again at what it waits for.
#pragma once

#include <atomic>
#include <cstdint>

#include "common/Mutex.h"

namespace VELTRO::KELVO::Simulation {

class AbortSignal {
 public:
  void Raise() {
    raised_.store(true, std::memory_order_relaxed);
    Wake();
  }
  void Clear() { raised_.store(false, std::memory_order_relaxed); }
  bool IsRaised() const { return raised_.load(std::memory_order_relaxed); }

  // Ends the wait that is under way. Whoever changes what a run may wait for calls it afterwards.
  void Wake() {
    const ClientLib::MutexLock lock(mutex_);
    ++wakes_;
    changed_.NotifyAll();
  }
  // Read before what is waited for is looked at, so that no change in between is missed.
  std::uint64_t GetWakes() {
    const ClientLib::MutexLock lock(mutex_);
    return wakes_;
  }
  // Returns at `deadline`, or when Wake was called since GetWakes gave `wakes`, or earlier.
  void WaitUntil(ClientLib::CondVar::TimePoint deadline, std::uint64_t wakes) {
    ClientLib::MutexLock lock(mutex_);
    if (wakes_ == wakes) changed_.WaitUntil(lock, deadline);
  }

 private:
  ClientLib::Mutex mutex_;
  ClientLib::CondVar changed_;
  std::uint64_t wakes_ KELVO_GUARDED_BY(mutex_) = 0;
  std::atomic<bool> raised_{false};
};

}  // namespace VELTRO::KELVO::Simulation
