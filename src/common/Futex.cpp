#include "common/Futex.h"

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>

namespace VELTRO::KELVO::ClientLib {

static_assert(FutexWord::is_always_lock_free && sizeof(FutexWord) == sizeof(std::uint32_t));

bool FutexWait(FutexWord& word, std::uint32_t value, Deadline deadline) {
  // The bit set makes the time an absolute one, of the clock that steady_clock is.
  const auto sinceBoot = deadline.time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceBoot);
  timespec time{};
  time.tv_sec = seconds.count();
  time.tv_nsec = std::chrono::nanoseconds(sinceBoot - seconds).count();
  const timespec* const until = deadline == Deadline::max() ? nullptr : &time;
  const long result =
      syscall(SYS_futex, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAIT_BITSET | FUTEX_PRIVATE_FLAG,
              value, until, nullptr, FUTEX_BITSET_MATCH_ANY);
  return result == 0 || errno != ETIMEDOUT;
}

void FutexWake(FutexWord& word) {
  syscall(SYS_futex, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAKE | FUTEX_PRIVATE_FLAG, 1, nullptr,
          nullptr, 0);
}

bool HasProcessors() {
  cpu_set_t processors;
  // It fails where there are more of them than such a set has room for.
  return sched_getaffinity(0, sizeof processors, &processors) != 0 || CPU_COUNT(&processors) > 1;
}

bool TimedLock::TryLockForAMoment() {
  // A short frame is sent in less, and to sleep and be woken takes more.
  constexpr std::chrono::microseconds Moment{5};
  if (!hasProcessors_) return false;
  const Deadline end = std::chrono::steady_clock::now() + Moment;
  do {
    if (state_.load(std::memory_order_relaxed) == Free && TryLock()) return true;
  } while (std::chrono::steady_clock::now() < end);
  return false;
}

}  // namespace VELTRO::KELVO::ClientLib
