// An affine map x' = A x + b.
#pragma once

#include <array>

namespace VELTRO::KELVO::ClientLib {

struct Transform3D {
  std::array<double, 9> A{1, 0, 0, 0, 1, 0, 0, 0, 1};  // row by row
  std::array<double, 3> B{};
};

}  // namespace VELTRO::KELVO::ClientLib
