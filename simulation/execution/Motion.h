// Moves the virtual galvos and switches the virtual laser, in simulated time.
//
// The galvos follow without lag. So the picture shows every mark in full: the laser delays, which make up for
// the lag of real galvos, change when things happen and not where.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "common/KelvoAPIEnums.h"
#include "drawing/Canvas.h"
#include "execution/Clock.h"
#include "execution/Curve.h"
#include "execution/Dashes.h"
#include "execution/GalvoPosition.h"
#include "execution/Transformation.h"
#include "execution/Wobble.h"

namespace VELTRO::KELVO::Simulation {

// Extra ways on which the galvos reach their speed and leave it again: only their time is seen.
struct SkyWriting {
  std::int32_t Mode = ClientLib::SkyWritingMode::Disabled;
  double MinCoH = 0;  // cosine of the change of heading; sharper corners have extra ways, too
  double ExtensionTime = 0;
  double AccelerationDelay = 0;
  double DecelerationDelay = 0;
};

// Field units per microsecond, microseconds. What they are by default stands in ProcessVariables: all but PowerScale
// and whether there is wobble are set at the start of every run (StartingValues.h), ahead of any motion.
struct ProcessParameters {
  double JumpSpeed = 0;
  double MarkSpeed = 0;
  double MagnificationSpeed = 0;
  double SpeedScale = 0;  // of all speeds
  double JumpDelay = 0;
  double JumpDelayMin = 0;
  double JumpLengthLimit = 0;
  bool HasVariableJumpDelay = false;  // from JumpDelayMin to JumpDelay for lengths from 0 to JumpLengthLimit
  double MarkDelay = 0;
  double PolyDelay = 0;
  bool HasVariablePolyDelay = false;  // by the corner's angle: none when it goes straight on
  double LaserOnDelay = 0;            // negative: the laser is on before the motion begins
  double LaserOffDelay = 0;           // negative: it is off before the motion ends
  double LmFrequency = 0;
  SkyWriting Sky;
  Wobble Wobbling;
  std::array<double, 2> Power{0, 0};  // of each channel
  std::array<double, 2> PowerScale{1, 1};
};

// What a run has come to.
struct MotionTotals {
  double MarkedLength = 0;  // field units in space, of what is drawn
  double JumpedLength = 0;
  double LaserTime = 0;  // microseconds in which the laser was on; laser delays do not count
};

class Motion {
 public:
  using Point2D = ClientLib::Point2D;
  using Point3D = ClientLib::Point3D;

  // `position` is where the galvos are; they stay where the run leaves them.
  Motion(Clock& clock, Canvas& canvas, GalvoPosition& position)
      : clock_(clock), canvas_(canvas), galvos_(position), position_(position) {}

  ProcessParameters Parameters;
  Dashes Pattern;

  // Targets of commands: absolute in two coordinates (z stays) or three, and relative.
  Point3D To(Point2D p) const { return {{p.X(), p.Y(), position_.Z()}}; }
  Point3D To(Point3D p) const { return p; }
  Point3D By(Point2D p) const { return By(Point3D{{p.X(), p.Y(), 0}}); }
  Point3D By(Point3D p) const { return position_ + p; }
  // Where the galvos are, before the transformation.
  Point3D GetPosition() const { return position_; }
  // What commands give goes through it. It moves nothing: the galvos stay where they are.
  const Transformation& GetTransformation() const { return transformation_; }
  void SetTransformation(const Transformation& transformation);

  // Moves, then waits the jump delay. Draws when the laser has been switched on.
  void Jump(Point3D target);
  // Marks a line. Marks that follow each other are one run: the poly delay is between them, EndMarks behind
  // the last one.
  void Mark(Point3D target);
  // Marks a curve, after a jump to its start unless the galvos are there. Of as many equal pieces as there are `powers`,
  // those where it is 0 are not drawn.
  void Mark(const Curve& curve, std::span<const double> powers = {});
  // Jumps to a place and stays; marks a dot there when there is a power. No vector by itself.
  void Shoot(Point3D target, double exposure, std::optional<double> power);
  // Moves in one clock tick of the galvos. Draws when the laser has been switched on. No vector by itself.
  void Tick(Point3D target);
  // Of channel 0, as it is scaled.
  double GetPower() const { return Parameters.Power[0] * Parameters.PowerScale[0]; }
  // A command that is a vector.
  void CountVector() { ++macroVectors_; }

  // Ends a run of marks: waits the mark delay, or until the laser is off if that is later.
  void EndMarks();
  // Switches the laser for good. On and off again without any motion, it has marked a dot.
  void SwitchLaser(bool on);
  // Switches it on for some time, in which the run goes on, or which is waited.
  void Pulse(double duration, bool isWaitedFor);
  void Sleep(double duration);
  // Changes the beam optics, which goes on beside the run unless it is waited for.
  void Magnify(double magnification, bool isWaitedFor);
  double GetMagnification() const { return magnification_; }
  // Switches off and leaves the galvos where they are, at once.
  void Stop();

  std::int64_t GetMacroVectors() const { return macroVectors_; }
  // Vectors of one clock tick of the galvos each.
  double GetMicroVectors() const { return microVectors_; }
  const MotionTotals& GetTotals() const { return totals_; }

 private:
  enum class Pen {
    Jump,  // drawn as the laser is switched
    Mark,  // with dashes and wobble
    Dark,  // a part of a mark that is not lit
  };

  void Go(Point3D target);
  void BeginMark(Point3D heading);
  void Walk(const Curve& path, double speed, Pen pen, std::span<const double> powers = {});
  void WalkStraight(const Point3D& target, double speed, Pen pen);
  void CheckMark(double length, double speed) const;
  double Step(const Point3D& target, double length, double duration, Pen pen);
  void DrawTo(const Point3D& target, double length, double time, Pen pen);
  Point3D GetBeamPlace(Pen pen) const;
  void CountTicks(double time);
  void Wait(double duration);
  void Extinguish();
  double GetTolerance() const { return 0.01 * canvas_.GetBeam(); }

  Clock& clock_;
  Canvas& canvas_;
  GalvoPosition& galvos_;
  Transformation transformation_;
  Point3D position_;          // what the transformation turns into the galvos' position
  bool inMarks_ = false;      // the latest motion was a mark, and no delay has been waited since
  Point3D heading_;           // at the end of that mark
  double markTime_ = 0;       // in motion, in that run of marks
  bool laserOn_ = false;      // switched on by command
  double laserUntil_ = Ever;  // and until then, when it is
  bool movedOn_ = false;      // something was drawn since then
  double magnification_ = 1;
  double magnified_ = 0;  // when it has changed
  std::int64_t macroVectors_ = 0;
  double microVectors_ = 0;
  MotionTotals totals_;
  Ink ink_;  // of the motion that is under way

  static constexpr double Ever = std::numeric_limits<double>::infinity();
};

}  // namespace VELTRO::KELVO::Simulation
