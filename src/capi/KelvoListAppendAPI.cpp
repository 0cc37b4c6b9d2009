// The functions that append commands: each is one call of the list's method.
#include "kelvo/KelvoListAppendAPI.h"

#include "capi/FlatRecord.h"
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

constexpr const char* NoShots = "There must be at least one powerValue and one exposureTimeValue";

std::span<const double> ShotTimes(const double* times, uint32_t count) {
  return AtLeastOne<double>(times, count, "times", NoShots);
}
std::span<const uint16_t> ShotPowers(const uint16_t* powers, uint32_t count) {
  return AtLeastOne<uint16_t>(powers, count, "powers", NoShots);
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

// Calls a method of the list of a handle, inside the frame.
#define KELVO_APPEND(list, ...) OnList(list, [&](CommandList& commands) { commands.__VA_ARGS__; })

// Motion
int32_t vlListAppendJumpAbs2D(int64_t list, double x, double y) {
  return KELVO_APPEND(list, AppendJumpAbs(Point2D{x, y}));
}
int32_t vlListAppendJumpRel2D(int64_t list, double dx, double dy) {
  return KELVO_APPEND(list, AppendJumpRel(Point2D{dx, dy}));
}
int32_t vlListAppendJumpAbs3D(int64_t list, double x, double y, double z) {
  return KELVO_APPEND(list, AppendJumpAbs(Point3D{x, y, z}));
}
int32_t vlListAppendJumpRel3D(int64_t list, double dx, double dy, double dz) {
  return KELVO_APPEND(list, AppendJumpRel(Point3D{dx, dy, dz}));
}
int32_t vlListAppendMarkAbs2D(int64_t list, double x, double y) {
  return KELVO_APPEND(list, AppendMarkAbs(Point2D{x, y}));
}
int32_t vlListAppendMarkRel2D(int64_t list, double dx, double dy) {
  return KELVO_APPEND(list, AppendMarkRel(Point2D{dx, dy}));
}
int32_t vlListAppendMarkAbs3D(int64_t list, double x, double y, double z) {
  return KELVO_APPEND(list, AppendMarkAbs(Point3D{x, y, z}));
}
int32_t vlListAppendMarkRel3D(int64_t list, double dx, double dy, double dz) {
  return KELVO_APPEND(list, AppendMarkRel(Point3D{dx, dy, dz}));
}
int32_t vlListAppendMagnificationAbs(int64_t list, double magnification, bool wait) {
  return KELVO_APPEND(list, AppendMagnificationAbs(magnification, wait));
}
int32_t vlListAppendMagnificationRel(int64_t list, double difference, bool wait) {
  return KELVO_APPEND(list, AppendMagnificationRel(difference, wait));
}

// Curves
int32_t vlListAppendArcAbs2D(int64_t list, double cx, double cy, double sweep) {
  return KELVO_APPEND(list, AppendArcAbs(Point2D{cx, cy}, sweep));
}
int32_t vlListAppendArcAbs3D(int64_t list, double cx, double cy, double cz, double sweep) {
  return KELVO_APPEND(list, AppendArcAbs(Point3D{cx, cy, cz}, sweep));
}
int32_t vlListAppendArcRel2D(int64_t list, double cx, double cy, double sweep) {
  return KELVO_APPEND(list, AppendArcRel(Point2D{cx, cy}, sweep));
}
int32_t vlListAppendArcRel3D(int64_t list, double cx, double cy, double cz, double sweep) {
  return KELVO_APPEND(list, AppendArcRel(Point3D{cx, cy, cz}, sweep));
}
int32_t vlListAppendEllipseAbs2D(int64_t list, double cx, double cy, double a, double b, double rotation) {
  return KELVO_APPEND(list, AppendEllipseAbs(Point2D{cx, cy}, a, b, rotation));
}
int32_t vlListAppendEllipseAbs3D(int64_t list, double cx, double cy, double cz, double a, double b,
                                 double rotation) {
  return KELVO_APPEND(list, AppendEllipseAbs(Point3D{cx, cy, cz}, a, b, rotation));
}
int32_t vlListAppendEllipseRel2D(int64_t list, double cx, double cy, double a, double b, double rotation) {
  return KELVO_APPEND(list, AppendEllipseRel(Point2D{cx, cy}, a, b, rotation));
}
int32_t vlListAppendEllipseRel3D(int64_t list, double cx, double cy, double cz, double a, double b,
                                 double rotation) {
  return KELVO_APPEND(list, AppendEllipseRel(Point3D{cx, cy, cz}, a, b, rotation));
}
int32_t vlListAppendEllipticCurveAbs2D(int64_t list, double cx, double cy, double ratio, double rotation,
                                       double sweep) {
  return KELVO_APPEND(list, AppendEllipticCurveAbs(Point2D{cx, cy}, ratio, rotation, sweep));
}
int32_t vlListAppendEllipticCurveAbs3D(int64_t list, double cx, double cy, double cz, double ratio,
                                       double rotation, double sweep) {
  return KELVO_APPEND(list, AppendEllipticCurveAbs(Point3D{cx, cy, cz}, ratio, rotation, sweep));
}
int32_t vlListAppendEllipticCurveRel2D(int64_t list, double cx, double cy, double ratio, double rotation,
                                       double sweep) {
  return KELVO_APPEND(list, AppendEllipticCurveRel(Point2D{cx, cy}, ratio, rotation, sweep));
}
int32_t vlListAppendEllipticCurveRel3D(int64_t list, double cx, double cy, double cz, double ratio,
                                       double rotation, double sweep) {
  return KELVO_APPEND(list, AppendEllipticCurveRel(Point3D{cx, cy, cz}, ratio, rotation, sweep));
}
int32_t vlListAppendGeneralEllipse(int64_t list, double cx, double cy, double cz, double ax, double ay,
                                   double az, double bx, double by, double bz, double sweep) {
  return KELVO_APPEND(
      list, AppendGeneralEllipse(Point3D{cx, cy, cz}, Point3D{ax, ay, az}, Point3D{bx, by, bz}, sweep));
}
int32_t vlListAppendQuadraticBezierAbs2D(int64_t list, double cx, double cy, double x, double y) {
  return KELVO_APPEND(list, AppendBezierAbs(Point2D{cx, cy}, Point2D{x, y}));
}
int32_t vlListAppendQuadraticBezierAbs3D(int64_t list, double cx, double cy, double cz, double x, double y,
                                         double z) {
  return KELVO_APPEND(list, AppendBezierAbs(Point3D{cx, cy, cz}, Point3D{x, y, z}));
}
int32_t vlListAppendQuadraticBezierRel2D(int64_t list, double cx, double cy, double dx, double dy) {
  return KELVO_APPEND(list, AppendBezierRel(Point2D{cx, cy}, Point2D{dx, dy}));
}
int32_t vlListAppendQuadraticBezierRel3D(int64_t list, double cx, double cy, double cz, double dx, double dy,
                                         double dz) {
  return KELVO_APPEND(list, AppendBezierRel(Point3D{cx, cy, cz}, Point3D{dx, dy, dz}));
}
int32_t vlListAppendCubicBezierAbs2D(int64_t list, double c1x, double c1y, double c2x, double c2y, double x,
                                     double y) {
  return KELVO_APPEND(list, AppendBezierAbs(Point2D{c1x, c1y}, Point2D{c2x, c2y}, Point2D{x, y}));
}
int32_t vlListAppendCubicBezierAbs3D(int64_t list, double c1x, double c1y, double c1z, double c2x, double c2y,
                                     double c2z, double x, double y, double z) {
  return KELVO_APPEND(list,
                      AppendBezierAbs(Point3D{c1x, c1y, c1z}, Point3D{c2x, c2y, c2z}, Point3D{x, y, z}));
}
int32_t vlListAppendCubicBezierRel2D(int64_t list, double c1x, double c1y, double c2x, double c2y, double dx,
                                     double dy) {
  return KELVO_APPEND(list, AppendBezierRel(Point2D{c1x, c1y}, Point2D{c2x, c2y}, Point2D{dx, dy}));
}
int32_t vlListAppendCubicBezierRel3D(int64_t list, double c1x, double c1y, double c1z, double c2x, double c2y,
                                     double c2z, double dx, double dy, double dz) {
  return KELVO_APPEND(list,
                      AppendBezierRel(Point3D{c1x, c1y, c1z}, Point3D{c2x, c2y, c2z}, Point3D{dx, dy, dz}));
}

// Lines of pixels and dots
int32_t vlListAppendBitmapLineAbs2D(int64_t list, double x0, double y0, double x1, double y1,
                                    const uint16_t* powers, uint32_t count, int32_t channel) {
  return KELVO_APPEND(list,
                      AppendBitmapLineAbs(Point2D{x0, y0}, Point2D{x1, y1}, Powers(powers, count), channel));
}
int32_t vlListAppendBitmapLineAbs3D(int64_t list, double x0, double y0, double z0, double x1, double y1,
                                    double z1, const uint16_t* powers, uint32_t count, int32_t channel) {
  return KELVO_APPEND(
      list, AppendBitmapLineAbs(Point3D{x0, y0, z0}, Point3D{x1, y1, z1}, Powers(powers, count), channel));
}
int32_t vlListAppendBitmapLineRel2D(int64_t list, double x0, double y0, double x1, double y1,
                                    const uint16_t* powers, uint32_t count, int32_t channel) {
  return KELVO_APPEND(list,
                      AppendBitmapLineRel(Point2D{x0, y0}, Point2D{x1, y1}, Powers(powers, count), channel));
}
int32_t vlListAppendBitmapLineRel3D(int64_t list, double x0, double y0, double z0, double x1, double y1,
                                    double z1, const uint16_t* powers, uint32_t count, int32_t channel) {
  return KELVO_APPEND(
      list, AppendBitmapLineRel(Point3D{x0, y0, z0}, Point3D{x1, y1, z1}, Powers(powers, count), channel));
}
int32_t vlListAppendPointAndShootLineAbs2D(int64_t list, double x0, double y0, double x1, double y1,
                                           const double* times, uint32_t time_count, const uint16_t* powers,
                                           uint32_t power_count, int32_t channel) {
  return KELVO_APPEND(
      list, AppendPointAndShootLineAbs(Point2D{x0, y0}, Point2D{x1, y1}, ShotTimes(times, time_count),
                                       ShotPowers(powers, power_count), channel));
}
int32_t vlListAppendPointAndShootLineAbs3D(int64_t list, double x0, double y0, double z0, double x1,
                                           double y1, double z1, const double* times, uint32_t time_count,
                                           const uint16_t* powers, uint32_t power_count, int32_t channel) {
  return KELVO_APPEND(
      list, AppendPointAndShootLineAbs(Point3D{x0, y0, z0}, Point3D{x1, y1, z1}, ShotTimes(times, time_count),
                                       ShotPowers(powers, power_count), channel));
}
int32_t vlListAppendPointAndShootLineRel2D(int64_t list, double x0, double y0, double x1, double y1,
                                           const double* times, uint32_t time_count, const uint16_t* powers,
                                           uint32_t power_count, int32_t channel) {
  return KELVO_APPEND(
      list, AppendPointAndShootLineRel(Point2D{x0, y0}, Point2D{x1, y1}, ShotTimes(times, time_count),
                                       ShotPowers(powers, power_count), channel));
}
int32_t vlListAppendPointAndShootLineRel3D(int64_t list, double x0, double y0, double z0, double x1,
                                           double y1, double z1, const double* times, uint32_t time_count,
                                           const uint16_t* powers, uint32_t power_count, int32_t channel) {
  return KELVO_APPEND(
      list, AppendPointAndShootLineRel(Point3D{x0, y0, z0}, Point3D{x1, y1, z1}, ShotTimes(times, time_count),
                                       ShotPowers(powers, power_count), channel));
}
int32_t vlListAppendJumpAndShoot2D(int64_t list, const vlPoint2D* points, uint32_t count, int32_t pulses) {
  return KELVO_APPEND(list, AppendJumpAndShoot(JumpTargets(points, count), false, pulses));
}
int32_t vlListAppendJumpAndShoot3D(int64_t list, const vlPoint3D* points, uint32_t count, int32_t pulses) {
  return KELVO_APPEND(list, AppendJumpAndShoot(JumpTargets(points, count), true, pulses));
}
int32_t vlListAppendMicroVectors2D(int64_t list, const vlPoint2DInt* vectors, uint32_t count) {
  return KELVO_APPEND(list, AppendMicroVectors(MicroVectors<Point2DInt>(vectors, count)));
}
int32_t vlListAppendMicroVectors3D(int64_t list, const vlPoint3DInt* vectors, uint32_t count) {
  return KELVO_APPEND(list, AppendMicroVectors(MicroVectors<Point3DInt>(vectors, count)));
}
int32_t vlListAppendPositions2D(int64_t list, const vlPoint2D* positions, uint32_t count) {
  return KELVO_APPEND(list, AppendPositions(Elements<Point2D>(positions, count, "positions")));
}
int32_t vlListAppendPositions3D(int64_t list, const vlPoint3D* positions, uint32_t count) {
  return KELVO_APPEND(list, AppendPositions(Elements<Point3D>(positions, count, "positions")));
}

// Where things are
int32_t vlListAppendScalingFactor(int64_t list, double x, double y) {
  return KELVO_APPEND(list, AppendScalingFactor(Point2D{x, y}));
}
int32_t vlListAppendHeadingScale(int64_t list, double x, double y, double z) {
  return KELVO_APPEND(list, AppendHeadingTransformation(Point3D{x, y, z}));
}
int32_t vlListAppendTransformation(int64_t list, const vlTransform3D* transform) {
  return KELVO_APPEND(list, AppendTransformation(Flat::Taken<Transform3D>(transform, "transform")));
}
int32_t vlListAppendHeadBias(int64_t list, int32_t head, int32_t axes, const double* biases, uint32_t count) {
  return KELVO_APPEND(list, AppendHeadBias(head, static_cast<Axes::_enumerated>(axes),
                                           Elements<double>(biases, count, "biases")));
}
int32_t vlListAppendSelectHeadCorrection(int64_t list, int32_t head, int32_t correction) {
  return KELVO_APPEND(list, AppendSelectHeadCorrection(head, correction));
}

// Speeds and delays
int32_t vlListAppendJumpSpeed(int64_t list, double speed) {
  return KELVO_APPEND(list, AppendJumpSpeed(speed));
}
int32_t vlListAppendMarkSpeed(int64_t list, double speed) {
  return KELVO_APPEND(list, AppendMarkSpeed(speed));
}
int32_t vlListAppendMagnificationSpeed(int64_t list, double speed) {
  return KELVO_APPEND(list, AppendMagnificationSpeed(speed));
}
int32_t vlListAppendSpeedScale(int64_t list, double factor) {
  return KELVO_APPEND(list, AppendSpeedScale(factor));
}
int32_t vlListAppendJumpDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendJumpDelay(delay_us));
}
int32_t vlListAppendMinJumpDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendMinimumJumpDelay(delay_us));
}
int32_t vlListAppendJumpLengthLimit(int64_t list, double length) {
  return KELVO_APPEND(list, AppendJumpLengthLimit(length));
}
int32_t vlListAppendEnableVariableJumpDelay(int64_t list, bool on) {
  return KELVO_APPEND(list, AppendEnableVariableJumpDelay(on));
}
int32_t vlListAppendMarkDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendMarkDelay(delay_us));
}
int32_t vlListAppendPolyDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendPolyDelay(delay_us));
}
int32_t vlListAppendEnableVariablePolyDelay(int64_t list, bool on) {
  return KELVO_APPEND(list, AppendEnableVariablePolyDelay(on));
}
int32_t vlListAppendLaserOnDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendLaserOnDelay(delay_us));
}
int32_t vlListAppendLaserOffDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendLaserOffDelay(delay_us));
}
int32_t vlListAppendEvaluationLeadTime(int64_t list, double time_us) {
  return KELVO_APPEND(list, AppendEvaluationLeadTime(time_us));
}
int32_t vlListAppendSleep(int64_t list, double duration_us) {
  return KELVO_APPEND(list, AppendSleep(duration_us));
}

