// The pattern of a dashed line and where in it a run of marks is.
#pragma once

#include <cstddef>
#include <vector>

namespace VELTRO::KELVO::Simulation {

class Dashes {
 public:
  // Lengths along marks, on and off by turns. None ends the pattern. Throws std::runtime_error for lengths
  // that are negative, not finite or all 0.
  void SetPattern(std::vector<double> lengths);
  // `begin` is the length into the pattern at which runs of marks begin. Throws std::runtime_error when it is
  // negative or not finite.
  void Enable(bool enabled, double begin);
  // A run of marks begins.
  void Restart();

  bool AreActive() const { return enabled_ && !lengths_.empty(); }
  bool IsOn() const { return !AreActive() || current_ % 2 == 0; }
  // To the next change, while they are active.
  double GetLengthLeft() const { return left_; }
  void Advance(double length) { left_ -= length; }
  void Change();
  // Throws std::runtime_error when a mark of this length would have more changes than anyone can wait for.
  void CheckLength(double length) const;

 private:
  std::vector<double> lengths_;  // an even count of them
  double period_ = 0;
  double begin_ = 0;
  bool enabled_ = false;
  std::size_t current_ = 0;
  double left_ = 0;
};

}  // namespace VELTRO::KELVO::Simulation
