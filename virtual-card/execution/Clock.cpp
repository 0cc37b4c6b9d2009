#include "execution/Clock.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace VELTRO::KELVO::VirtualCard {

namespace {

using Microseconds = std::chrono::duration<double, std::micro>;

constexpr double LongestWaitUs = 3.6e9;  // longer ones are waited for in pieces: no deadline can overflow

}  // namespace

double Clock::RealTime() const {
  return Microseconds(Steady::now() - start_).count();
}

double Clock::Advance(double duration) {
  if (!std::isfinite(now_ + duration)) throw std::runtime_error("The run takes too long.");
  if (IsAborted() || duration <= 0) return 0;
  const double before = now_;
  now_ += duration;
  WaitForRealTime(LeadUs);
  if (!IsAborted() || std::isinf(speed_)) return duration;
  // Aborted while it was waiting, or in the time by which it is ahead.
  now_ = std::clamp(RealTime() * speed_, before, now_);
  return now_ - before;
}

void Clock::WaitForRealTime(double lead) {
  if (std::isinf(speed_)) return;
  const double target = now_ / speed_;
  double real = RealTime();
  if (target - real <= lead) return;
  const double begin = real;
  for (; real < target && !IsAborted(); real = RealTime()) {
    const auto wait =
        std::chrono::ceil<Steady::duration>(Microseconds(std::min(target - real, LongestWaitUs)));
    abort_.WaitUntil(Steady::now() + wait);
  }
  waited_ += real - begin;
}

}  // namespace VELTRO::KELVO::VirtualCard