// Sky-writing, wobble, dashes
int32_t vlListAppendSkyWritingMode(int64_t list, int32_t mode) {
  return KELVO_APPEND(list, AppendSkyWritingMode(SkyWritingMode::_from_integral(mode)));
}
int32_t vlListAppendSkyWritingMinCoH(int64_t list, double limit) {
  return KELVO_APPEND(list, AppendSkyWritingMinCoH(limit));
}
int32_t vlListAppendSkyWritingMergedExtensionsMaxCoH(int64_t list, double limit) {
  return KELVO_APPEND(list, AppendSkyWritingMergedExtensionsMaxCoH(limit));
}
int32_t vlListAppendSkyWritingAccelerationDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendSkyWritingAccelerationDelay(delay_us));
}
int32_t vlListAppendSkyWritingDecelerationDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendSkyWritingDecelerationDelay(delay_us));
}
int32_t vlListAppendSkyWritingExtensionTime(int64_t list, double time_us) {
  return KELVO_APPEND(list, AppendSkyWritingExtensionTime(time_us));
}
int32_t vlListAppendSkyWritingLaserOnDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendSkyWritingLaserOnDelay(delay_us));
}
int32_t vlListAppendSkyWritingLaserOffDelay(int64_t list, double delay_us) {
  return KELVO_APPEND(list, AppendSkyWritingLaserOffDelay(delay_us));
}
int32_t vlListAppendEnableWobble(int64_t list, bool on) {
  return KELVO_APPEND(list, AppendEnableWobble(on));
}
int32_t vlListAppendWobbleAmplitude(int64_t list, double x, double y) {
  return KELVO_APPEND(list, AppendWobbleAmplitude(Point2D{x, y}));
}
int32_t vlListAppendWobbleFrequency(int64_t list, double x, double y) {
  return KELVO_APPEND(list, AppendWobbleFrequency(Point2D{x, y}));
}
int32_t vlListAppendWobblePhase(int64_t list, double x, double y) {
  return KELVO_APPEND(list, AppendWobblePhase(Point2D{x, y}));
}
int32_t vlListAppendWobbleCircle(int64_t list, double amplitude, double frequency) {
  return KELVO_APPEND(list, AppendWobbleCircle(amplitude, frequency));
}
int32_t vlListAppendWobbleEight(int64_t list, double amplitude_x, double amplitude_y, double frequency) {
  return KELVO_APPEND(list, AppendWobbleEight(Point2D{amplitude_x, amplitude_y}, frequency));
}
int32_t vlListAppendEnableDashedLine(int64_t list, bool on, double offset) {
  return KELVO_APPEND(list, AppendEnableDashedLine(on, offset));
}
int32_t vlListAppendDashedLinePattern(int64_t list, const double* lengths, uint32_t count) {
  return KELVO_APPEND(list, AppendDashedLinePattern(Elements<double>(lengths, count, "lengths")));
}

