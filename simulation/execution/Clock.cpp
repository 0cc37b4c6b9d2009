#include "execution/Clock.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::Simulation {

namespace {

using Steady = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr double LongestWaitUs = 3.6e9;  // longer ones are waited for in pieces: no deadline can overflow

Steady::time_point DeadlineIn(double wait) {
  return Steady::now() + std::chrono::ceil<Steady::duration>(Microseconds(std::min(wait, LongestWaitUs)));
}

}  // namespace

double Clock::RealTime() const {
  return Microseconds(Steady::now() - start_).count();
}

double Clock::Advance(double duration) {
  if (!std::isfinite(now_ + duration)) throw std::runtime_error("The run takes too long.");
  if (IsAborted() || duration <= 0) return 0;
  const double before = now_;
  const double left = limit_ - before;
  now_ += std::min(duration, left);
  WaitForRealTime(LeadUs);
  if (abort_.IsRaised() && std::isfinite(speed_)) {
    // Aborted while it was waiting, or in the time by which it is ahead.
    now_ = std::clamp(RealTime() * speed_, before, now_);
    return now_ - before;
  }
  expired_ = duration > left;
  return std::min(duration, left);
}

void Clock::WaitFor(double timeout, const std::function<bool()>& condition) {
  if (IsAborted() || condition()) return;
  if (isAlone_ && !std::isfinite(timeout)) throw std::runtime_error("It waits for what does not come.");
  if (std::isinf(speed_) && std::isfinite(timeout)) {
    Advance(timeout);
  } else {
    Wait(timeout, condition);
  }
}

void Clock::WaitForOutside(double timeout, const std::function<bool()>& condition) {
  if (IsAborted() || condition()) return;
  if (isAlone_) {
    Advance(timeout * Pace());
  } else {
    Wait(timeout * Pace(), condition);
  }
}

void Clock::Wait(double timeout, const std::function<bool()>& condition) {
  CatchUp();
  const double pace = Pace();
  const double begin = RealTime();
  const double left = limit_ - now_;
  const double longest = std::min(timeout, left);
  double passed = 0;
  for (;;) {
    const std::uint64_t wakes = abort_.GetWakes();
    passed = std::min((RealTime() - begin) * pace, longest);
    if (passed >= longest || abort_.IsRaised() || condition()) break;
    abort_.WaitUntil(DeadlineIn((longest - passed) / pace), wakes);
  }
  now_ += passed;
  waited_ += RealTime() - begin;
  expired_ = timeout > left && passed >= left;
}

void Clock::WaitForRealTime(double lead) {
  if (std::isinf(speed_)) return;
  const double target = now_ / speed_;
  double real = RealTime();
  if (target - real <= lead) return;
  const double begin = real;
  while (real < target) {
    const std::uint64_t wakes = abort_.GetWakes();
    if (IsAborted()) break;
    abort_.WaitUntil(DeadlineIn(target - real), wakes);
    real = RealTime();
  }
  waited_ += real - begin;
}

void Clock::RefuseLimit() const {
  const auto milliseconds = std::llround(limit_ / 1000);
  throw std::runtime_error("The run has reached the execution limit of " + std::to_string(milliseconds) +
                           " ms.");
}

}  // namespace VELTRO::KELVO::Simulation
