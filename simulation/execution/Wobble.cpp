#include "execution/Wobble.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point2D;
using ClientLib::Point3D;

namespace {

constexpr double MostPeriods = 1e6;
constexpr double FewestSteps = 16;  // of a period
constexpr double MostSteps = 256;

double Larger(const Point2D& p) {
  return std::max(std::abs(p.X()), std::abs(p.Y()));
}

double Swing(double amplitude, double frequency, double phase, double time) {
  return amplitude * std::sin(2 * std::numbers::pi * std::fmod(frequency * time, 1.0) + phase);
}

}  // namespace

Point3D Wobble::GetOffset(double time) const {
  if (!IsEnabled) return {};
  return {{Swing(Amplitude.X(), Frequency.X(), Phase.X(), time),
           Swing(Amplitude.Y(), Frequency.Y(), Phase.Y(), time), 0}};
}

double Wobble::GetStepTime(double tolerance) const {
  if (!IsEnabled || Larger(Frequency) == 0 || Larger(Amplitude) == 0) {
    return std::numeric_limits<double>::infinity();
  }
  const double steps = std::numbers::pi * std::sqrt(Larger(Amplitude) / (2 * tolerance));
  return 1 / (std::clamp(steps, FewestSteps, MostSteps) * Larger(Frequency));
}

void Wobble::CheckDuration(double duration) const {
  if (IsEnabled && !(duration * Larger(Frequency) <= MostPeriods)) {
    throw std::runtime_error("The wobble is too fast for a mark of this duration.");
  }
}

}  // namespace VELTRO::KELVO::Simulation
