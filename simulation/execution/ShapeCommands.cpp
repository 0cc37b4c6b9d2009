#include <cmath>
#include <numbers>

#include "execution/Checks.h"
#include "execution/CommandTable.h"
#include "execution/Targets.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::Point2D;
using ClientLib::Point3D;

namespace {

Point3D Turned(const Point3D& v, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  return {{c * v.X() - s * v.Y(), s * v.X() + c * v.Y(), 0}};
}

// From where the galvos are, around an axis parallel to z, while z goes to the centre's.
void MarkEllipticCurve(Motion& galvos, const Point3D& centre, double ratio, double rotation, double sweep) {
  Positive(ratio, "ratio of the half axes");
  Finite(rotation, "rotation");
  const Point3D start = galvos.GetPosition();
  const Point3D arm{{start.X() - centre.X(), start.Y() - centre.Y(), 0}};
  const Point3D local = Turned(arm, -rotation);
  const Point3D side = Turned({{-local.Y() / ratio, local.X() * ratio, 0}}, rotation);
  const Point3D rise{{0, 0, centre.Z() - start.Z()}};
  galvos.Mark(Curve::Ellipse({{centre.X(), centre.Y(), start.Z()}}, arm, side, sweep, rise));
}

void MarkEllipse(Motion& galvos, const Point3D& centre, double a, double b, double rotation) {
  Positive(a, "half axis");
  Positive(b, "half axis");
  Finite(rotation, "rotation");
  galvos.Mark(Curve::Ellipse(centre, Turned({{a, 0, 0}}, rotation), Turned({{0, b, 0}}, rotation),
                             2 * std::numbers::pi));
}

template <class Meant, class P>
constexpr CommandRow Arc(std::int32_t code) {
  return {code, [](Run& run, P centre, double sweep) {
            MarkEllipticCurve(run.Galvos, Meant::Place(run.Galvos, centre), 1, 0, sweep);
          }};
}

template <class Meant, class P>
constexpr CommandRow EllipticCurve(std::int32_t code) {
  return {code, [](Run& run, P centre, double ratio, double rotation, double sweep) {
            MarkEllipticCurve(run.Galvos, Meant::Place(run.Galvos, centre), ratio, rotation, sweep);
          }};
}

template <class Meant, class P>
constexpr CommandRow Ellipse(std::int32_t code) {
  return {code, [](Run& run, P centre, double a, double b, double rotation) {
            MarkEllipse(run.Galvos, Meant::Place(run.Galvos, centre), a, b, rotation);
          }};
}

// From where the galvos are by way of the command's points: as many as make it quadratic or cubic.
template <class Meant, class... P>
constexpr CommandRow Bezier(std::int32_t code) {
  return {code, [](Run& run, P... points) {
            run.Galvos.Mark(Curve::Bezier(run.Galvos.GetPosition(), Meant::Place(run.Galvos, points)...));
          }};
}

}  // namespace

std::span<const CommandRow> ShapeCommands() {
  static constexpr CommandRow Rows[] = {
      Arc<Absolute, Point2D>(CommandCode::MARK_ARC_ABS),
      Arc<Relative, Point2D>(CommandCode::MARK_ARC_REL),
      Arc<Absolute, Point3D>(CommandCode::MARK_ARC_3D_ABS),
      Arc<Relative, Point3D>(CommandCode::MARK_ARC_3D_REL),
      Ellipse<Absolute, Point2D>(CommandCode::MARK_ELLIPSE_ABS),
      Ellipse<Relative, Point2D>(CommandCode::MARK_ELLIPSE_REL),
      Ellipse<Absolute, Point3D>(CommandCode::MARK_ELLIPSE_3D_ABS),
      Ellipse<Relative, Point3D>(CommandCode::MARK_ELLIPSE_3D_REL),
      EllipticCurve<Absolute, Point2D>(CommandCode::MARK_ELLIPTIC_CURVE_ABS),
      EllipticCurve<Relative, Point2D>(CommandCode::MARK_ELLIPTIC_CURVE_REL),
      EllipticCurve<Absolute, Point3D>(CommandCode::MARK_ELLIPTIC_CURVE_3D_ABS),
      EllipticCurve<Relative, Point3D>(CommandCode::MARK_ELLIPTIC_CURVE_3D_REL),
      {CommandCode::MARK_GENERAL_ELLIPSE,
       [](Run& run, Point3D centre, Point3D cosine, Point3D sine, double sweep) {
         run.Galvos.Mark(Curve::Ellipse(centre, cosine, sine, sweep));
       }},
      Bezier<Absolute, Point2D, Point2D>(CommandCode::MARK_BEZIER_ABS),
      Bezier<Relative, Point2D, Point2D>(CommandCode::MARK_BEZIER_REL),
      Bezier<Absolute, Point3D, Point3D>(CommandCode::MARK_BEZIER_3D_ABS),
      Bezier<Relative, Point3D, Point3D>(CommandCode::MARK_BEZIER_3D_REL),
      Bezier<Absolute, Point2D, Point2D, Point2D>(CommandCode::MARK_BEZIER_CUBIC_ABS),
      Bezier<Relative, Point2D, Point2D, Point2D>(CommandCode::MARK_BEZIER_CUBIC_REL),
      Bezier<Absolute, Point3D, Point3D, Point3D>(CommandCode::MARK_BEZIER_CUBIC_3D_ABS),
      Bezier<Relative, Point3D, Point3D, Point3D>(CommandCode::MARK_BEZIER_CUBIC_3D_REL),
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
