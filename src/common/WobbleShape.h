// The shapes of a wobble that have names.
#pragma once

#include "common/Point.h"

namespace VELTRO::KELVO::ClientLib {

// While marking, x and y swing by Amplitude * sin(2 pi Frequency t + Phase).
struct WobbleShape {
  Point2D Amplitude, Frequency, Phase;

  static WobbleShape Circle(double amplitude, double frequency) {
    return {{amplitude, amplitude}, {frequency, frequency}, {0, QuarterTurn}};
  }
  static WobbleShape Eight(Point2D amplitude, double frequency) {
    return {amplitude, {frequency, 2 * frequency}, {0, 0}};
  }

  static constexpr double QuarterTurn = 1.5707963267948966;
};

}  // namespace VELTRO::KELVO::ClientLib
