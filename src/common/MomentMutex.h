// A mutex for moments: one atomic exchange to take it and a store to leave it, half of what an ordinary one costs.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "common/Mutex.h"

namespace VELTRO::KELVO::ClientLib {

// For what is held for nanoseconds nearly always and wanted by one thread nearly always. Whoever has to wait for
// longer sleeps in small steps, so that the holder gets the processor whatever the threads' priorities.
class KELVO_THREAD_ANNOTATION(capability("mutex")) MomentMutex {
 private:
  friend class MomentLock;

  void Lock() {
    if (held_.exchange(true, std::memory_order_acquire)) Wait();
  }
  [[gnu::noinline]] void Wait() {
    constexpr int Looks = 100;
    constexpr std::chrono::microseconds Sleep{50};
    do {
      for (int looks = 0; held_.load(std::memory_order_relaxed); ++looks) {
        if (looks >= Looks) std::this_thread::sleep_for(Sleep);
      }
    } while (held_.exchange(true, std::memory_order_acquire));
  }
  void Unlock() { held_.store(false, std::memory_order_release); }

  std::atomic<bool> held_ = false;
};

class KELVO_THREAD_ANNOTATION(scoped_lockable) MomentLock {
 public:
  explicit MomentLock(MomentMutex& mutex) KELVO_THREAD_ANNOTATION(acquire_capability(mutex)) : mutex_(mutex) {
    mutex_.Lock();
  }
  ~MomentLock() KELVO_THREAD_ANNOTATION(release_capability()) { mutex_.Unlock(); }
  MomentLock(const MomentLock&) = delete;
  MomentLock& operator=(const MomentLock&) = delete;

 private:
  MomentMutex& mutex_;
};

}  // namespace VELTRO::KELVO::ClientLib
