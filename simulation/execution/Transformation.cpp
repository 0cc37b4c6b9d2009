#include "execution/Transformation.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point2D;
using ClientLib::Point3D;

namespace {

constexpr double SmallestPivot = 1e-12;  // of the largest element; what is smaller is rounding

void Check(const Point3D& values) {
  if (!IsFinite(values)) throw std::runtime_error("The transformation is not finite.");
}

}  // namespace

void Transformation::SetScaling(Point2D factors) {
  const Point3D scaling{{factors.X(), factors.Y(), 1}};
  Check(scaling);
  scaling_ = scaling;
  Combine();
}

void Transformation::SetHeadingScale(Point3D factors) {
  Check(factors);
  heading_ = factors;
  Combine();
}

void Transformation::SetAffine(const Matrix& matrix, Point3D shift) {
  for (const Point3D& row : matrix) Check(row);
  Check(shift);
  affine_ = matrix;
  shift_ = shift;
  Combine();
}

void Transformation::Combine() {
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t i = 0; i < 3; ++i) {
      combined_[row].Coordinates[i] =
          affine_[row].Coordinates[i] * heading_.Coordinates[i] * scaling_.Coordinates[i];
    }
  }
}

Point3D Transformation::Turn(const Point3D& vector) const {
  return {{Dot(combined_[0], vector), Dot(combined_[1], vector), Dot(combined_[2], vector)}};
}

Point3D Transformation::Invert(const Point3D& image, Point3D near) const {
  constexpr std::size_t None = 3;
  Matrix matrix = combined_;
  Point3D rest = image - Apply(near);
  std::array<std::size_t, 3> rowOf{None, None, None};  // of each column's pivot
  double smallest = 0;
  // Gauss and Jordan, each time with the largest pivot that is left.
  for (int pass = 0; pass < 3; ++pass) {
    std::size_t row = None, column = None;
    double pivot = smallest;
    for (std::size_t r = 0; r < 3; ++r) {
      if (std::ranges::count(rowOf, r) != 0) continue;
      for (std::size_t c = 0; c < 3; ++c) {
        if (rowOf[c] != None || std::abs(matrix[r].Coordinates[c]) <= pivot) continue;
        pivot = std::abs(matrix[r].Coordinates[c]);
        row = r;
        column = c;
      }
    }
    if (row == None) break;
    if (pass == 0) smallest = SmallestPivot * pivot;
    rowOf[column] = row;
    for (std::size_t r = 0; r < 3; ++r) {
      if (r == row) continue;
      const double factor = matrix[r].Coordinates[column] / matrix[row].Coordinates[column];
      matrix[r] = matrix[r] - factor * matrix[row];
      rest.Coordinates[r] -= factor * rest.Coordinates[row];
    }
  }
  for (std::size_t c = 0; c < 3; ++c) {
    if (rowOf[c] == None) continue;
    near.Coordinates[c] += rest.Coordinates[rowOf[c]] / matrix[rowOf[c]].Coordinates[c];
  }
  return near;
}

}  // namespace VELTRO::KELVO::Simulation
