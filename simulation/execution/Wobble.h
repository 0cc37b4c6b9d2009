// The wobble that is added to marks: x by Amplitude.X sin(2 pi Frequency.X t + Phase.X), y likewise.
#pragma once

#include "common/Point.h"

namespace VELTRO::KELVO::Simulation {

struct Wobble {
  ClientLib::Point2D Amplitude;  // field units
  ClientLib::Point2D Frequency;  // per microsecond
  ClientLib::Point2D Phase;      // radians
  bool IsEnabled = false;

  // After so much time in a run of marks.
  ClientLib::Point3D GetOffset(double time) const;
  // How far apart its points may be so that the lines between them are as close to it as `tolerance`, within
  // reason.
  double GetStepTime(double tolerance) const;
  // Throws std::runtime_error when a mark of this duration would have more periods than anyone can wait for.
  void CheckDuration(double duration) const;
};

}  // namespace VELTRO::KELVO::Simulation