// Laser
int32_t vlListAppendLaserOn(int64_t list) {
  return KELVO_APPEND(list, AppendLaserOn());
}
int32_t vlListAppendLaserOn2(int64_t list, int32_t pulses, bool wait) {
  return KELVO_APPEND(list, AppendLaserOn(pulses, wait));
}
int32_t vlListAppendLaserOff(int64_t list) {
  return KELVO_APPEND(list, AppendLaserOff());
}
int32_t vlListAppendPower(int64_t list, uint16_t power, int32_t channel) {
  return KELVO_APPEND(list, AppendPower(power, channel));
}
int32_t vlListAppendPower2(int64_t list, uint16_t power, double ramp, int32_t channel) {
  return KELVO_APPEND(list, AppendPower(power, ramp, channel));
}
int32_t vlListAppendPowerScale(int64_t list, double factor, int32_t channel) {
  return KELVO_APPEND(list, AppendPowerScale(factor, channel));
}
int32_t vlListAppendSimmerPower(int64_t list, uint16_t power) {
  return KELVO_APPEND(list, AppendSimmerPower(power));
}
int32_t vlListAppendLmFrequency(int64_t list, double frequency) {
  return KELVO_APPEND(list, AppendLmFrequency(frequency));
}
int32_t vlListAppendLmWidth(int64_t list, double width_us) {
  return KELVO_APPEND(list, AppendLmWidth(width_us));
}
int32_t vlListAppendEnablePilot(int64_t list, bool on) {
  return KELVO_APPEND(list, AppendEnablePilot(on));
}
int32_t vlListAppendArmLaser(int64_t list, bool on) {
  return KELVO_APPEND(list, AppendArmLaser(on));
}
int32_t vlListAppendEnableVelocityCorrection(int64_t list, bool on, int32_t channel) {
  return KELVO_APPEND(list, AppendEnableVelocityCorrection(on, channel));
}
int32_t vlListAppendEnablePowerCorrection(int64_t list, bool on, int32_t channel) {
  return KELVO_APPEND(list, AppendEnablePowerCorrection(on, channel));
}
int32_t vlListAppendEnablePowerCalibration(int64_t list, bool on, int32_t channel) {
  return KELVO_APPEND(list, AppendEnablePowerCalibration(on, channel));
}

