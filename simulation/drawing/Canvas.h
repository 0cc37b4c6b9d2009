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

// For who wants to know no more than how long a run takes.
class NoCanvas : public Canvas {
 public:
  double GetBeam() const override { return 0.1; }
  void BeginRun() override {}
  void AddSegment(Kind, ClientLib::Point2D, ClientLib::Point2D, const Ink&) override {}
  void AddDot(ClientLib::Point2D, const Ink&) override {}
};

}  // namespace VELTRO::KELVO::Simulation
