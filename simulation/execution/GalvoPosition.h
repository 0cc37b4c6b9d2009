// Where the galvos are.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

#include "common/Point.h"

namespace VELTRO::KELVO::Simulation {

// One thread moves them, any may look at any time. Whoever looks while they move may see one axis before a step and
// another behind it, as with real ones.
class GalvoPosition {
 public:
  GalvoPosition& operator=(const ClientLib::Point3D& position) {
    for (std::size_t i = 0; i < 3; ++i) {
      coordinates_[i].store(position.Coordinates[i], std::memory_order_relaxed);
    }
    return *this;
  }
  operator ClientLib::Point3D() const {
    ClientLib::Point3D position;
    for (std::size_t i = 0; i < 3; ++i) {
      position.Coordinates[i] = coordinates_[i].load(std::memory_order_relaxed);
    }
    return position;
  }

 private:
  std::array<std::atomic<double>, 3> coordinates_{};
};

}  // namespace VELTRO::KELVO::Simulation
