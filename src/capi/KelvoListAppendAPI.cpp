// The functions that append commands: a row each, its name, its parameters, and the call that it is.
#include "kelvo/KelvoListAppendAPI.h"

#include "capi/Frame.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

template <class Element, class Given>
std::span<const Element> Elements(const Given* elements, uint32_t count, const char* name) {
  static_assert(sizeof(Element) == sizeof(Given), "the caller's elements are taken as they lie");
  if (count > 0) NotNull(elements, name);
  return {reinterpret_cast<const Element*>(elements), count};
}

template <class Element, class Given>
std::span<const Element> AtLeastOne(const Given* elements, uint32_t count, const char* name,
                                    const char* complaint) {
  if (count == 0) throw std::runtime_error(complaint);
  return Elements<Element>(elements, count, name);
}

std::span<const uint16_t> Powers(const uint16_t* powers, uint32_t count) {
  return Elements<uint16_t>(powers, count, "powers");
}

std::span<const uint8_t> Bytes(const uint8_t* bytes, uint32_t count, const char* name = "bytes") {
  return Elements<uint8_t>(bytes, count, name);
}

template <class Element, class Given>
std::span<const Element> MicroVectors(const Given* vectors, uint32_t count) {
  return AtLeastOne<Element>(vectors, count, "vectors", "There must be at least one MicroVector");
}

// The coordinates of the points, one behind the other.
template <class Given>
std::span<const double> JumpTargets(const Given* points, uint32_t count) {
  const auto targets = AtLeastOne<Given>(points, count, "points", "There must be at least one point");
  return {reinterpret_cast<const double*>(targets.data()), targets.size_bytes() / sizeof(double)};
}

struct Shots {
  std::span<const double> Times;
  std::span<const uint16_t> Powers;
};

Shots TakeShots(const double* times, uint32_t timeCount, const uint16_t* powers, uint32_t powerCount) {
  constexpr const char* Complaint = "There must be at least one powerValue and one exposureTimeValue";
  return {AtLeastOne<double>(times, timeCount, "times", Complaint),
          AtLeastOne<uint16_t>(powers, powerCount, "powers", Complaint)};
}

Transform3D Taken(const vlTransform3D* transform) {
  NotNull(transform, "transform");
  Transform3D taken;
  std::copy_n(&transform->A[0][0], taken.A.size(), taken.A.begin());
  std::copy_n(transform->b, taken.B.size(), taken.B.begin());
  return taken;
}

TraceBufferConfig Taken(const vltbTraceBufferConfig_Struct* config) {
  NotNull(config, "config");
  return {config->Mode, config->Signals, config->Period, config->Length};
}

const char* Text(const char* text, const char* name = "text") {
  return NotNull(text, name);
}
const char* Name(const char* name) {
  return NotNull(name, "name");
}
const char* Label(const char* label) {
  return NotNull(label, "label");
}

}  // namespace

#define KELVO_APPEND(function, parameters, ...)                                \
  int32_t function parameters {                                                \
    return OnList(list, [&](CommandList& commands) { commands.__VA_ARGS__; }); \
  }

// Motion
KELVO_APPEND(vlListAppendJumpAbs2D, (int64_t list, double x, double y), AppendJumpAbs(Point2D{x, y}))
KELVO_APPEND(vlListAppendJumpRel2D, (int64_t list, double dx, double dy), AppendJumpRel(Point2D{dx, dy}))
KELVO_APPEND(vlListAppendJumpAbs3D, (int64_t list, double x, double y, double z),
             AppendJumpAbs(Point3D{x, y, z}))
KELVO_APPEND(vlListAppendJumpRel3D, (int64_t list, double dx, double dy, double dz),
             AppendJumpRel(Point3D{dx, dy, dz}))
KELVO_APPEND(vlListAppendMarkAbs2D, (int64_t list, double x, double y), AppendMarkAbs(Point2D{x, y}))
KELVO_APPEND(vlListAppendMarkRel2D, (int64_t list, double dx, double dy), AppendMarkRel(Point2D{dx, dy}))
KELVO_APPEND(vlListAppendMarkAbs3D, (int64_t list, double x, double y, double z),
             AppendMarkAbs(Point3D{x, y, z}))
