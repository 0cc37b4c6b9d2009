#include "common/Transform3D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "common/NumberText.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;  // rows, or columns where it says so

constexpr std::size_t Next(std::size_t index) {
  return (index + 1) % 3;
}

double Dot(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector Cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double LargestOf(const Vector& values) {
  return std::max({std::abs(values[0]), std::abs(values[1]), std::abs(values[2])});
}

// Divides by about the largest of the values, exactly, and returns by what.
double Normalise(Vector& values) {
  const double divisor = std::ldexp(1.0, std::ilogb(LargestOf(values)));
  for (double& value : values) value /= divisor;
  return divisor;
}

Vector RowOf(const Transform3D& transform, std::size_t row) {
  return {transform(row, 0), transform(row, 1), transform(row, 2)};
}

// The map back for a matrix A+ that leads back: x -> A+ (x - b).
Transform3D Back(const std::array<double, 9>& inverse, const Vector& b) {
  Transform3D back{inverse, {}};
  const Point3D shift = back(Point3D{b});
  for (std::size_t i = 0; i < 3; ++i) back.B[i] = 0 - shift.Coordinates[i];
  return back;
}

// Turns the two columns of `work`, and those of `turns` with them, so that they are orthogonal. Returns whether they
// were not.
bool Orthogonalise(Matrix& work, Matrix& turns, std::size_t i, std::size_t j) {
  const double a = Dot(work[i], work[i]), b = Dot(work[j], work[j]), c = Dot(work[i], work[j]);
  if (!(std::abs(c) > std::numeric_limits<double>::epsilon() * std::sqrt(a * b))) return false;
  const double zeta = (b - a) / (2 * c);
  const double tangent = std::copysign(1 / (std::abs(zeta) + std::hypot(1, zeta)), zeta);
  const double cosine = 1 / std::hypot(1, tangent), sine = cosine * tangent;
  for (Matrix* const matrix : {&work, &turns}) {
    for (std::size_t k = 0; k < 3; ++k) {
      const double x = (*matrix)[i][k], y = (*matrix)[j][k];
      (*matrix)[i][k] = cosine * x - sine * y;
      (*matrix)[j][k] = sine * x + cosine * y;
    }
  }
  return true;
}

template <class Self>
auto& ElementOf(Self& transform, std::size_t index) {
  return index < 9 ? transform.A[index] : transform.B.at(index - 9);
}

template <class Self>
auto& ElementOf(Self& transform, std::size_t row, std::size_t column) {
  if (row >= 3 || column >= 4) throw std::out_of_range("A transform has three rows and four columns.");
  return column < 3 ? transform.A[3 * row + column] : transform.B[row];
}

}  // namespace

Transform3D& Transform3D::Scale(double x, double y, double z) {
  return append({{x, 0, 0, 0, y, 0, 0, 0, z}, {}});
}

Transform3D& Transform3D::Translate(double x, double y, double z) {
  return append({Transform3D().A, {x, y, z}});
}

Transform3D& Transform3D::RotateZ(double angle) {
  const double cosine = std::cos(angle), sine = std::sin(angle);
  return append({{cosine, -sine, 0, sine, cosine, 0, 0, 0, 1}, {}});
}

Transform3D& Transform3D::append(const Transform3D& next) {
  const Transform3D first = *this;
  for (std::size_t column = 0; column < 4; ++column) {
    const Vector image{first(0, column), first(1, column), first(2, column)};
    for (std::size_t row = 0; row < 3; ++row) (*this)(row, column) = Dot(RowOf(next, row), image);
  }
  for (std::size_t row = 0; row < 3; ++row) B[row] += next.B[row];
  return *this;
}

Transform3D& Transform3D::append(const Rows& next) {
  Transform3D transform;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 4; ++column) transform(row, column) = next[row][column];
  }
  return append(transform);
}

