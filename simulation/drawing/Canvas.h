// What takes up what galvos and laser leave on the field.
#pragma once

#include "common/Point.h"

namespace VELTRO::KELVO::Simulation {

// With what was marked.
struct Ink {
  double Power = 0;  // of channel 0, in units of its commands
  double Speed = 0;  // field units per microsecond

  bool operator==(const Ink&) const = default;
};

// One thread at a time.
class Canvas {
 public:
  enum class Kind { Jump, Mark };

  virtual ~Canvas() = default;

  // The width of the beam. Curves are followed as closely as a hundredth of it.
  virtual double GetBeam() const = 0;
  virtual void BeginRun() = 0;
  virtual void AddSegment(Kind kind, ClientLib::Point2D from, ClientLib::Point2D to, const Ink& ink) = 0;
  virtual void AddDot(ClientLib::Point2D at, const Ink& ink) = 0;
};

}  // namespace VELTRO::KELVO::Simulation
