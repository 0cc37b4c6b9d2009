// How the points of a command are meant: in the field, or from where the galvos are.
#pragma once

#include "execution/Motion.h"

namespace VELTRO::KELVO::Simulation {

struct Absolute {
  static ClientLib::Point3D Place(const Motion& galvos, const auto& p) { return galvos.To(p); }
};

struct Relative {
  static ClientLib::Point3D Place(const Motion& galvos, const auto& p) { return galvos.By(p); }
};

}  // namespace VELTRO::KELVO::Simulation
