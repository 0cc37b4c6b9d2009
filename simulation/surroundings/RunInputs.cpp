#include "surroundings/RunInputs.h"

#include <utility>

namespace VELTRO::KELVO::Simulation {

using ClientLib::MutexLock;

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
  if (isRehearsed_ && !start_) {
    waits_.Raise();
    return true;
  }
  return std::exchange(start_, false);
}

bool RunInputs::TakeResume() {
  const MutexLock lock(mutex_);
  return std::exchange(resume_, false) || isRehearsed_;
}

void RunInputs::BeginRun() {
  const MutexLock lock(mutex_);
  start_ = resume_ = false;
}

void RunInputs::Rehearse() {
  const MutexLock lock(mutex_);
  isRehearsed_ = start_ = true;
}

}  // namespace VELTRO::KELVO::Simulation