// Progress, variables, signals
int32_t vlListAppendProgress(int64_t list, int32_t value) {
  return KELVO_APPEND(list, AppendProgress(value));
}
int32_t vlListAppendIncrementCounter(int64_t list, const char* name) {
  return KELVO_APPEND(list, AppendIncrementCounter(Name(name)));
}
int32_t vlListAppendBooleanSet(int64_t list, const char* name, bool value) {
  return KELVO_APPEND(list, AppendBooleanSet(Name(name), value));
}
int32_t vlListAppendIntegerSet(int64_t list, const char* name, int32_t value) {
  return KELVO_APPEND(list, AppendIntegerSet(Name(name), value));
}
int32_t vlListAppendSignalSet(int64_t list, const char* name) {
  return KELVO_APPEND(list, AppendSignalSet(Name(name)));
}
int32_t vlListAppendSignalReset(int64_t list, const char* name) {
  return KELVO_APPEND(list, AppendSignalReset(Name(name)));
}

// Waits
int32_t vlListAppendWaitStart(int64_t list, int32_t timeout_us) {
  return KELVO_APPEND(list, AppendWaitStart(timeout_us));
}
int32_t vlListAppendWaitForInput(int64_t list, uint32_t mask, int32_t port, bool expected, bool all,
                                 uint32_t value, int32_t timeout_us) {
  return KELVO_APPEND(list, AppendWaitForInput(mask, port, expected, all, value, timeout_us));
}
int32_t vlListAppendWaitForSignal(int64_t list, const char* name, int32_t timeout_us) {
  return KELVO_APPEND(list, AppendWaitForSignal(Name(name), timeout_us));
}
int32_t vlListAppendSuspend(int64_t list) {
  return KELVO_APPEND(list, AppendSuspend());
}

