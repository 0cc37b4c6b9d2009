// The simulated clock of one run, in microseconds from its start.
#pragma once

#include <chrono>
#include <cmath>
#include <functional>
#include <limits>

#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::Simulation {

class Clock {
 public:
  static constexpr double Forever = std::numeric_limits<double>::infinity();

  // `speed` is simulated time per real time; infinite: nothing is waited for. At `limit` the run has expired. When it
  // `isAlone`, nothing comes from outside: what is not there does not come.
  Clock(double speed, AbortSignal& abort, double limit, bool isAlone = false)
      : speed_(speed), abort_(abort), limit_(limit), isAlone_(isAlone) {}

  // Lets time pass and returns how much did: less than `duration` when the run is aborted or expires
  // meanwhile, nothing when it has been. Real time follows to within LeadUs. Throws std::runtime_error "The
  // run takes too long.".
  double Advance(double duration);
  // Lets time pass until `condition` holds, `timeout` is over (Forever: none) or the run is aborted or
  // expires. Without waiting for real time the time-out passes at once; for want of one, time passes as it
  // really does, or, alone, std::runtime_error "It waits for what does not come." is thrown.
  void WaitFor(double timeout, const std::function<bool()>& condition);
  // The same for what happens outside, so that the time-out is of real time at any speed.
  void WaitForOutside(double timeout, const std::function<bool()>& condition);
  // Waits until real time has caught up with simulated time.
  void CatchUp() { WaitForRealTime(0); }

  double Now() const { return now_; }
  // Whether the run is to end: it was aborted, or has expired.
  bool IsAborted() const { return abort_.IsRaised() || expired_; }
  // Throws std::runtime_error "The run has reached the execution limit of N ms." when it has expired.
  void CheckLimit() const {
    if (expired_) RefuseLimit();
  }
  // Real microseconds since the start in which nothing was waited for.
  double GetComputationTime() const { return RealTime() - waited_; }

 private:
  using Steady = std::chrono::steady_clock;

  // A wait for each short vector would cost more than it takes.
  static constexpr double LeadUs = 1000;

  // Simulated time per real time while something outside is waited for.
  double Pace() const { return std::isinf(speed_) ? 1 : speed_; }
  // Real time passes until `condition` holds or, in simulated time, `timeout` is over.
  void Wait(double timeout, const std::function<bool()>& condition);
  double RealTime() const;
  void WaitForRealTime(double lead);
  [[noreturn]] void RefuseLimit() const;

  const double speed_;
  AbortSignal& abort_;
  const double limit_;
  const bool isAlone_;
  const Steady::time_point start_ = Steady::now();
  double now_ = 0;
  double waited_ = 0;
  bool expired_ = false;
};

}  // namespace VELTRO::KELVO::Simulation
