#include "execution/Motion.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "execution/Checks.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point3D;
using ClientLib::SkyWritingMode;

namespace {

constexpr double MicroVectorUs = 10;
// A motion that takes a whole number of ticks, but for rounding, has that many micro vectors.
constexpr double TickTolerance = 1e-9;
// What begins where the galvos are, but for rounding, needs no jump.
constexpr double PlaceTolerance = 1e-9;

Point3D Between(const Point3D& from, const Point3D& to, double share) {
  return from + share * (to - from);
}

}  // namespace

void Motion::SetTransformation(const Transformation& transformation) {
  transformation_ = transformation;
  position_ = transformation_.Invert(galvos_, position_);
}

void Motion::Jump(Point3D target) {
  CountVector();
  EndMarks();
  Go(target);
}

void Motion::Go(Point3D target) {
  const Point3D from = galvos_;
  Walk(Curve::Line(from, transformation_.Apply(target)), Parameters.JumpSpeed, Pen::Jump);
  position_ = target;
  double delay = Parameters.JumpDelay;
  if (Parameters.HasVariableJumpDelay && Parameters.JumpLengthLimit > 0) {
    const double share = std::min(1.0, Length(galvos_ - from) / Parameters.JumpLengthLimit);
    delay = std::lerp(Parameters.JumpDelayMin, Parameters.JumpDelay, share);
  }
  Wait(delay);
}

void Motion::Mark(const Curve& curve, std::span<const std::uint8_t> lit) {
  CountVector();
  const Point3D start = curve.GetStart();
  if (!(Length(start - position_) <= PlaceTolerance * (curve.GetSize() + Length(start)))) {
    EndMarks();
    Go(start);
  }
  const Curve path = curve.Under(transformation_);
  BeginMark(path.HeadingAt(0));
  Walk(path, Parameters.MarkSpeed, Pen::Mark, lit);
  position_ = curve.GetEnd();
  heading_ = path.HeadingAt(1);
}

void Motion::BeginMark(Point3D heading) {
  const SkyWriting& sky = Parameters.Sky;
  const double leadIn = sky.ExtensionTime + sky.AccelerationDelay;
  if (inMarks_) {
    const double cosine = Cosine(heading_, heading);
    if (sky.Mode == SkyWritingMode::MinimumCoH && cosine < sky.MinCoH) {
      Wait(sky.ExtensionTime + sky.DecelerationDelay + leadIn);
    } else {
      Wait(Parameters.PolyDelay * (Parameters.HasVariablePolyDelay ? (1 - cosine) / 2 : 1));
    }
    return;
  }
  if (sky.Mode != SkyWritingMode::Disabled) Wait(leadIn);
  if (!laserOn_) Wait(std::max(0.0, -Parameters.LaserOnDelay));
  inMarks_ = true;
  markTime_ = 0;
  Pattern.Restart();
}

void Motion::EndMarks() {
  if (!inMarks_) return;
  inMarks_ = false;
  const SkyWriting& sky = Parameters.Sky;
  if (sky.Mode != SkyWritingMode::Disabled) Wait(sky.ExtensionTime + sky.DecelerationDelay);
  Wait(laserOn_ ? Parameters.MarkDelay : std::max(Parameters.MarkDelay, Parameters.LaserOffDelay));
}

void Motion::Shoot(Point3D target, double exposure, bool isLit) {
  EndMarks();
  Go(target);
  if (isLit && !clock_.IsAborted()) plotter_.AddDot(InPlane(galvos_));
  Wait(exposure);
}

void Motion::Tick(Point3D target) {
  EndMarks();
  const Point3D place = transformation_.Apply(target);
  if (!IsFinite(place)) throw std::runtime_error("The target is not finite.");
  CountTicks(Step(place, 0, MicroVectorUs, Pen::Jump));
  position_ = target;
}

// The one place where paths are followed.
void Motion::Walk(const Curve& path, double speed, Pen pen, std::span<const std::uint8_t> lit) {
  if (!IsFinite(path.GetEnd())) throw std::runtime_error("The target is not finite.");
  if (!path.IsStraight() && !std::isfinite(path.GetLengthBound())) {
    throw std::runtime_error("The shape is not finite.");
  }
  speed *= Parameters.SpeedScale;
  if (pen == Pen::Mark) {
    Pattern.CheckLength(path.GetLengthBound());
    Parameters.Wobbling.CheckDuration(path.GetLengthBound() / speed);
  }
  const double pieces = lit.empty() ? path.CountPieces(GetTolerance()) : static_cast<double>(lit.size());
  double passed = 0;
  double from = 0;
  for (double i = 1; i <= pieces && !clock_.IsAborted(); ++i) {
    const double to = i / pieces;
    const double length = path.LengthOf(from, to);
    const bool isDark = !lit.empty() && lit[static_cast<std::size_t>(i) - 1] == 0;
    passed += Step(i < pieces ? path.At(to) : path.GetEnd(), length, length > 0 ? length / speed : 0,
                   isDark ? Pen::Dark : pen);
    from = to;
  }
  CountTicks(passed);
}

