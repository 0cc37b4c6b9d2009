// Memory in which requests are carried out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// Requests wait for each other where together they would take too much, first come, first served. None of them waits
// for anything but memory and processors, so each gets its turn. Any thread may call anything at any time.
class WorkMemory {
 public:
  explicit WorkMemory(std::size_t most) : most_(most) {}

  // Takes the bytes, or all there are when that is less, as soon as they are there; returns how many it took.
  std::size_t Take(std::size_t bytes);
  void Give(std::size_t bytes);

 private:
  const std::size_t most_;
  ClientLib::Mutex mutex_;
  ClientLib::CondVar changed_;
  std::size_t used_ KELVO_GUARDED_BY(mutex_) = 0;
  std::uint64_t waiting_ KELVO_GUARDED_BY(mutex_) = 0;  // the number of the next who comes
  std::uint64_t next_ KELVO_GUARDED_BY(mutex_) = 0;     // the number of the next who is served
};

// Usual requests have memory of their own, so that they never wait for large ones.
struct WorkMemories {
  static constexpr std::size_t UsualBytes = 16 << 20;

  WorkMemory Usual{128 << 20};
  WorkMemory Large{256 << 20};
};

// What one request has taken. One thread's.
class WorkLease {
 public:
  explicit WorkLease(WorkMemories& memories) : memories_(memories) {}
  ~WorkLease() { Give(); }
  WorkLease(const WorkLease&) = delete;
  WorkLease& operator=(const WorkLease&) = delete;

  // Waits for so many bytes in place of those that it has. A little is free: nobody waits for it.
  void Take(std::size_t bytes);
  void Give();

 private:
  static constexpr std::size_t FreeBytes = 131072;

  WorkMemories& memories_;
  WorkMemory* memory_ = nullptr;  // that it was taken from
  std::size_t taken_ = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