KELVO_APPEND(vlListAppendMarkRel3D, (int64_t list, double dx, double dy, double dz),
             AppendMarkRel(Point3D{dx, dy, dz}))
KELVO_APPEND(vlListAppendMagnificationAbs, (int64_t list, double magnification, bool wait),
             AppendMagnificationAbs(magnification, wait))
KELVO_APPEND(vlListAppendMagnificationRel, (int64_t list, double difference, bool wait),
             AppendMagnificationRel(difference, wait))

// Curves
KELVO_APPEND(vlListAppendArcAbs2D, (int64_t list, double cx, double cy, double sweep),
             AppendArcAbs(Point2D{cx, cy}, sweep))
KELVO_APPEND(vlListAppendArcAbs3D, (int64_t list, double cx, double cy, double cz, double sweep),
             AppendArcAbs(Point3D{cx, cy, cz}, sweep))
KELVO_APPEND(vlListAppendArcRel2D, (int64_t list, double cx, double cy, double sweep),
             AppendArcRel(Point2D{cx, cy}, sweep))
KELVO_APPEND(vlListAppendArcRel3D, (int64_t list, double cx, double cy, double cz, double sweep),
             AppendArcRel(Point3D{cx, cy, cz}, sweep))
KELVO_APPEND(vlListAppendEllipseAbs2D,
             (int64_t list, double cx, double cy, double a, double b, double rotation),
             AppendEllipseAbs(Point2D{cx, cy}, a, b, rotation))
KELVO_APPEND(vlListAppendEllipseAbs3D,
             (int64_t list, double cx, double cy, double cz, double a, double b, double rotation),
             AppendEllipseAbs(Point3D{cx, cy, cz}, a, b, rotation))
KELVO_APPEND(vlListAppendEllipseRel2D,
             (int64_t list, double cx, double cy, double a, double b, double rotation),
             AppendEllipseRel(Point2D{cx, cy}, a, b, rotation))
KELVO_APPEND(vlListAppendEllipseRel3D,
             (int64_t list, double cx, double cy, double cz, double a, double b, double rotation),
             AppendEllipseRel(Point3D{cx, cy, cz}, a, b, rotation))
KELVO_APPEND(vlListAppendEllipticCurveAbs2D,
             (int64_t list, double cx, double cy, double ratio, double rotation, double sweep),
             AppendEllipticCurveAbs(Point2D{cx, cy}, ratio, rotation, sweep))
KELVO_APPEND(vlListAppendEllipticCurveAbs3D,
             (int64_t list, double cx, double cy, double cz, double ratio, double rotation, double sweep),
             AppendEllipticCurveAbs(Point3D{cx, cy, cz}, ratio, rotation, sweep))
KELVO_APPEND(vlListAppendEllipticCurveRel2D,
             (int64_t list, double cx, double cy, double ratio, double rotation, double sweep),
             AppendEllipticCurveRel(Point2D{cx, cy}, ratio, rotation, sweep))
KELVO_APPEND(vlListAppendEllipticCurveRel3D,
             (int64_t list, double cx, double cy, double cz, double ratio, double rotation, double sweep),
             AppendEllipticCurveRel(Point3D{cx, cy, cz}, ratio, rotation, sweep))
KELVO_APPEND(vlListAppendGeneralEllipse,
             (int64_t list, double cx, double cy, double cz, double ax, double ay, double az, double bx,
              double by, double bz, double sweep),
             AppendGeneralEllipse(Point3D{cx, cy, cz}, Point3D{ax, ay, az}, Point3D{bx, by, bz}, sweep))
KELVO_APPEND(vlListAppendQuadraticBezierAbs2D, (int64_t list, double cx, double cy, double x, double y),
             AppendBezierAbs(Point2D{cx, cy}, Point2D{x, y}))
KELVO_APPEND(vlListAppendQuadraticBezierAbs3D,
             (int64_t list, double cx, double cy, double cz, double x, double y, double z),
             AppendBezierAbs(Point3D{cx, cy, cz}, Point3D{x, y, z}))
KELVO_APPEND(vlListAppendQuadraticBezierRel2D, (int64_t list, double cx, double cy, double dx, double dy),
             AppendBezierRel(Point2D{cx, cy}, Point2D{dx, dy}))
