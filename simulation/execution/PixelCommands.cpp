// Commands that mark a place after the other: dots, pieces of a line, positions of the galvos.
#include <algorithm>
#include <vector>

#include "execution/Checks.h"
#include "execution/CommandTable.h"
#include "execution/Targets.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::CommandCode2;
using ClientLib::Point2D;
using ClientLib::Point2DInt;
using ClientLib::Point3D;
using ClientLib::Point3DInt;

namespace {

using Powers = Array<std::uint16_t>;

// Of an array that is too short, the last element holds on.
auto Held(const auto& array, std::size_t i) {
  return array[std::min(i, array.GetCount() - 1)];
}

void MarkBitmap(Motion& galvos, Point3D from, Point3D to, const Powers& powers, std::int32_t channel) {
  const double scale = galvos.Parameters.PowerScale[Channel(channel)];
  if (powers.GetCount() == 0) throw std::runtime_error("There must be at least one power.");
  std::vector<double> scaled(powers.GetCount());
  for (std::size_t i = 0; i < scaled.size(); ++i) scaled[i] = powers[i] * scale;
  galvos.Mark(Curve::Line(from, to), scaled);
}

void PointAndShoot(Run& run, Point3D from, Point3D to, const Powers& powers, const Array<double>& exposures,
                   std::int32_t channel) {
  const double scale = run.Galvos.Parameters.PowerScale[Channel(channel)];
  if (powers.GetCount() == 0 || exposures.GetCount() == 0) {
    throw std::runtime_error("There must be at least one power and one exposure time.");
  }
  run.Galvos.CountVector();
  const std::size_t count = std::max(powers.GetCount(), exposures.GetCount());
  const double intervals = static_cast<double>(std::max<std::size_t>(count, 2) - 1);
  for (std::size_t i = 0; i < count && !run.Time.IsAborted(); ++i) {
    const double share = static_cast<double>(i) / intervals;
    const Point3D place = share < 1 ? from + share * (to - from) : to;
    const double power = Held(powers, i) * scale;
    run.Galvos.Shoot(place, NotNegative(Held(exposures, i), "exposure time"),
                     power > 0 ? std::optional(power) : std::nullopt);
  }
}

void JumpAndShoot(Run& run, const Array<double>& coordinates, std::size_t dimensions, std::int32_t pulses) {
  if (coordinates.GetCount() % dimensions != 0) throw std::runtime_error("The last point is not whole.");
  NotNegative(pulses, "number of pulses");
  run.Galvos.CountVector();
  for (std::size_t i = 0; i < coordinates.GetCount() && !run.Time.IsAborted(); i += dimensions) {
    const Point2D p{{coordinates[i], coordinates[i + 1]}};
    const Point3D place = dimensions == 2 ? run.Galvos.To(p) : Point3D{{p.X(), p.Y(), coordinates[i + 2]}};
    run.Galvos.Shoot(place, pulses / run.Galvos.Parameters.LmFrequency,
                     pulses > 0 ? std::optional(run.Galvos.GetPower()) : std::nullopt);
  }
}

template <class Meant, class P>
constexpr CommandRow Bitmap(std::int32_t code) {
  return {code, [](Run& run, P from, P to, Powers powers, std::int32_t channel) {
            MarkBitmap(run.Galvos, Meant::Place(run.Galvos, from), Meant::Place(run.Galvos, to), powers,
                       channel);
          }};
}

template <class Meant, class P>
constexpr CommandRow Dots(std::int32_t code) {
  return {code, [](Run& run, P from, P to, Powers powers, Array<double> exposures, std::int32_t channel) {
            PointAndShoot(run, Meant::Place(run.Galvos, from), Meant::Place(run.Galvos, to), powers,
                          exposures, channel);
          }};
}

template <std::size_t Dimensions>
constexpr CommandRow Shots(std::int32_t code) {
  return {code, [](Run& run, Array<double> coordinates, std::int32_t pulses) {
            JumpAndShoot(run, coordinates, Dimensions, pulses);
          }};
}

// A position of the galvos each tick.
template <class P>
constexpr CommandRow Ticks(std::int32_t code) {
  return {code, [](Run& run, Array<P> places) {
            run.Galvos.CountVector();
            for (std::size_t i = 0; i < places.GetCount() && !run.Time.IsAborted(); ++i) {
              const P place = places[i];
              using Field = ClientLib::Point<P::Dimensions, double>;
              constexpr double Unit = std::is_same_v<typename P::Element, double> ? 1 : 1000;
              Field point;
              for (std::size_t k = 0; k < P::Dimensions; ++k) {
                point.Coordinates[k] = place.Coordinates[k] / Unit;
              }
              run.Galvos.Tick(run.Galvos.To(point));
            }
          }};
}

}  // namespace

std::span<const CommandRow> PixelCommands() {
  static constexpr CommandRow Rows[] = {
      Bitmap<Absolute, Point2D>(CommandCode::MARK_BMP_ABS),
      Bitmap<Relative, Point2D>(CommandCode::MARK_BMP_REL),
      Bitmap<Absolute, Point3D>(CommandCode::MARK_BMP_3D_ABS),
      Bitmap<Relative, Point3D>(CommandCode::MARK_BMP_3D_REL),
      Dots<Absolute, Point2D>(CommandCode::MARK_PAS_ABS),
      Dots<Relative, Point2D>(CommandCode::MARK_PAS_REL),
      Dots<Absolute, Point3D>(CommandCode::MARK_PAS_3D_ABS),
      Dots<Relative, Point3D>(CommandCode::MARK_PAS_3D_REL),
      Shots<2>(CommandCode::MARK_JAS_ABS),
      Shots<3>(CommandCode::MARK_JAS_3D_ABS),
      Ticks<Point2D>(CommandCode2::INTERNAL_ADD_POSITIONS_2D),
      Ticks<Point3D>(CommandCode2::INTERNAL_ADD_POSITIONS_3D),
      Ticks<Point2DInt>(CommandCode2::INTERNAL_ADD_MICROVECTORS_2D),
      Ticks<Point3DInt>(CommandCode2::INTERNAL_ADD_MICROVECTORS_3D),
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
