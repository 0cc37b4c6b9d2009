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
  WalkStraight(transformation_.Apply(target), Parameters.JumpSpeed, Pen::Jump);
  position_ = target;
  double delay = Parameters.JumpDelay;
  if (Parameters.HasVariableJumpDelay && Parameters.JumpLengthLimit > 0) {
    const double share = std::min(1.0, Length(galvos_ - from) / Parameters.JumpLengthLimit);
    delay = std::lerp(Parameters.JumpDelayMin, Parameters.JumpDelay, share);
  }
  Wait(delay);
}

void Motion::Mark(Point3D target) {
  CountVector();
  const Point3D end = transformation_.Apply(target);
  const Point3D heading = end - galvos_;
  BeginMark(heading);
  WalkStraight(end, Parameters.MarkSpeed, Pen::Mark);
  position_ = target;
  heading_ = heading;
}

void Motion::Mark(const Curve& curve, std::span<const double> powers) {
  CountVector();
  const Point3D start = curve.GetStart();
  if (!(Length(start - position_) <= PlaceTolerance * (curve.GetSize() + Length(start)))) {
    EndMarks();
    Go(start);
  }
  const Curve path = curve.Under(transformation_);
  BeginMark(path.HeadingAt(0));
  Walk(path, Parameters.MarkSpeed, Pen::Mark, powers);
  position_ = curve.GetEnd();
  heading_ = path.HeadingAt(1);
}

void Motion::BeginMark(Point3D heading) {
  const SkyWriting& sky = Parameters.Sky;
  const double leadIn = sky.ExtensionTime + sky.AccelerationDelay;
  if (inMarks_) {
    if (sky.Mode == SkyWritingMode::MinimumCoH && Cosine(heading_, heading) < sky.MinCoH) {
      Wait(sky.ExtensionTime + sky.DecelerationDelay + leadIn);
    } else {
      const double share = Parameters.HasVariablePolyDelay ? (1 - Cosine(heading_, heading)) / 2 : 1;
      Wait(Parameters.PolyDelay * share);
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

void Motion::Shoot(Point3D target, double exposure, std::optional<double> power) {
  EndMarks();
  Go(target);
  if (power && !clock_.IsAborted()) canvas_.AddDot(InPlane(galvos_), {*power, 0});
  const double before = clock_.Now();
  Wait(exposure);
  if (power && !laserOn_) totals_.LaserTime += clock_.Now() - before;
}

void Motion::Tick(Point3D target) {
  EndMarks();
  const Point3D place = transformation_.Apply(target);
  if (!IsFinite(place)) throw std::runtime_error("The target is not finite.");
  const double length = Length(place - galvos_);
  ink_ = {GetPower(), length / MicroVectorUs};
  CountTicks(Step(place, length, MicroVectorUs, Pen::Jump));
  position_ = target;
}

void Motion::CheckMark(double length, double speed) const {
  Pattern.CheckLength(length);
  Parameters.Wobbling.CheckDuration(length / speed);
}

void Motion::WalkStraight(const Point3D& target, double speed, Pen pen) {
  if (!IsFinite(target)) throw std::runtime_error("The target is not finite.");
  speed *= Parameters.SpeedScale;
  const double length = Length(target - galvos_);
  if (pen == Pen::Mark) CheckMark(length, speed);
  ink_ = {GetPower(), speed};
  CountTicks(Step(target, length, length > 0 ? length / speed : 0, pen));
}

void Motion::Walk(const Curve& path, double speed, Pen pen, std::span<const double> powers) {
  if (!IsFinite(path.GetEnd())) throw std::runtime_error("The target is not finite.");
  if (!path.IsStraight() && !std::isfinite(path.GetLengthBound())) {
    throw std::runtime_error("The shape is not finite.");
  }
  speed *= Parameters.SpeedScale;
  CheckMark(path.GetLengthBound(), speed);
  ink_ = {GetPower(), speed};
  const double pieces =
      powers.empty() ? path.CountPieces(GetTolerance()) : static_cast<double>(powers.size());
  double passed = 0;
  double from = 0;
  for (double i = 1; i <= pieces && !clock_.IsAborted(); ++i) {
    const double to = i / pieces;
    const double length = path.LengthOf(from, to);
    if (!powers.empty()) ink_.Power = powers[static_cast<std::size_t>(i) - 1];
    const bool isDark = !powers.empty() && !(ink_.Power > 0);
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
      const double done = (end - share) * (time / planned);
      DrawTo(Between(begin, target, share + done), done * length, time, pen);
      return passed;
    }
    DrawTo(end < 1 ? Between(begin, target, end) : target, (end - share) * length, time, pen);
    if (isDashed) Pattern.Advance((end - share) * length);
    if (dashEnd <= end) Pattern.Change();
    if (laserEnd <= end) Extinguish();
    share = end;
  }
  if (!clock_.IsAborted()) galvos_ = target;
  return passed;
}

void Motion::DrawTo(const Point3D& target, double length, double time, Pen pen) {
  if (time <= 0) return;
  const Point3D from = GetBeamPlace(pen);
  galvos_ = target;
  if (pen != Pen::Jump) markTime_ += time;
  const bool isLit = pen == Pen::Jump ? laserOn_ : pen == Pen::Mark && Pattern.IsOn();
  (isLit ? totals_.MarkedLength : totals_.JumpedLength) += length;
  if (isLit) totals_.LaserTime += time;
  if (!isLit && pen != Pen::Jump) return;
  canvas_.AddSegment(isLit ? Canvas::Kind::Mark : Canvas::Kind::Jump, InPlane(from),
                     InPlane(GetBeamPlace(pen)), ink_);
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
  if (laserOn_ && !movedOn_) canvas_.AddDot(InPlane(galvos_), {GetPower(), 0});
  laserOn_ = false;
}

void Motion::Pulse(double duration, bool isWaitedFor) {
  SwitchLaser(false);
  SwitchLaser(true);
  laserUntil_ = clock_.Now() + duration;
  if (isWaitedFor) Wait(duration);
}

void Motion::Wait(double duration) {
  const double before = clock_.Now();
  clock_.Advance(duration);
  if (laserOn_) totals_.LaserTime += std::min(clock_.Now(), laserUntil_) - before;
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
