#include "base/WorkMemory.h"

#include <algorithm>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

std::size_t WorkMemory::Take(std::size_t bytes) {
  bytes = std::min(bytes, most_);
  MutexLock lock(mutex_);
  const std::uint64_t number = waiting_++;
  while (next_ != number || bytes > most_ - used_) changed_.Wait(lock);
  used_ += bytes;
  ++next_;
  changed_.NotifyAll();
  return bytes;
}

void WorkMemory::Give(std::size_t bytes) {
  const MutexLock lock(mutex_);
  used_ -= bytes;
  changed_.NotifyAll();
}

void WorkLease::Take(std::size_t bytes) {
  Give();
  if (bytes <= FreeBytes) return;
  memory_ = bytes <= WorkMemories::UsualBytes ? &memories_.Usual : &memories_.Large;
  taken_ = memory_->Take(bytes);
}

void WorkLease::Give() {
  if (taken_ > 0) memory_->Give(std::exchange(taken_, 0));
}

}  // namespace VELTRO::KELVO::VirtualCard