KELVO_APPEND(vlListAppendQuadraticBezierRel3D,
             (int64_t list, double cx, double cy, double cz, double dx, double dy, double dz),
             AppendBezierRel(Point3D{cx, cy, cz}, Point3D{dx, dy, dz}))
KELVO_APPEND(vlListAppendCubicBezierAbs2D,
             (int64_t list, double c1x, double c1y, double c2x, double c2y, double x, double y),
             AppendBezierAbs(Point2D{c1x, c1y}, Point2D{c2x, c2y}, Point2D{x, y}))
KELVO_APPEND(vlListAppendCubicBezierAbs3D,
             (int64_t list, double c1x, double c1y, double c1z, double c2x, double c2y, double c2z, double x,
              double y, double z),
             AppendBezierAbs(Point3D{c1x, c1y, c1z}, Point3D{c2x, c2y, c2z}, Point3D{x, y, z}))
KELVO_APPEND(vlListAppendCubicBezierRel2D,
             (int64_t list, double c1x, double c1y, double c2x, double c2y, double dx, double dy),
             AppendBezierRel(Point2D{c1x, c1y}, Point2D{c2x, c2y}, Point2D{dx, dy}))
KELVO_APPEND(vlListAppendCubicBezierRel3D,
             (int64_t list, double c1x, double c1y, double c1z, double c2x, double c2y, double c2z, double dx,
              double dy, double dz),
             AppendBezierRel(Point3D{c1x, c1y, c1z}, Point3D{c2x, c2y, c2z}, Point3D{dx, dy, dz}))

// Lines of pixels and dots
KELVO_APPEND(vlListAppendBitmapLineAbs2D,
             (int64_t list, double x0, double y0, double x1, double y1, const uint16_t* powers,
              uint32_t count, int32_t channel),
             AppendBitmapLineAbs(Point2D{x0, y0}, Point2D{x1, y1}, Powers(powers, count), channel))
KELVO_APPEND(vlListAppendBitmapLineAbs3D,
             (int64_t list, double x0, double y0, double z0, double x1, double y1, double z1,
              const uint16_t* powers, uint32_t count, int32_t channel),
             AppendBitmapLineAbs(Point3D{x0, y0, z0}, Point3D{x1, y1, z1}, Powers(powers, count), channel))
KELVO_APPEND(vlListAppendBitmapLineRel2D,
             (int64_t list, double x0, double y0, double x1, double y1, const uint16_t* powers,
              uint32_t count, int32_t channel),
             AppendBitmapLineRel(Point2D{x0, y0}, Point2D{x1, y1}, Powers(powers, count), channel))
KELVO_APPEND(vlListAppendBitmapLineRel3D,
             (int64_t list, double x0, double y0, double z0, double x1, double y1, double z1,
              const uint16_t* powers, uint32_t count, int32_t channel),
             AppendBitmapLineRel(Point3D{x0, y0, z0}, Point3D{x1, y1, z1}, Powers(powers, count), channel))

#define KELVO_SHOTS \
  const double *times, uint32_t time_count, const uint16_t *powers, uint32_t power_count, int32_t channel
#define KELVO_APPEND_SHOTS(function, method, coordinates, from, to)          \
  int32_t function coordinates {                                             \
    return OnList(list, [&](CommandList& commands) {                         \
      const Shots shots = TakeShots(times, time_count, powers, power_count); \
      commands.method(from, to, shots.Times, shots.Powers, channel);         \
    });                                                                      \
  }
KELVO_APPEND_SHOTS(vlListAppendPointAndShootLineAbs2D, AppendPointAndShootLineAbs,
                   (int64_t list, double x0, double y0, double x1, double y1, KELVO_SHOTS), (Point2D{x0, y0}),
                   (Point2D{x1, y1}))
KELVO_APPEND_SHOTS(vlListAppendPointAndShootLineAbs3D, AppendPointAndShootLineAbs,
                   (int64_t list, double x0, double y0, double z0, double x1, double y1, double z1,
                    KELVO_SHOTS),
                   (Point3D{x0, y0, z0}), (Point3D{x1, y1, z1}))
KELVO_APPEND_SHOTS(vlListAppendPointAndShootLineRel2D, AppendPointAndShootLineRel,
                   (int64_t list, double x0, double y0, double x1, double y1, KELVO_SHOTS), (Point2D{x0, y0}),
                   (Point2D{x1, y1}))
