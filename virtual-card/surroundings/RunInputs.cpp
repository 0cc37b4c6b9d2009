#include "surroundings/RunInputs.h"

#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

void RunInputs::Set(std::int32_t port, std::uint32_t bits) {
  {
    const MutexLock lock(mutex_);
    ports_[port] = bits;
  }
  waits_.Wake();
}

std::uint32_t RunInputs::Get(std::int32_t port) {
  const MutexLock lock(mutex_);
  const auto found = ports_.find(port);
  return found == ports_.end() ? 0 : found->second;
}

void RunInputs::Start() {
  {
    const MutexLock lock(mutex_);
    start_ = true;
  }
  waits_.Wake();
}

void RunInputs::Resume() {
  {
    const MutexLock lock(mutex_);
    resume_ = true;
  }
  waits_.Wake();
}

bool RunInputs::TakeStart() {
  const MutexLock lock(mutex_);
  return std::exchange(start_, false);
}

bool RunInputs::TakeResume() {
  const MutexLock lock(mutex_);
  return std::exchange(resume_, false);
}

void RunInputs::BeginRun() {
  const MutexLock lock(mutex_);
  start_ = resume_ = false;
}

}  // namespace VELTRO::KELVO::VirtualCard
