// A mutex, its lock and its condition variable, annotated for clang's thread-safety analysis, which checks at
// compile time that what a mutex guards is touched under it only.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define KELVO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define KELVO_THREAD_ANNOTATION(x)
#endif

#define KELVO_GUARDED_BY(mutex) KELVO_THREAD_ANNOTATION(guarded_by(mutex))
#define KELVO_REQUIRES(mutex) KELVO_THREAD_ANNOTATION(requires_capability(mutex))
#define KELVO_EXCLUDES(mutex) KELVO_THREAD_ANNOTATION(locks_excluded(mutex))

namespace VELTRO::KELVO::ClientLib {

class KELVO_THREAD_ANNOTATION(capability("mutex")) Mutex {
 private:
  friend class MutexLock;
  std::mutex mutex_;
};

class KELVO_THREAD_ANNOTATION(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) KELVO_THREAD_ANNOTATION(acquire_capability(mutex)) : lock_(mutex.mutex_) {}
  ~MutexLock() KELVO_THREAD_ANNOTATION(release_capability()) = default;
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  friend class CondVar;
  std::unique_lock<std::mutex> lock_;
};

class CondVar {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  void Wait(MutexLock& lock) { condition_.wait(lock.lock_); }
  // Returns at the latest at `deadline`; may return early, so look at what was waited for.
  void WaitUntil(MutexLock& lock, TimePoint deadline) { condition_.wait_until(lock.lock_, deadline); }
  void NotifyOne() { condition_.notify_one(); }
  void NotifyAll() { condition_.notify_all(); }

 private:
  std::condition_variable condition_;
};

}  // namespace VELTRO::KELVO::ClientLib