KELVO_APPEND_SHOTS(vlListAppendPointAndShootLineRel3D, AppendPointAndShootLineRel,
                   (int64_t list, double x0, double y0, double z0, double x1, double y1, double z1,
                    KELVO_SHOTS),
                   (Point3D{x0, y0, z0}), (Point3D{x1, y1, z1}))
#undef KELVO_APPEND_SHOTS
#undef KELVO_SHOTS
KELVO_APPEND(vlListAppendJumpAndShoot2D,
             (int64_t list, const vlPoint2D* points, uint32_t count, int32_t pulses),
             AppendJumpAndShoot(JumpTargets(points, count), false, pulses))
KELVO_APPEND(vlListAppendJumpAndShoot3D,
             (int64_t list, const vlPoint3D* points, uint32_t count, int32_t pulses),
             AppendJumpAndShoot(JumpTargets(points, count), true, pulses))
KELVO_APPEND(vlListAppendMicroVectors2D, (int64_t list, const vlPoint2DInt* vectors, uint32_t count),
             AppendMicroVectors(MicroVectors<Point2DInt>(vectors, count)))
KELVO_APPEND(vlListAppendMicroVectors3D, (int64_t list, const vlPoint3DInt* vectors, uint32_t count),
             AppendMicroVectors(MicroVectors<Point3DInt>(vectors, count)))
KELVO_APPEND(vlListAppendPositions2D, (int64_t list, const vlPoint2D* positions, uint32_t count),
             AppendPositions(Elements<Point2D>(positions, count, "positions")))
KELVO_APPEND(vlListAppendPositions3D, (int64_t list, const vlPoint3D* positions, uint32_t count),
             AppendPositions(Elements<Point3D>(positions, count, "positions")))

// Where things are
KELVO_APPEND(vlListAppendScalingFactor, (int64_t list, double x, double y),
             AppendScalingFactor(Point2D{x, y}))
KELVO_APPEND(vlListAppendHeadingScale, (int64_t list, double x, double y, double z),
             AppendHeadingTransformation(Point3D{x, y, z}))
KELVO_APPEND(vlListAppendTransformation, (int64_t list, const vlTransform3D* transform),
             AppendTransformation(Taken(transform)))
KELVO_APPEND(vlListAppendHeadBias,
             (int64_t list, int32_t head, int32_t axes, const double* biases, uint32_t count),
             AppendHeadBias(head, static_cast<Axes::_enumerated>(axes),
                            Elements<double>(biases, count, "biases")))
KELVO_APPEND(vlListAppendSelectHeadCorrection, (int64_t list, int32_t head, int32_t correction),
             AppendSelectHeadCorrection(head, correction))

// Speeds and delays
KELVO_APPEND(vlListAppendJumpSpeed, (int64_t list, double speed), AppendJumpSpeed(speed))
KELVO_APPEND(vlListAppendMarkSpeed, (int64_t list, double speed), AppendMarkSpeed(speed))
KELVO_APPEND(vlListAppendMagnificationSpeed, (int64_t list, double speed), AppendMagnificationSpeed(speed))
KELVO_APPEND(vlListAppendSpeedScale, (int64_t list, double factor), AppendSpeedScale(factor))
KELVO_APPEND(vlListAppendJumpDelay, (int64_t list, double delay_us), AppendJumpDelay(delay_us))
KELVO_APPEND(vlListAppendMinJumpDelay, (int64_t list, double delay_us), AppendMinimumJumpDelay(delay_us))
KELVO_APPEND(vlListAppendJumpLengthLimit, (int64_t list, double length), AppendJumpLengthLimit(length))
KELVO_APPEND(vlListAppendEnableVariableJumpDelay, (int64_t list, bool on), AppendEnableVariableJumpDelay(on))
KELVO_APPEND(vlListAppendMarkDelay, (int64_t list, double delay_us), AppendMarkDelay(delay_us))
KELVO_APPEND(vlListAppendPolyDelay, (int64_t list, double delay_us), AppendPolyDelay(delay_us))
KELVO_APPEND(vlListAppendEnableVariablePolyDelay, (int64_t list, bool on), AppendEnableVariablePolyDelay(on))
KELVO_APPEND(vlListAppendLaserOnDelay, (int64_t list, double delay_us), AppendLaserOnDelay(delay_us))
KELVO_APPEND(vlListAppendLaserOffDelay, (int64_t list, double delay_us), AppendLaserOffDelay(delay_us))
KELVO_APPEND(vlListAppendEvaluationLeadTime, (int64_t list, double time_us),
             AppendEvaluationLeadTime(time_us))
