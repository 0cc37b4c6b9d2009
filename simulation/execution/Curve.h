// A smooth path in space. All shapes are of one form, and so is what a transformation makes of them:
//   P(t) = base + linear t + quadratic t^2 + cubic t^3 + cosine cos(angle t) + sine sin(angle t), t from 0 to 1
#pragma once

#include "execution/Transformation.h"
#include "execution/Vector.h"

namespace VELTRO::KELVO::Simulation {

class Curve {
 public:
  using Point3D = ClientLib::Point3D;

  static constexpr double MostTurns = 1e5;

  static Curve Line(Point3D from, Point3D to);
  static Curve Bezier(Point3D from, Point3D control, Point3D to);
  static Curve Bezier(Point3D from, Point3D control1, Point3D control2, Point3D to);
  // centre + cosine cos(a) + sine sin(a), a from 0 to `sweep`, while `rise` is added little by little. Throws
  // std::runtime_error for a sweep that is not finite or of more than MostTurns.
  static Curve Ellipse(Point3D centre, Point3D cosine, Point3D sine, double sweep, Point3D rise = {});

  Point3D GetStart() const { return start_; }
  Point3D GetEnd() const { return end_; }
  Point3D At(double t) const;
  // The derivative.
  Point3D HeadingAt(double t) const;
  // Of the arc between two parameters that are close together.
  double LengthOf(double from, double to) const;
  // At most this much, and not finite when the curve is not.
  double GetLengthBound() const;
  // About half of its extent, however far it goes round.
  double GetSize() const;
  bool IsStraight() const;

  // Into how many equal parts to cut it so that its chords are as close to it as `tolerance` and a
  // ten-thousandth of its size; bounded.
  double CountPieces(double tolerance) const;
  Curve Under(const Transformation& transformation) const;

 private:
  Point3D start_, end_;  // exactly
  Point3D base_, linear_, quadratic_, cubic_, cosine_, sine_;
  double angle_ = 0;
};

}  // namespace VELTRO::KELVO::Simulation