// Marking on the fly
int32_t vlListAppendStartMotf(int64_t list) {
  return KELVO_APPEND(list, AppendStartMotf());
}
int32_t vlListAppendStopMotf2D(int64_t list, double x, double y) {
  return KELVO_APPEND(list, AppendStopMotf(Point2D{x, y}));
}
int32_t vlListAppendStopMotf3D(int64_t list, double x, double y, double z) {
  return KELVO_APPEND(list, AppendStopMotf(Point3D{x, y, z}));
}
int32_t vlListAppendMotfWaitPart(int64_t list, int32_t part) {
  return KELVO_APPEND(list, AppendMotfWaitPart(part));
}
int32_t vlListAppendMotfWaitDistance(int64_t list, double distance, int32_t mode, int32_t source) {
  return KELVO_APPEND(list, AppendMotfWaitDistance(distance, MotfDistanceMode::_from_integral(mode), source));
}
int32_t vlListAppendMotfTileOffset(int64_t list, double offset) {
  return KELVO_APPEND(list, AppendMotfTileOffset(offset));
}

// Labels and branches
int32_t vlListAppendLabel(int64_t list, const char* label) {
  return KELVO_APPEND(list, AppendLabel(Label(label)));
}
int32_t vlListAppendBranchAbs(int64_t list, int32_t position) {
  return KELVO_APPEND(list, AppendBranchAbs(position));
}
int32_t vlListAppendBranchRel(int64_t list, int32_t distance) {
  return KELVO_APPEND(list, AppendBranchRel(distance));
}
int32_t vlListAppendBranchToLabel(int64_t list, const char* label) {
  return KELVO_APPEND(list, AppendBranchToLabel(Label(label)));
}
int32_t vlListAppendBranchAbsCondPort(int64_t list, int32_t position, uint32_t mask, int32_t port,
                                      bool expected, bool all, uint32_t value) {
  return KELVO_APPEND(list, AppendBranchAbs(position, mask, port, expected, all, value));
}
int32_t vlListAppendBranchRelCondPort(int64_t list, int32_t distance, uint32_t mask, int32_t port,
                                      bool expected, bool all, uint32_t value) {
  return KELVO_APPEND(list, AppendBranchRel(distance, mask, port, expected, all, value));
}
int32_t vlListAppendBranchToLabelCondPort(int64_t list, const char* label, uint32_t mask, int32_t port,
                                          bool expected, bool all, uint32_t value) {
  return KELVO_APPEND(list, AppendBranchToLabel(Label(label), mask, port, expected, all, value));
}
int32_t vlListAppendBranchAbsCondFlag(int64_t list, int32_t position, const char* name, bool value) {
  return KELVO_APPEND(list, AppendBranchAbs(position, Name(name), value));
}
int32_t vlListAppendBranchRelCondFlag(int64_t list, int32_t distance, const char* name, bool value) {
  return KELVO_APPEND(list, AppendBranchRel(distance, Name(name), value));
}
int32_t vlListAppendBranchToLabelCondFlag(int64_t list, const char* label, const char* name, bool value) {
  return KELVO_APPEND(list, AppendBranchToLabel(Label(label), Name(name), value));
}