KELVO_APPEND(vlListAppendSleep, (int64_t list, double duration_us), AppendSleep(duration_us))

// Sky-writing, wobble, dashes
KELVO_APPEND(vlListAppendSkyWritingMode, (int64_t list, int32_t mode),
             AppendSkyWritingMode(SkyWritingMode::_from_integral(mode)))
KELVO_APPEND(vlListAppendSkyWritingMinCoH, (int64_t list, double limit), AppendSkyWritingMinCoH(limit))
KELVO_APPEND(vlListAppendSkyWritingMergedExtensionsMaxCoH, (int64_t list, double limit),
             AppendSkyWritingMergedExtensionsMaxCoH(limit))
KELVO_APPEND(vlListAppendSkyWritingAccelerationDelay, (int64_t list, double delay_us),
             AppendSkyWritingAccelerationDelay(delay_us))
KELVO_APPEND(vlListAppendSkyWritingDecelerationDelay, (int64_t list, double delay_us),
             AppendSkyWritingDecelerationDelay(delay_us))
KELVO_APPEND(vlListAppendSkyWritingExtensionTime, (int64_t list, double time_us),
             AppendSkyWritingExtensionTime(time_us))
KELVO_APPEND(vlListAppendSkyWritingLaserOnDelay, (int64_t list, double delay_us),
             AppendSkyWritingLaserOnDelay(delay_us))
KELVO_APPEND(vlListAppendSkyWritingLaserOffDelay, (int64_t list, double delay_us),
             AppendSkyWritingLaserOffDelay(delay_us))
KELVO_APPEND(vlListAppendEnableWobble, (int64_t list, bool on), AppendEnableWobble(on))
KELVO_APPEND(vlListAppendWobbleAmplitude, (int64_t list, double x, double y),
             AppendWobbleAmplitude(Point2D{x, y}))
KELVO_APPEND(vlListAppendWobbleFrequency, (int64_t list, double x, double y),
             AppendWobbleFrequency(Point2D{x, y}))
KELVO_APPEND(vlListAppendWobblePhase, (int64_t list, double x, double y), AppendWobblePhase(Point2D{x, y}))
KELVO_APPEND(vlListAppendWobbleCircle, (int64_t list, double amplitude, double frequency),
             AppendWobbleCircle(amplitude, frequency))
KELVO_APPEND(vlListAppendWobbleEight,
             (int64_t list, double amplitude_x, double amplitude_y, double frequency),
             AppendWobbleEight(Point2D{amplitude_x, amplitude_y}, frequency))
KELVO_APPEND(vlListAppendEnableDashedLine, (int64_t list, bool on, double offset),
             AppendEnableDashedLine(on, offset))
KELVO_APPEND(vlListAppendDashedLinePattern, (int64_t list, const double* lengths, uint32_t count),
             AppendDashedLinePattern(Elements<double>(lengths, count, "lengths")))

// Laser
KELVO_APPEND(vlListAppendLaserOn, (int64_t list), AppendLaserOn())
KELVO_APPEND(vlListAppendLaserOn2, (int64_t list, int32_t pulses, bool wait), AppendLaserOn(pulses, wait))
KELVO_APPEND(vlListAppendLaserOff, (int64_t list), AppendLaserOff())
KELVO_APPEND(vlListAppendPower, (int64_t list, uint16_t power, int32_t channel), AppendPower(power, channel))
KELVO_APPEND(vlListAppendPower2, (int64_t list, uint16_t power, double ramp, int32_t channel),
             AppendPower(power, ramp, channel))
KELVO_APPEND(vlListAppendPowerScale, (int64_t list, double factor, int32_t channel),
             AppendPowerScale(factor, channel))
