#include "config/MotfConfig.h"

#include <cmath>

namespace VELTRO::KELVO::ClientLib {

void MotfConfig::SetDirectionFromAngle(double angle) {
  // Adding to 0 makes a negative zero a positive one: an angle of 0 gives the defaults to the bit.
  const double cosine = std::cos(angle);
  const double sine = 0 + std::sin(angle);
  MainDirection = {cosine, sine, 0};
  CompensationDirection = {0 - sine, cosine, 0};
}

}  // namespace VELTRO::KELVO::ClientLib