// Loops
int32_t vlListAppendLoopStart(int64_t list, int32_t count) {
  return KELVO_APPEND(list, AppendLoopStart(count));
}
int32_t vlListAppendLoopEnd(int64_t list) {
  return KELVO_APPEND(list, AppendLoopEnd());
}
int32_t vlListAppendLoopBreak(int64_t list) {
  return KELVO_APPEND(list, AppendLoopBreak());
}

// Switch
int32_t vlListAppendSwitchPort(int64_t list, int32_t port, bool shifted, uint32_t mask) {
  return KELVO_APPEND(list, AppendSwitch(port, shifted, mask));
}
int32_t vlListAppendSwitchValue(int64_t list, const char* name) {
  return KELVO_APPEND(list, AppendSwitch(Name(name)));
}
int32_t vlListAppendCaseAbsPort(int64_t list, int32_t position, uint32_t value) {
  return KELVO_APPEND(list, AppendCaseAbs(position, value));
}
int32_t vlListAppendCaseAbsValue(int64_t list, int32_t position, int32_t value) {
  return KELVO_APPEND(list, AppendCaseAbs(position, value));
}
int32_t vlListAppendCaseRelPort(int64_t list, int32_t distance, uint32_t value) {
  return KELVO_APPEND(list, AppendCaseRel(distance, value));
}
int32_t vlListAppendCaseRelValue(int64_t list, int32_t distance, int32_t value) {
  return KELVO_APPEND(list, AppendCaseRel(distance, value));
}
int32_t vlListAppendCaseToLabelPort(int64_t list, const char* label, uint32_t value) {
  return KELVO_APPEND(list, AppendCaseToLabel(Label(label), value));
}
int32_t vlListAppendCaseToLabelValue(int64_t list, const char* label, int32_t value) {
  return KELVO_APPEND(list, AppendCaseToLabel(Label(label), value));
}
int32_t vlListAppendCaseBranchListPort(int64_t list, int32_t list_id, uint32_t value) {
  return KELVO_APPEND(list, AppendCaseBranchList(list_id, value));
}
int32_t vlListAppendCaseBranchListValue(int64_t list, int32_t list_id, int32_t value) {
  return KELVO_APPEND(list, AppendCaseBranchList(list_id, value));
}
int32_t vlListAppendCaseCallListPort(int64_t list, int32_t list_id, uint32_t value) {
  return KELVO_APPEND(list, AppendCaseCallList(list_id, value));
}
int32_t vlListAppendCaseCallListValue(int64_t list, int32_t list_id, int32_t value) {
  return KELVO_APPEND(list, AppendCaseCallList(list_id, value));
}
int32_t vlListAppendDefaultAbs(int64_t list, int32_t position) {
  return KELVO_APPEND(list, AppendDefaultAbs(position));
}
int32_t vlListAppendDefaultRel(int64_t list, int32_t distance) {
  return KELVO_APPEND(list, AppendDefaultRel(distance));
}
int32_t vlListAppendDefaultToLabel(int64_t list, const char* label) {
  return KELVO_APPEND(list, AppendDefaultToLabel(Label(label)));
}
int32_t vlListAppendDefaultBranchList(int64_t list, int32_t list_id) {
  return KELVO_APPEND(list, AppendDefaultBranchList(list_id));
}
int32_t vlListAppendDefaultCallList(int64_t list, int32_t list_id) {
  return KELVO_APPEND(list, AppendDefaultCallList(list_id));
}