KELVO_APPEND(vlListAppendSimmerPower, (int64_t list, uint16_t power), AppendSimmerPower(power))
KELVO_APPEND(vlListAppendLmFrequency, (int64_t list, double frequency), AppendLmFrequency(frequency))
KELVO_APPEND(vlListAppendLmWidth, (int64_t list, double width_us), AppendLmWidth(width_us))
KELVO_APPEND(vlListAppendEnablePilot, (int64_t list, bool on), AppendEnablePilot(on))
KELVO_APPEND(vlListAppendArmLaser, (int64_t list, bool on), AppendArmLaser(on))
KELVO_APPEND(vlListAppendEnableVelocityCorrection, (int64_t list, bool on, int32_t channel),
             AppendEnableVelocityCorrection(on, channel))
KELVO_APPEND(vlListAppendEnablePowerCorrection, (int64_t list, bool on, int32_t channel),
             AppendEnablePowerCorrection(on, channel))
KELVO_APPEND(vlListAppendEnablePowerCalibration, (int64_t list, bool on, int32_t channel),
             AppendEnablePowerCalibration(on, channel))

// Progress, variables, signals
KELVO_APPEND(vlListAppendProgress, (int64_t list, int32_t value), AppendProgress(value))
KELVO_APPEND(vlListAppendIncrementCounter, (int64_t list, const char* name),
             AppendIncrementCounter(Name(name)))
KELVO_APPEND(vlListAppendBooleanSet, (int64_t list, const char* name, bool value),
             AppendBooleanSet(Name(name), value))
KELVO_APPEND(vlListAppendIntegerSet, (int64_t list, const char* name, int32_t value),
             AppendIntegerSet(Name(name), value))
KELVO_APPEND(vlListAppendSignalSet, (int64_t list, const char* name), AppendSignalSet(Name(name)))
KELVO_APPEND(vlListAppendSignalReset, (int64_t list, const char* name), AppendSignalReset(Name(name)))

// Waits
KELVO_APPEND(vlListAppendWaitStart, (int64_t list, int32_t timeout_us), AppendWaitStart(timeout_us))
KELVO_APPEND(vlListAppendWaitForInput,
             (int64_t list, uint32_t mask, int32_t port, bool expected, bool all, uint32_t value,
              int32_t timeout_us),
             AppendWaitForInput(mask, port, expected, all, value, timeout_us))
KELVO_APPEND(vlListAppendWaitForSignal, (int64_t list, const char* name, int32_t timeout_us),
             AppendWaitForSignal(Name(name), timeout_us))
KELVO_APPEND(vlListAppendSuspend, (int64_t list), AppendSuspend())

// Marking on the fly
KELVO_APPEND(vlListAppendStartMotf, (int64_t list), AppendStartMotf())
KELVO_APPEND(vlListAppendStopMotf2D, (int64_t list, double x, double y), AppendStopMotf(Point2D{x, y}))
KELVO_APPEND(vlListAppendStopMotf3D, (int64_t list, double x, double y, double z),
             AppendStopMotf(Point3D{x, y, z}))
KELVO_APPEND(vlListAppendMotfWaitPart, (int64_t list, int32_t part), AppendMotfWaitPart(part))
KELVO_APPEND(vlListAppendMotfWaitDistance, (int64_t list, double distance, int32_t mode, int32_t source),
             AppendMotfWaitDistance(distance, MotfDistanceMode::_from_integral(mode), source))
KELVO_APPEND(vlListAppendMotfTileOffset, (int64_t list, double offset), AppendMotfTileOffset(offset))

// Labels and branches
KELVO_APPEND(vlListAppendLabel, (int64_t list, const char* label), AppendLabel(Label(label)))
KELVO_APPEND(vlListAppendBranchAbs, (int64_t list, int32_t position), AppendBranchAbs(position))
KELVO_APPEND(vlListAppendBranchRel, (int64_t list, int32_t distance), AppendBranchRel(distance))
KELVO_APPEND(vlListAppendBranchToLabel, (int64_t list, const char* label), AppendBranchToLabel(Label(label)))
KELVO_APPEND(vlListAppendBranchAbsCondPort,
             (int64_t list, int32_t position, uint32_t mask, int32_t port, bool expected, bool all,
              uint32_t value),
             AppendBranchAbs(position, mask, port, expected, all, value))
KELVO_APPEND(vlListAppendBranchRelCondPort,
             (int64_t list, int32_t distance, uint32_t mask, int32_t port, bool expected, bool all,
              uint32_t value),
             AppendBranchRel(distance, mask, port, expected, all, value))
