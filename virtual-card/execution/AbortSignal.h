// The request to end a run, which also ends every wait in it.
#pragma once

#include <atomic>

#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

class AbortSignal {
 public:
  void Raise() {
    const ClientLib::MutexLock lock(mutex_);
    raised_.store(true, std::memory_order_relaxed);
    changed_.NotifyAll();
  }
  void Clear() { raised_.store(false, std::memory_order_relaxed); }
  bool IsRaised() const { return raised_.load(std::memory_order_relaxed); }

  // Returns at `deadline` or when the signal is raised, or earlier.
  void WaitUntil(ClientLib::CondVar::TimePoint deadline) {
    ClientLib::MutexLock lock(mutex_);
    if (!IsRaised()) changed_.WaitUntil(lock, deadline);
  }

 private:
  ClientLib::Mutex mutex_;  // for the wait only
  ClientLib::CondVar changed_;
  std::atomic<bool> raised_{false};
};

}  // namespace VELTRO::KELVO::VirtualCard