// By cofactors. Whether A is singular is judged by its determinant against the sum that its products would have
// without cancellation, so that it does not depend on the scales of rows and columns.
Transform3D Transform3D::Inverse() const {
  constexpr double Rounding = 8 * std::numeric_limits<double>::epsilon();
  Matrix rows;
  Vector divisors;
  for (std::size_t row = 0; row < 3; ++row) {
    rows[row] = RowOf(*this, row);
    divisors[row] = Normalise(rows[row]);
  }
  const double determinant = Dot(rows[0], Cross(rows[1], rows[2]));
  double products = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t j = Next(i), k = Next(j);
    products +=
        std::abs(rows[0][i]) * (std::abs(rows[1][j] * rows[2][k]) + std::abs(rows[1][k] * rows[2][j]));
  }
  if (!(std::abs(determinant) > Rounding * products))
    throw std::runtime_error("The transform has no inverse.");
  std::array<double, 9> inverse;
  for (std::size_t column = 0; column < 3; ++column) {
    const Vector cofactors = Cross(rows[Next(column)], rows[Next(Next(column))]);
    for (std::size_t row = 0; row < 3; ++row) {
      inverse[3 * row + column] = cofactors[row] / determinant / divisors[column];
    }
  }
  return Back(inverse, B);
}

// By the singular value decomposition A V = W, in which the columns of W are orthogonal and as long as the singular
// values: A+ is the sum of v w' / |w|^2. It is found by turning pairs of columns (one-sided Jacobi).
Transform3D Transform3D::PseudoInverse(double tolerance) const {
  constexpr int Sweeps = 60;  // a handful will do
  if (!(tolerance >= 0)) throw std::runtime_error("The tolerance must not be negative.");
  for (std::size_t i = 0; i < 12; ++i) {
    if (!std::isfinite((*this)[i])) throw std::runtime_error("The transform is not finite.");
  }
  const double largest =
      LargestOf({LargestOf(RowOf(*this, 0)), LargestOf(RowOf(*this, 1)), LargestOf(RowOf(*this, 2))});
  const double divisor = largest > 0 ? std::ldexp(1.0, std::ilogb(largest)) : 1;
  Matrix work, turns{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};  // columns
  for (std::size_t i = 0; i < 9; ++i) work[i % 3][i / 3] = A[i] / divisor;
  for (int sweep = 0; sweep < Sweeps; ++sweep) {
    bool turned = false;
    for (std::size_t i = 0; i < 3; ++i) turned |= Orthogonalise(work, turns, i, Next(i));
    if (!turned) break;
  }
  std::array<double, 9> inverse{};
  for (std::size_t k = 0; k < 3; ++k) {
    const double value = std::hypot(work[k][0], work[k][1], work[k][2]);
    if (!(value * divisor > tolerance)) continue;
    for (std::size_t i = 0; i < 9; ++i)
      inverse[i] += turns[k][i / 3] * (work[k][i % 3] / value) / value / divisor;
  }
  return Back(inverse, B);
}

double& Transform3D::operator()(std::size_t row, std::size_t column) {
  return ElementOf(*this, row, column);
}
double Transform3D::operator()(std::size_t row, std::size_t column) const {
  return ElementOf(*this, row, column);
}
double& Transform3D::operator[](std::size_t index) {
  return ElementOf(*this, index);
}
double Transform3D::operator[](std::size_t index) const {
  return ElementOf(*this, index);
}

Point3D Transform3D::operator()(const Point3D& point) const {
  Point3D image;
  for (std::size_t row = 0; row < 3; ++row) {
    image.Coordinates[row] = Dot(RowOf(*this, row), point.Coordinates) + B[row];
  }
  return image;
}

std::string Transform3D::ToString() const {
  std::string text;
  for (std::size_t i = 0; i < 12; ++i) {
    text += i == 0 ? "( " : i == 9 ? " ), ( " : ", ";
    AppendNumber(text, (*this)[i]);
  }
  return text + " )";
}

}  // namespace VELTRO::KELVO::ClientLib