KELVO_APPEND(vlListAppendBranchToLabelCondPort,
             (int64_t list, const char* label, uint32_t mask, int32_t port, bool expected, bool all,
              uint32_t value),
             AppendBranchToLabel(Label(label), mask, port, expected, all, value))
KELVO_APPEND(vlListAppendBranchAbsCondFlag, (int64_t list, int32_t position, const char* name, bool value),
             AppendBranchAbs(position, Name(name), value))
KELVO_APPEND(vlListAppendBranchRelCondFlag, (int64_t list, int32_t distance, const char* name, bool value),
             AppendBranchRel(distance, Name(name), value))
KELVO_APPEND(vlListAppendBranchToLabelCondFlag,
             (int64_t list, const char* label, const char* name, bool value),
             AppendBranchToLabel(Label(label), Name(name), value))

// Loops
KELVO_APPEND(vlListAppendLoopStart, (int64_t list, int32_t count), AppendLoopStart(count))
KELVO_APPEND(vlListAppendLoopEnd, (int64_t list), AppendLoopEnd())
KELVO_APPEND(vlListAppendLoopBreak, (int64_t list), AppendLoopBreak())

// Switch
KELVO_APPEND(vlListAppendSwitchPort, (int64_t list, int32_t port, bool shifted, uint32_t mask),
             AppendSwitch(port, shifted, mask))
KELVO_APPEND(vlListAppendSwitchValue, (int64_t list, const char* name), AppendSwitch(Name(name)))
KELVO_APPEND(vlListAppendCaseAbsPort, (int64_t list, int32_t position, uint32_t value),
             AppendCaseAbs(position, value))
KELVO_APPEND(vlListAppendCaseAbsValue, (int64_t list, int32_t position, int32_t value),
             AppendCaseAbs(position, value))
KELVO_APPEND(vlListAppendCaseRelPort, (int64_t list, int32_t distance, uint32_t value),
             AppendCaseRel(distance, value))
KELVO_APPEND(vlListAppendCaseRelValue, (int64_t list, int32_t distance, int32_t value),
             AppendCaseRel(distance, value))
KELVO_APPEND(vlListAppendCaseToLabelPort, (int64_t list, const char* label, uint32_t value),
             AppendCaseToLabel(Label(label), value))
KELVO_APPEND(vlListAppendCaseToLabelValue, (int64_t list, const char* label, int32_t value),
             AppendCaseToLabel(Label(label), value))
KELVO_APPEND(vlListAppendCaseBranchListPort, (int64_t list, int32_t list_id, uint32_t value),
             AppendCaseBranchList(list_id, value))
KELVO_APPEND(vlListAppendCaseBranchListValue, (int64_t list, int32_t list_id, int32_t value),
             AppendCaseBranchList(list_id, value))
KELVO_APPEND(vlListAppendCaseCallListPort, (int64_t list, int32_t list_id, uint32_t value),
             AppendCaseCallList(list_id, value))
KELVO_APPEND(vlListAppendCaseCallListValue, (int64_t list, int32_t list_id, int32_t value),
             AppendCaseCallList(list_id, value))
KELVO_APPEND(vlListAppendDefaultAbs, (int64_t list, int32_t position), AppendDefaultAbs(position))
KELVO_APPEND(vlListAppendDefaultRel, (int64_t list, int32_t distance), AppendDefaultRel(distance))
KELVO_APPEND(vlListAppendDefaultToLabel, (int64_t list, const char* label),
             AppendDefaultToLabel(Label(label)))
KELVO_APPEND(vlListAppendDefaultBranchList, (int64_t list, int32_t list_id), AppendDefaultBranchList(list_id))
KELVO_APPEND(vlListAppendDefaultCallList, (int64_t list, int32_t list_id), AppendDefaultCallList(list_id))

// Other lists
KELVO_APPEND(vlListAppendBranchList, (int64_t list, int32_t list_id), AppendBranchList(list_id))
KELVO_APPEND(vlListAppendBranchListCondPort,
             (int64_t list, int32_t list_id, uint32_t mask, int32_t port, bool expected, bool all,
              uint32_t value),
             AppendBranchList(list_id, mask, port, expected, all, value))
