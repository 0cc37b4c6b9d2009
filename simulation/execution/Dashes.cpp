#include "execution/Dashes.h"

#include <cmath>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "execution/Checks.h"

namespace VELTRO::KELVO::Simulation {

namespace {

constexpr double MostChanges = 1e7;

}  // namespace

void Dashes::SetPattern(std::vector<double> lengths) {
  for (const double length : lengths) NotNegative(length, "length of a dash");
  if (lengths.size() % 2 != 0) lengths.insert(lengths.end(), lengths.begin(), lengths.end());
  const double period = std::accumulate(lengths.begin(), lengths.end(), 0.0);
  if (!lengths.empty()) Positive(period, "length of the whole pattern");
  lengths_ = std::move(lengths);
  period_ = period;
  Restart();
}

void Dashes::Enable(bool enabled, double begin) {
  begin_ = NotNegative(begin, "length into the pattern");
  enabled_ = enabled;
  Restart();
}

void Dashes::Restart() {
  if (!AreActive()) return;
  double ahead = std::fmod(begin_, period_);
  for (current_ = 0; current_ + 1 < lengths_.size() && ahead >= lengths_[current_]; ++current_) {
    ahead -= lengths_[current_];
  }
  left_ = std::fmax(lengths_[current_] - ahead, 0);
}

void Dashes::Change() {
  current_ = (current_ + 1) % lengths_.size();
  left_ = lengths_[current_];
}

void Dashes::CheckLength(double length) const {
  if (AreActive() && !(length / period_ * static_cast<double>(lengths_.size()) <= MostChanges)) {
    throw std::runtime_error("The pattern is too short for a mark of this length.");
  }
}

}  // namespace VELTRO::KELVO::Simulation
