#include "execution/Curve.h"

#include <algorithm>
#include <numbers>
#include <stdexcept>

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point3D;

namespace {

constexpr double SizeTolerance = 1e-4;
constexpr double MostPieces = 4096;  // for each turn
constexpr double TurnAngle = 2 * std::numbers::pi;

}  // namespace

Curve Curve::Line(Point3D from, Point3D to) {
  Curve curve;
  curve.start_ = curve.base_ = from;
  curve.end_ = to;
  curve.linear_ = to - from;
  return curve;
}

Curve Curve::Bezier(Point3D from, Point3D control, Point3D to) {
  Curve curve = Line(from, to);
  curve.linear_ = 2 * (control - from);
  curve.quadratic_ = (to - control) - (control - from);
  return curve;
}

Curve Curve::Bezier(Point3D from, Point3D control1, Point3D control2, Point3D to) {
  const Point3D first = control1 - from, second = control2 - control1, third = to - control2;
  Curve curve = Line(from, to);
  curve.linear_ = 3 * first;
  curve.quadratic_ = 3 * (second - first);
  curve.cubic_ = (third - second) - (second - first);
  return curve;
}

Curve Curve::Ellipse(Point3D centre, Point3D cosine, Point3D sine, double sweep, Point3D rise) {
  if (!(std::abs(sweep) <= MostTurns * TurnAngle)) {
    throw std::runtime_error("The sweep must be finite and have at most 100000 turns.");
  }
  if (sweep == 0) return Line(centre + cosine, centre + cosine + rise);
  Curve curve;
  curve.base_ = centre;
  curve.linear_ = rise;
  curve.cosine_ = cosine;
  curve.sine_ = sine;
  curve.angle_ = sweep;
  curve.start_ = curve.At(0);
  curve.end_ = curve.At(1);
  return curve;
}

Point3D Curve::At(double t) const {
  Point3D point = base_ + t * (linear_ + t * (quadratic_ + t * cubic_));
  if (angle_ != 0) point = point + std::cos(angle_ * t) * cosine_ + std::sin(angle_ * t) * sine_;
  return point;
}

Point3D Curve::HeadingAt(double t) const {
  Point3D heading = linear_ + t * (2 * quadratic_ + (3 * t) * cubic_);
  if (angle_ != 0) {
    heading = heading + angle_ * (std::cos(angle_ * t) * sine_ - std::sin(angle_ * t) * cosine_);
  }
  return heading;
}

double Curve::LengthOf(double from, double to) const {
  if (IsStraight()) return (to - from) * Length(linear_);
  // Gauss and Legendre, with three points.
  const double middle = (from + to) / 2, half = (to - from) / 2, outer = half * std::sqrt(0.6);
  return half / 9 *
         (5 * Length(HeadingAt(middle - outer)) + 8 * Length(HeadingAt(middle)) +
          5 * Length(HeadingAt(middle + outer)));
}

double Curve::GetLengthBound() const {
  return Length(linear_) + 2 * Length(quadratic_) + 3 * Length(cubic_) +
         std::abs(angle_) * std::hypot(Length(cosine_), Length(sine_));
}

double Curve::GetSize() const {
  return std::max(
      {Length(linear_) / 2, Length(quadratic_) / 2, Length(cubic_) / 2, Length(cosine_), Length(sine_)});
}

bool Curve::IsStraight() const {
  return angle_ == 0 && quadratic_ == Point3D{} && cubic_ == Point3D{};
}

double Curve::CountPieces(double tolerance) const {
  // A chord over a part d of the parameter is off by at most |P''| d^2 / 8, and P'' is largest at the ends.
  const double bend = std::max(Length(2 * quadratic_), Length(2 * quadratic_ + 6 * cubic_)) +
                      angle_ * angle_ * std::hypot(Length(cosine_), Length(sine_));
  if (!(bend > 0)) return 1;
  const double error = std::min(tolerance, SizeTolerance * GetSize());
  const double turns = std::max(1.0, std::abs(angle_) / TurnAngle);
  return std::clamp(std::ceil(std::sqrt(bend / 8 / error)), 1.0, std::ceil(MostPieces * turns));
}

Curve Curve::Under(const Transformation& transformation) const {
  Curve curve = *this;
  for (Point3D Curve::*point : {&Curve::start_, &Curve::end_, &Curve::base_}) {
    curve.*point = transformation.Apply(this->*point);
  }
  for (Point3D Curve::*vector :
       {&Curve::linear_, &Curve::quadratic_, &Curve::cubic_, &Curve::cosine_, &Curve::sine_}) {
    curve.*vector = transformation.Turn(this->*vector);
  }
  return curve;
}

}  // namespace VELTRO::KELVO::Simulation
