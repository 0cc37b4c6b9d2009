// What comes to the card from outside while lists run, besides levels on its pins: the start input, the word to resume.
#pragma once

#include "common/Mutex.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::Simulation {

// Any thread may call anything at any time.
class RunInputs {
 public:
  // `waits` is woken by every change.
  explicit RunInputs(AbortSignal& waits) : waits_(waits) {}

  // Each is kept until the run takes it, so that a moment too early is not too early; but not beyond the run.
  void Start();
  void Resume();
  bool TakeStart();
  bool TakeResume();
  void BeginRun();
  // Nobody is outside: there is one start from now on, another wait for it ends the run, and to resume is always said.
  void Rehearse();

 private:
  AbortSignal& waits_;
  ClientLib::Mutex mutex_;
  bool start_ KELVO_GUARDED_BY(mutex_) = false;
  bool resume_ KELVO_GUARDED_BY(mutex_) = false;
  bool isRehearsed_ KELVO_GUARDED_BY(mutex_) = false;
};

}  // namespace VELTRO::KELVO::Simulation