// Other lists
int32_t vlListAppendBranchList(int64_t list, int32_t list_id) {
  return KELVO_APPEND(list, AppendBranchList(list_id));
}
int32_t vlListAppendBranchListCondPort(int64_t list, int32_t list_id, uint32_t mask, int32_t port,
                                       bool expected, bool all, uint32_t value) {
  return KELVO_APPEND(list, AppendBranchList(list_id, mask, port, expected, all, value));
}
int32_t vlListAppendBranchListCondFlag(int64_t list, int32_t list_id, const char* name, bool value) {
  return KELVO_APPEND(list, AppendBranchList(list_id, Name(name), value));
}
int32_t vlListAppendCallList(int64_t list, int32_t list_id) {
  return KELVO_APPEND(list, AppendCallList(list_id));
}
int32_t vlListAppendCallListCondPort(int64_t list, int32_t list_id, uint32_t mask, int32_t port,
                                     bool expected, bool all, uint32_t value) {
  return KELVO_APPEND(list, AppendCallList(list_id, mask, port, expected, all, value));
}
int32_t vlListAppendCallListCondFlag(int64_t list, int32_t list_id, const char* name, bool value) {
  return KELVO_APPEND(list, AppendCallList(list_id, Name(name), value));
}
int32_t vlListAppendExitList(int64_t list) {
  return KELVO_APPEND(list, AppendExitList());
}
int32_t vlListAppendExitListCondPort(int64_t list, uint32_t mask, int32_t port, bool expected, bool all,
                                     uint32_t value) {
  return KELVO_APPEND(list, AppendExitList(mask, port, expected, all, value));
}
int32_t vlListAppendExitListCondFlag(int64_t list, const char* name, bool value) {
  return KELVO_APPEND(list, AppendExitList(Name(name), value));
}
int32_t vlListAppendBranchStandAloneList(int64_t list) {
  return KELVO_APPEND(list, AppendBranchStandAloneList());
}

