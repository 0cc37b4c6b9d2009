// Points in space as vectors.
#pragma once

#include <algorithm>
#include <cmath>

#include "common/Point.h"

namespace VELTRO::KELVO::VirtualCard {

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

// The cosine of the angle between two directions; -1, a full turn back, when there is none.
inline double Cosine(const ClientLib::Point3D& a, const ClientLib::Point3D& b) {
  const double lengths = Length(a) * Length(b);
  return lengths > 0 ? std::clamp(Dot(a, b) / lengths, -1.0, 1.0) : -1;
}

inline ClientLib::Point2D InPlane(const ClientLib::Point3D& p) {
  return {{p.X(), p.Y()}};
}

}  // namespace VELTRO::KELVO::VirtualCard