KELVO_APPEND(vlListAppendBranchListCondFlag, (int64_t list, int32_t list_id, const char* name, bool value),
             AppendBranchList(list_id, Name(name), value))
KELVO_APPEND(vlListAppendCallList, (int64_t list, int32_t list_id), AppendCallList(list_id))
KELVO_APPEND(vlListAppendCallListCondPort,
             (int64_t list, int32_t list_id, uint32_t mask, int32_t port, bool expected, bool all,
              uint32_t value),
             AppendCallList(list_id, mask, port, expected, all, value))
KELVO_APPEND(vlListAppendCallListCondFlag, (int64_t list, int32_t list_id, const char* name, bool value),
             AppendCallList(list_id, Name(name), value))
KELVO_APPEND(vlListAppendExitList, (int64_t list), AppendExitList())
KELVO_APPEND(vlListAppendExitListCondPort,
             (int64_t list, uint32_t mask, int32_t port, bool expected, bool all, uint32_t value),
             AppendExitList(mask, port, expected, all, value))
KELVO_APPEND(vlListAppendExitListCondFlag, (int64_t list, const char* name, bool value),
             AppendExitList(Name(name), value))
KELVO_APPEND(vlListAppendBranchStandAloneList, (int64_t list), AppendBranchStandAloneList())

// Text
KELVO_APPEND(vlListAppendSelectFont, (int64_t list, int32_t font_id), AppendSelectFont(font_id))
KELVO_APPEND(vlListAppendMarkChar, (int64_t list, char character), AppendMarkChar(character))
KELVO_APPEND(vlListAppendMarkText, (int64_t list, const char* text), AppendMarkText(Text(text)))
KELVO_APPEND(vlListAppendMarkTime, (int64_t list), AppendMarkTime())
KELVO_APPEND(vlListAppendMarkCounter, (int64_t list, const char* name, int32_t digits),
             AppendMarkCounter(Name(name), digits))

// Peripherals
KELVO_APPEND(vlListAppendEnhancedCommand, (int64_t list, int32_t head, int32_t axis, uint32_t command),
             AppendEnhancedCommand(head, Axis::_from_integral(axis), command))
KELVO_APPEND(vlListAppendGpioValue, (int64_t list, int32_t port, int32_t action, uint32_t value),
             AppendGpioValue(port, action, value))
KELVO_APPEND(vlListAppendDacValue, (int64_t list, int32_t target, uint32_t value),
             AppendDacValue(PowerTarget::_from_integral(target), value))
KELVO_APPEND(vlListAppendTraceConfig, (int64_t list, const vltbTraceBufferConfig_Struct* config),
             AppendTraceConfig(Taken(config)))
KELVO_APPEND(vlListAppendTraceLabel, (int64_t list, int32_t label), AppendTraceLabel(label))
KELVO_APPEND(vlListAppendSpiWrite, (int64_t list, int32_t module, uint32_t value),
             AppendSpiWrite(module, value))
KELVO_APPEND(vlListAppendSerialPortTransmitString, (int64_t list, const char* text),
             AppendSerialPortTransmitString(Text(text)))
KELVO_APPEND(vlListAppendSerialPortTransmitLine, (int64_t list, const char* text),
             AppendSerialPortTransmitLine(Text(text)))
KELVO_APPEND(vlListAppendSerialPortTransmitBytes, (int64_t list, const uint8_t* bytes, uint32_t count),
             AppendSerialPortTransmitBytes(Bytes(bytes, count)))
KELVO_APPEND(vlListAppendSerialPortVerifyResponseString,
             (int64_t list, const char* request, const char* response),
             AppendSerialPortVerifyResponseString(Text(request, "request"), Text(response, "response")))
KELVO_APPEND(vlListAppendSerialPortVerifyResponseLine,
             (int64_t list, const char* request, const char* response),
             AppendSerialPortVerifyResponseLine(Text(request, "request"), Text(response, "response")))
KELVO_APPEND(vlListAppendSerialPortVerifyResponseBytes,
             (int64_t list, const uint8_t* request, uint32_t request_count, const uint8_t* response,
              uint32_t response_count),
             AppendSerialPortVerifyResponseBytes(Bytes(request, request_count, "request"),
                                                 Bytes(response, response_count, "response")))
