#include "execution/Motion.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Point2D;
using ClientLib::Point3D;

namespace {

constexpr double MicroVectorUs = 10;
// A motion that takes a whole number of ticks, but for rounding, has that many micro vectors.
constexpr double TickTolerance = 1e-9;

Point2D InPlane(const Point3D& p) {
  return {{p.X(), p.Y()}};
}

Point3D Between(const Point3D& from, const Point3D& to, double share) {
  Point3D result;
  for (std::size_t i = 0; i < Point3D::Dimensions; ++i) {
    result.Coordinates[i] = from.Coordinates[i] + share * (to.Coordinates[i] - from.Coordinates[i]);
  }
  return result;
}

}  // namespace

void Motion::Jump(Point3D target) {
  EndMarks();
  Move(target, Parameters.JumpSpeed, laserOn_);
  clock_.Advance(Parameters.JumpDelay);
}

void Motion::Mark(Point3D target) {
  if (inMarks_) {
    clock_.Advance(Parameters.PolyDelay);
  } else if (!laserOn_) {
    clock_.Advance(std::max(0.0, -Parameters.LaserOnDelay));
  }
  Move(target, Parameters.MarkSpeed, true);
  inMarks_ = true;
}

void Motion::EndMarks() {
  if (!inMarks_) return;
  inMarks_ = false;
  clock_.Advance(laserOn_ ? Parameters.MarkDelay : std::max(Parameters.MarkDelay, Parameters.LaserOffDelay));
}

void Motion::Move(Point3D target, double speed, bool laserOn) {
  for (const double coordinate : target.Coordinates) {
    if (!std::isfinite(coordinate)) throw std::runtime_error("The target is not finite.");
  }
  const double distance =
      std::hypot(target.X() - position_.X(), target.Y() - position_.Y(), target.Z() - position_.Z());
  const double duration = distance / speed;
  const double passed = clock_.Advance(duration);
  ++macroVectors_;
  microVectors_ += std::ceil(passed / MicroVectorUs - TickTolerance);
  if (passed <= 0) {  // nowhere to go, or the run was aborted
    if (!clock_.IsAborted()) position_ = target;
    return;
  }
  const Point3D reached = passed < duration ? Between(position_, target, passed / duration) : target;
  plotter_.AddSegment(laserOn ? Drawing::Kind::Mark : Drawing::Kind::Jump, InPlane(position_),
                      InPlane(reached));
  position_ = reached;
  movedOn_ = movedOn_ || laserOn;
}

void Motion::SwitchLaser(bool on) {
  EndMarks();
  if (on == laserOn_) return;
  if (!on && !movedOn_) plotter_.AddDot(InPlane(position_));
  laserOn_ = on;
  movedOn_ = false;
}

void Motion::Sleep(double duration) {
  EndMarks();
  clock_.Advance(duration);
}

void Motion::Stop() {
  inMarks_ = false;
  SwitchLaser(false);
}

}  // namespace VELTRO::KELVO::VirtualCard
