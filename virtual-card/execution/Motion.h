// Moves the virtual galvos and switches the virtual laser, in simulated time.
//
// The galvos follow without lag. So the picture shows every mark in full: the laser delays, which make up for
// the lag of real galvos, change when things happen and not where.
#pragma once

#include <cstdint>

#include "common/Point.h"
#include "drawing/Plotter.h"
#include "execution/Clock.h"

namespace VELTRO::KELVO::VirtualCard {

// In force from the start of a run until its commands change them. Field units per microsecond, microseconds.
struct ProcessParameters {
  double JumpSpeed = 0.01;
  double MarkSpeed = 0.001;
  double JumpDelay = 0;
  double MarkDelay = 0;
  double PolyDelay = 0;
  double LaserOnDelay = 0;   // negative: the laser is on before the motion begins
  double LaserOffDelay = 0;  // negative: it is off before the motion ends
};

class Motion {
 public:
  // `position` is where the galvos are; they stay where the run leaves them.
  Motion(Clock& clock, Plotter& plotter, ClientLib::Point3D& position)
      : clock_(clock), plotter_(plotter), position_(position) {}

  ProcessParameters Parameters;

  // Targets of commands: absolute in two coordinates (z stays) or three, and relative.
  ClientLib::Point3D To(ClientLib::Point2D p) const { return {{p.X(), p.Y(), position_.Z()}}; }
  ClientLib::Point3D To(ClientLib::Point3D p) const { return p; }
  ClientLib::Point3D By(ClientLib::Point2D p) const { return By(ClientLib::Point3D{{p.X(), p.Y(), 0}}); }
  ClientLib::Point3D By(ClientLib::Point3D p) const {
    return {{position_.X() + p.X(), position_.Y() + p.Y(), position_.Z() + p.Z()}};
  }

  // Moves, then waits the jump delay. Draws when the laser has been switched on.
  void Jump(ClientLib::Point3D target);
  // Marks a line. Marks that follow each other are one run: the poly delay is between them, EndMarks behind
  // the last one.
  void Mark(ClientLib::Point3D target);
  // Ends a run of marks: waits the mark delay, or until the laser is off if that is later.
  void EndMarks();
  // Switches the laser for good. On and off again without any motion, it has marked a dot.
  void SwitchLaser(bool on);
  void Sleep(double duration);
  // Switches off and leaves the galvos where they are, at once.
  void Stop();

  std::int64_t GetMacroVectors() const { return macroVectors_; }
  // Vectors of one clock tick of the galvos each.
  double GetMicroVectors() const { return microVectors_; }

 private:
  void Move(ClientLib::Point3D target, double speed, bool laserOn);

  Clock& clock_;
  Plotter& plotter_;
  ClientLib::Point3D& position_;
  bool inMarks_ = false;  // the latest motion was a mark, and no delay has been waited since
  bool laserOn_ = false;  // switched on by command
  bool movedOn_ = false;  // something was drawn since then
  std::int64_t macroVectors_ = 0;
  double microVectors_ = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
