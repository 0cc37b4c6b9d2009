// An affine map x' = A x + b.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "common/Point.h"

namespace VELTRO::KELVO::ClientLib {

struct Transform3D {
  // The rows of the 3 by 4 matrix [A b].
  using Rows = std::array<std::array<double, 4>, 3>;

  std::array<double, 9> A{1, 0, 0, 0, 1, 0, 0, 0, 1};  // row by row
  std::array<double, 3> B{};

  void SetIdentity() { *this = {}; }
  // Each puts something behind the map: what the map gives is scaled, moved, turned about the z axis (radians, from x
  // to y), or goes through another map.
  Transform3D& Scale(double x, double y, double z);
  Transform3D& Scale(double x, double y) { return Scale(x, y, 1); }
  Transform3D& Translate(double x, double y, double z);
  Transform3D& RotateZ(double angle);
  Transform3D& append(const Transform3D& next);
  Transform3D& append(const Rows& next);

  // Throws std::runtime_error "The transform has no inverse." when A is singular in double precision, or not finite.
  Transform3D Inverse() const;
  // The map x -> A+ (x - b), A+ being the pseudo-inverse of A, in which singular values up to `tolerance` count as
  // zero. Throws std::runtime_error "The transform is not finite." or "The tolerance must not be negative.".
  Transform3D PseudoInverse(double tolerance) const;
  // Exactly, in every element.
  bool Equals(const Transform3D& other) const { return A == other.A && B == other.B; }

  // Elements of [A b], by row and column, or by index as text and wire have them: A row by row, then b. Throw
  // std::out_of_range.
  double& operator()(std::size_t row, std::size_t column);
  double operator()(std::size_t row, std::size_t column) const;
  double& operator[](std::size_t index);
  double operator[](std::size_t index) const;
  Point3D operator()(const Point3D& point) const;

  // "( A row by row ), ( b )", numbers as records have them.
  std::string ToString() const;
};

}  // namespace VELTRO::KELVO::ClientLib
