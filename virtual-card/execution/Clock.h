// The simulated clock of one run, in microseconds from its start.
#pragma once

#include <chrono>

#include "execution/AbortSignal.h"

namespace VELTRO::KELVO::VirtualCard {

class Clock {
 public:
  // `speed` is simulated time per real time; infinite: nothing is waited for.
  Clock(double speed, AbortSignal& abort) : speed_(speed), abort_(abort) {}

  // Lets time pass and returns how much did: less than `duration` when the run is aborted meanwhile, nothing
  // when it has been. Real time follows to within LeadUs. Throws std::runtime_error "The run takes too
  // long.".
  double Advance(double duration);
  // Waits until real time has caught up with simulated time.
  void CatchUp() { WaitForRealTime(0); }

  double Now() const { return now_; }
  bool IsAborted() const { return abort_.IsRaised(); }
  // Real microseconds since the start in which nothing was waited for.
  double GetComputationTime() const { return RealTime() - waited_; }

 private:
  using Steady = std::chrono::steady_clock;

  // A wait for each short vector would cost more than it takes.
  static constexpr double LeadUs = 1000;

  double RealTime() const;
  void WaitForRealTime(double lead);

  const double speed_;
  AbortSignal& abort_;
  const Steady::time_point start_ = Steady::now();
  double now_ = 0;
  double waited_ = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
