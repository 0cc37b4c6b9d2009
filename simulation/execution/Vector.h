// Points in space as vectors.
#pragma once

#include <algorithm>
#include <cmath>

#include "common/Point.h"

namespace VELTRO::KELVO::Simulation {

inline ClientLib::Point3D operator+(const ClientLib::Point3D& a, const ClientLib::Point3D& b) {
  return {{a.X() + b.X(), a.Y() + b.Y(), a.Z() + b.Z()}};
}
inline ClientLib::Point3D operator-(const ClientLib::Point3D& a, const ClientLib::Point3D& b) {
  return {{a.X() - b.X(), a.Y() - b.Y(), a.Z() - b.Z()}};
}
inline ClientLib::Point3D operator*(double factor, const ClientLib::Point3D& a) {
  return {{factor * a.X(), factor * a.Y(), factor * a.Z()}};
}

inline double Dot(const ClientLib::Point3D& a, const ClientLib::Point3D& b) {
  return a.X() * b.X() + a.Y() * b.Y() + a.Z() * b.Z();
}
inline double Length(const ClientLib::Point3D& a) {
  return std::hypot(a.X(), a.Y(), a.Z());
}
inline bool IsFinite(const ClientLib::Point3D& a) {
  return std::isfinite(a.X()) && std::isfinite(a.Y()) && std::isfinite(a.Z());
}

// The cosine of the angle between two directions; -1, that of a full turn back, when there is none.
inline double Cosine(const ClientLib::Point3D& a, const ClientLib::Point3D& b) {
  const double cosine = Dot((1 / Length(a)) * a, (1 / Length(b)) * b);
  return cosine >= -1 ? std::min(cosine, 1.0) : -1;
}

inline ClientLib::Point2D InPlane(const ClientLib::Point3D& p) {
  return {{p.X(), p.Y()}};
}

}  // namespace VELTRO::KELVO::Simulation