// Text
int32_t vlListAppendSelectFont(int64_t list, int32_t font_id) {
  return KELVO_APPEND(list, AppendSelectFont(font_id));
}
int32_t vlListAppendMarkChar(int64_t list, char character) {
  return KELVO_APPEND(list, AppendMarkChar(character));
}
int32_t vlListAppendMarkText(int64_t list, const char* text) {
  return KELVO_APPEND(list, AppendMarkText(Text(text)));
}
int32_t vlListAppendMarkTime(int64_t list) {
  return KELVO_APPEND(list, AppendMarkTime());
}
int32_t vlListAppendMarkCounter(int64_t list, const char* name, int32_t digits) {
  return KELVO_APPEND(list, AppendMarkCounter(Name(name), digits));
}

// Peripherals
int32_t vlListAppendEnhancedCommand(int64_t list, int32_t head, int32_t axis, uint32_t command) {
  return KELVO_APPEND(list, AppendEnhancedCommand(head, Axis::_from_integral(axis), command));
}
int32_t vlListAppendGpioValue(int64_t list, int32_t port, int32_t action, uint32_t value) {
  return KELVO_APPEND(list, AppendGpioValue(port, action, value));
}
int32_t vlListAppendDacValue(int64_t list, int32_t target, uint32_t value) {
  return KELVO_APPEND(list, AppendDacValue(PowerTarget::_from_integral(target), value));
}
int32_t vlListAppendTraceConfig(int64_t list, const vltbTraceBufferConfig_Struct* config) {
  return KELVO_APPEND(list, AppendTraceConfig(Taken(config)));
}
int32_t vlListAppendTraceLabel(int64_t list, int32_t label) {
  return KELVO_APPEND(list, AppendTraceLabel(label));
}
int32_t vlListAppendSpiWrite(int64_t list, int32_t module, uint32_t value) {
  return KELVO_APPEND(list, AppendSpiWrite(module, value));
}
int32_t vlListAppendSerialPortTransmitString(int64_t list, const char* text) {
  return KELVO_APPEND(list, AppendSerialPortTransmitString(Text(text)));
}
int32_t vlListAppendSerialPortTransmitLine(int64_t list, const char* text) {
  return KELVO_APPEND(list, AppendSerialPortTransmitLine(Text(text)));
}
int32_t vlListAppendSerialPortTransmitBytes(int64_t list, const uint8_t* bytes, uint32_t count) {
  return KELVO_APPEND(list, AppendSerialPortTransmitBytes(Bytes(bytes, count)));
}
int32_t vlListAppendSerialPortVerifyResponseString(int64_t list, const char* request, const char* response) {
  return KELVO_APPEND(
      list, AppendSerialPortVerifyResponseString(Text(request, "request"), Text(response, "response")));
}
int32_t vlListAppendSerialPortVerifyResponseLine(int64_t list, const char* request, const char* response) {
  return KELVO_APPEND(
      list, AppendSerialPortVerifyResponseLine(Text(request, "request"), Text(response, "response")));
}
int32_t vlListAppendSerialPortVerifyResponseBytes(int64_t list, const uint8_t* request,
                                                  uint32_t request_count, const uint8_t* response,
                                                  uint32_t response_count) {
  return KELVO_APPEND(list, AppendSerialPortVerifyResponseBytes(Bytes(request, request_count, "request"),
                                                                Bytes(response, response_count, "response")));
}
