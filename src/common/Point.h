// A point of 2, 3 or 4 coordinates, in the order x, y, z, w.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

template <std::size_t N, class T>
struct Point {
  static constexpr std::size_t Dimensions = N;
  using Element = T;

  std::array<T, N> Coordinates{};

  T X() const { return Coordinates[0]; }
  T Y() const { return Coordinates[1]; }
  T Z() const requires(N >= 3) { return Coordinates[2]; }
  T W() const requires(N >= 4) { return Coordinates[3]; }

  friend bool operator==(const Point&, const Point&) = default;
};

// What the coordinates are called in texts.
inline constexpr std::string_view CoordinateNames = "XYZM";

using Point2D = Point<2, double>;
using Point3D = Point<3, double>;
using Point4D = Point<4, double>;
using Point2DInt = Point<2, std::int32_t>;
using Point3DInt = Point<3, std::int32_t>;
using Point4DInt = Point<4, std::int32_t>;

}  // namespace VELTRO::KELVO::ClientLib