// The one place where the galvos move: straight, while time passes, until the run is aborted. Gives the time
// that has passed.
double Motion::Step(const Point3D& target, double length, double duration, Pen pen) {
  if (!std::isfinite(duration)) clock_.Advance(duration);  // which refuses it
  const Point3D begin = galvos_;
  const bool isDashed = pen != Pen::Jump && Pattern.AreActive();
  const double wobbleTime = pen != Pen::Jump ? Parameters.Wobbling.GetStepTime(GetTolerance()) : Ever;
  double passed = 0;
  // From one change to the next: of the wobble's direction, of the dashes, of the laser.
  for (double share = 0; share < 1 && duration > 0;) {
    const double dashEnd = isDashed ? share + Pattern.GetLengthLeft() / length : Ever;
    const double laserEnd = laserOn_ ? share + (laserUntil_ - clock_.Now()) / duration : Ever;
    const double end = std::max(share, std::min({1.0, share + wobbleTime / duration, dashEnd, laserEnd}));
    const double planned = duration * (end - share);
    const double time = clock_.Advance(planned);
    passed += time;
    if (time < planned) {  // aborted
      DrawTo(Between(begin, target, share + (end - share) * (time / planned)), time, pen);
      return passed;
    }
    DrawTo(end < 1 ? Between(begin, target, end) : target, time, pen);
    if (isDashed) Pattern.Advance((end - share) * length);
    if (dashEnd <= end) Pattern.Change();
    if (laserEnd <= end) Extinguish();
    share = end;
  }
  if (!clock_.IsAborted()) galvos_ = target;
  return passed;
}

void Motion::DrawTo(const Point3D& target, double time, Pen pen) {
  if (time <= 0) return;
  const Point3D from = GetBeamPlace(pen);
  galvos_ = target;
  if (pen != Pen::Jump) markTime_ += time;
  const bool isLit = pen == Pen::Jump ? laserOn_ : pen == Pen::Mark && Pattern.IsOn();
  if (!isLit && pen != Pen::Jump) return;
  plotter_.AddSegment(isLit ? Drawing::Kind::Mark : Drawing::Kind::Jump, InPlane(from),
                      InPlane(GetBeamPlace(pen)));
  movedOn_ = movedOn_ || isLit;
}

Point3D Motion::GetBeamPlace(Pen pen) const {
  if (pen == Pen::Jump || !Parameters.Wobbling.IsEnabled) return galvos_;
  return galvos_ + transformation_.Turn(Parameters.Wobbling.GetOffset(markTime_));
}

void Motion::CountTicks(double time) {
  microVectors_ += std::ceil(time / MicroVectorUs - TickTolerance);
}

void Motion::SwitchLaser(bool on) {
  EndMarks();
  if (!on) {
    Extinguish();
  } else if (!laserOn_) {
    movedOn_ = false;
  }
  laserOn_ = on;
  laserUntil_ = Ever;
}

void Motion::Extinguish() {
  if (laserOn_ && !movedOn_) plotter_.AddDot(InPlane(galvos_));
  laserOn_ = false;
}

void Motion::Pulse(double duration, bool isWaitedFor) {
  SwitchLaser(false);
  SwitchLaser(true);
  laserUntil_ = clock_.Now() + duration;
  if (isWaitedFor) Wait(duration);
}

void Motion::Wait(double duration) {
  clock_.Advance(duration);
  if (clock_.Now() >= laserUntil_) Extinguish();
}

void Motion::Sleep(double duration) {
  EndMarks();
  Wait(duration);
}

void Motion::Magnify(double magnification, bool isWaitedFor) {
  const double way = std::abs(Positive(magnification, "magnification") - magnification_);
  magnified_ =
      std::max(magnified_, clock_.Now()) + way / (Parameters.MagnificationSpeed * Parameters.SpeedScale);
  magnification_ = magnification;
  if (isWaitedFor) Sleep(magnified_ - clock_.Now());
}

void Motion::Stop() {
  inMarks_ = false;
  SwitchLaser(false);
}

}  // namespace VELTRO::KELVO::Simulation
