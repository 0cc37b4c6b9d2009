// The commands of a list in C++: AppendX appends what vlListAppendX does (KelvoListAppendAPI.h).
#ifndef KELVO_LIST_COMMANDS_HPP
#define KELVO_LIST_COMMANDS_HPP

#include <cstdint>

#include "kelvo/KelvoCall.hpp"
#include "kelvo/KelvoEnumerations.hpp"

namespace kelvo {

using Point2D = vlPoint2D;
using Point3D = vlPoint3D;
using Point2DInt = vlPoint2DInt;
using Point3DInt = vlPoint3DInt;
using Transform3D = vlTransform3D;
// vltbTraceBufferConfig_Struct.
using TraceBufferConfig = vltbTraceBufferConfig_Struct;

// What every list takes, whoever owns it.
class ListCommands : public detail::Handled<std::int64_t> {
 public:
  using Handled::Handled;

  // Motion.
  void AppendJumpAbs2D(double x, double y) const { Call<vlListAppendJumpAbs2D>(handle_, x, y); }
  void AppendJumpRel2D(double dx, double dy) const { Call<vlListAppendJumpRel2D>(handle_, dx, dy); }
  void AppendJumpAbs3D(double x, double y, double z) const { Call<vlListAppendJumpAbs3D>(handle_, x, y, z); }
  void AppendJumpRel3D(double dx, double dy, double dz) const {
    Call<vlListAppendJumpRel3D>(handle_, dx, dy, dz);
  }
  void AppendMarkAbs2D(double x, double y) const { Call<vlListAppendMarkAbs2D>(handle_, x, y); }
  void AppendMarkRel2D(double dx, double dy) const { Call<vlListAppendMarkRel2D>(handle_, dx, dy); }
  void AppendMarkAbs3D(double x, double y, double z) const { Call<vlListAppendMarkAbs3D>(handle_, x, y, z); }
  void AppendMarkRel3D(double dx, double dy, double dz) const {
    Call<vlListAppendMarkRel3D>(handle_, dx, dy, dz);
  }
  void AppendMagnificationAbs(double magnification, bool wait) const {
    Call<vlListAppendMagnificationAbs>(handle_, magnification, wait);
  }
  void AppendMagnificationRel(double difference, bool wait) const {
    Call<vlListAppendMagnificationRel>(handle_, difference, wait);
  }

  // Curves, marked from where the galvos are.
  void AppendArcAbs2D(double cx, double cy, double sweep) const {
    Call<vlListAppendArcAbs2D>(handle_, cx, cy, sweep);
  }
  void AppendArcAbs3D(double cx, double cy, double cz, double sweep) const {
    Call<vlListAppendArcAbs3D>(handle_, cx, cy, cz, sweep);
  }
  void AppendArcRel2D(double cx, double cy, double sweep) const {
    Call<vlListAppendArcRel2D>(handle_, cx, cy, sweep);
  }
  void AppendArcRel3D(double cx, double cy, double cz, double sweep) const {
    Call<vlListAppendArcRel3D>(handle_, cx, cy, cz, sweep);
  }
  void AppendEllipseAbs2D(double cx, double cy, double a, double b, double rotation) const {
    Call<vlListAppendEllipseAbs2D>(handle_, cx, cy, a, b, rotation);
  }
  void AppendEllipseAbs3D(double cx, double cy, double cz, double a, double b, double rotation) const {
    Call<vlListAppendEllipseAbs3D>(handle_, cx, cy, cz, a, b, rotation);
  }
  void AppendEllipseRel2D(double cx, double cy, double a, double b, double rotation) const {
    Call<vlListAppendEllipseRel2D>(handle_, cx, cy, a, b, rotation);
  }
  void AppendEllipseRel3D(double cx, double cy, double cz, double a, double b, double rotation) const {
    Call<vlListAppendEllipseRel3D>(handle_, cx, cy, cz, a, b, rotation);
  }
  void AppendEllipticCurveAbs2D(double cx, double cy, double ratio, double rotation, double sweep) const {
    Call<vlListAppendEllipticCurveAbs2D>(handle_, cx, cy, ratio, rotation, sweep);
  }
  void AppendEllipticCurveAbs3D(double cx, double cy, double cz, double ratio, double rotation,
                                double sweep) const {
    Call<vlListAppendEllipticCurveAbs3D>(handle_, cx, cy, cz, ratio, rotation, sweep);
  }
  void AppendEllipticCurveRel2D(double cx, double cy, double ratio, double rotation, double sweep) const {
    Call<vlListAppendEllipticCurveRel2D>(handle_, cx, cy, ratio, rotation, sweep);
  }
  void AppendEllipticCurveRel3D(double cx, double cy, double cz, double ratio, double rotation,
                                double sweep) const {
    Call<vlListAppendEllipticCurveRel3D>(handle_, cx, cy, cz, ratio, rotation, sweep);
  }
  void AppendGeneralEllipse(double cx, double cy, double cz, double ax, double ay, double az, double bx,
                            double by, double bz, double sweep) const {
    Call<vlListAppendGeneralEllipse>(handle_, cx, cy, cz, ax, ay, az, bx, by, bz, sweep);
  }
  void AppendQuadraticBezierAbs2D(double cx, double cy, double x, double y) const {
    Call<vlListAppendQuadraticBezierAbs2D>(handle_, cx, cy, x, y);
  }
  void AppendQuadraticBezierAbs3D(double cx, double cy, double cz, double x, double y, double z) const {
    Call<vlListAppendQuadraticBezierAbs3D>(handle_, cx, cy, cz, x, y, z);
  }
  void AppendQuadraticBezierRel2D(double cx, double cy, double dx, double dy) const {
    Call<vlListAppendQuadraticBezierRel2D>(handle_, cx, cy, dx, dy);
  }
  void AppendQuadraticBezierRel3D(double cx, double cy, double cz, double dx, double dy, double dz) const {
    Call<vlListAppendQuadraticBezierRel3D>(handle_, cx, cy, cz, dx, dy, dz);
  }
  void AppendCubicBezierAbs2D(double c1x, double c1y, double c2x, double c2y, double x, double y) const {
    Call<vlListAppendCubicBezierAbs2D>(handle_, c1x, c1y, c2x, c2y, x, y);
  }
  void AppendCubicBezierAbs3D(double c1x, double c1y, double c1z, double c2x, double c2y, double c2z,
                              double x, double y, double z) const {
    Call<vlListAppendCubicBezierAbs3D>(handle_, c1x, c1y, c1z, c2x, c2y, c2z, x, y, z);
  }
  void AppendCubicBezierRel2D(double c1x, double c1y, double c2x, double c2y, double dx, double dy) const {
    Call<vlListAppendCubicBezierRel2D>(handle_, c1x, c1y, c2x, c2y, dx, dy);
  }
  void AppendCubicBezierRel3D(double c1x, double c1y, double c1z, double c2x, double c2y, double c2z,
                              double dx, double dy, double dz) const {
    Call<vlListAppendCubicBezierRel3D>(handle_, c1x, c1y, c1z, c2x, c2y, c2z, dx, dy, dz);
  }

  // Lines of pixels and dots.
  void AppendBitmapLineAbs2D(double x0, double y0, double x1, double y1, Span<std::uint16_t> powers,
                             std::int32_t channel) const {
    Call<vlListAppendBitmapLineAbs2D>(handle_, x0, y0, x1, y1, powers.data(), powers.size(), channel);
  }
  void AppendBitmapLineAbs3D(double x0, double y0, double z0, double x1, double y1, double z1,
                             Span<std::uint16_t> powers, std::int32_t channel) const {
    Call<vlListAppendBitmapLineAbs3D>(handle_, x0, y0, z0, x1, y1, z1, powers.data(), powers.size(), channel);
  }
  void AppendBitmapLineRel2D(double x0, double y0, double x1, double y1, Span<std::uint16_t> powers,
                             std::int32_t channel) const {
    Call<vlListAppendBitmapLineRel2D>(handle_, x0, y0, x1, y1, powers.data(), powers.size(), channel);
  }
  void AppendBitmapLineRel3D(double x0, double y0, double z0, double x1, double y1, double z1,
                             Span<std::uint16_t> powers, std::int32_t channel) const {
    Call<vlListAppendBitmapLineRel3D>(handle_, x0, y0, z0, x1, y1, z1, powers.data(), powers.size(), channel);
  }
  void AppendPointAndShootLineAbs2D(double x0, double y0, double x1, double y1, Span<double> times,
                                    Span<std::uint16_t> powers, std::int32_t channel) const {
    Call<vlListAppendPointAndShootLineAbs2D>(handle_, x0, y0, x1, y1, times.data(), times.size(),
                                             powers.data(), powers.size(), channel);
  }
  void AppendPointAndShootLineAbs3D(double x0, double y0, double z0, double x1, double y1, double z1,
                                    Span<double> times, Span<std::uint16_t> powers,
                                    std::int32_t channel) const {
    Call<vlListAppendPointAndShootLineAbs3D>(handle_, x0, y0, z0, x1, y1, z1, times.data(), times.size(),
                                             powers.data(), powers.size(), channel);
  }
  void AppendPointAndShootLineRel2D(double x0, double y0, double x1, double y1, Span<double> times,
                                    Span<std::uint16_t> powers, std::int32_t channel) const {
    Call<vlListAppendPointAndShootLineRel2D>(handle_, x0, y0, x1, y1, times.data(), times.size(),
                                             powers.data(), powers.size(), channel);
  }
  void AppendPointAndShootLineRel3D(double x0, double y0, double z0, double x1, double y1, double z1,
                                    Span<double> times, Span<std::uint16_t> powers,
                                    std::int32_t channel) const {
    Call<vlListAppendPointAndShootLineRel3D>(handle_, x0, y0, z0, x1, y1, z1, times.data(), times.size(),
                                             powers.data(), powers.size(), channel);
  }
  void AppendJumpAndShoot2D(Span<Point2D> points, std::int32_t pulses) const {
    Call<vlListAppendJumpAndShoot2D>(handle_, points.data(), points.size(), pulses);
  }
  void AppendJumpAndShoot3D(Span<Point3D> points, std::int32_t pulses) const {
    Call<vlListAppendJumpAndShoot3D>(handle_, points.data(), points.size(), pulses);
  }
  void AppendMicroVectors2D(Span<Point2DInt> vectors) const {
    Call<vlListAppendMicroVectors2D>(handle_, vectors.data(), vectors.size());
  }
  void AppendMicroVectors3D(Span<Point3DInt> vectors) const {
    Call<vlListAppendMicroVectors3D>(handle_, vectors.data(), vectors.size());
  }
  void AppendPositions2D(Span<Point2D> positions) const {
    Call<vlListAppendPositions2D>(handle_, positions.data(), positions.size());
  }
  void AppendPositions3D(Span<Point3D> positions) const {
    Call<vlListAppendPositions3D>(handle_, positions.data(), positions.size());
  }

  // Where things are: scaling first, then heading scale, then transformation.
  void AppendScalingFactor(double x, double y) const { Call<vlListAppendScalingFactor>(handle_, x, y); }
  void AppendHeadingScale(double x, double y, double z) const {
    Call<vlListAppendHeadingScale>(handle_, x, y, z);
  }
  void AppendTransformation(const Transform3D& transform) const {
    Call<vlListAppendTransformation>(handle_, transform);
  }
  void AppendHeadBias(std::int32_t head, Axes axes, Span<double> biases) const {
    Call<vlListAppendHeadBias>(handle_, head, axes, biases.data(), biases.size());
  }
  void AppendSelectHeadCorrection(std::int32_t head, std::int32_t correction) const {
    Call<vlListAppendSelectHeadCorrection>(handle_, head, correction);
  }

  // Speeds and delays of what follows.
  void AppendJumpSpeed(double speed) const { Call<vlListAppendJumpSpeed>(handle_, speed); }
  void AppendMarkSpeed(double speed) const { Call<vlListAppendMarkSpeed>(handle_, speed); }
  void AppendMagnificationSpeed(double speed) const { Call<vlListAppendMagnificationSpeed>(handle_, speed); }
  void AppendSpeedScale(double factor) const { Call<vlListAppendSpeedScale>(handle_, factor); }
  void AppendJumpDelay(Microseconds delay) const { Call<vlListAppendJumpDelay>(handle_, delay); }
  void AppendMinJumpDelay(Microseconds delay) const { Call<vlListAppendMinJumpDelay>(handle_, delay); }
  void AppendJumpLengthLimit(double length) const { Call<vlListAppendJumpLengthLimit>(handle_, length); }
  void AppendEnableVariableJumpDelay(bool on) const {
    Call<vlListAppendEnableVariableJumpDelay>(handle_, on);
  }
  void AppendMarkDelay(Microseconds delay) const { Call<vlListAppendMarkDelay>(handle_, delay); }
  void AppendPolyDelay(Microseconds delay) const { Call<vlListAppendPolyDelay>(handle_, delay); }
  void AppendEnableVariablePolyDelay(bool on) const {
    Call<vlListAppendEnableVariablePolyDelay>(handle_, on);
  }
  void AppendLaserOnDelay(Microseconds delay) const { Call<vlListAppendLaserOnDelay>(handle_, delay); }
  void AppendLaserOffDelay(Microseconds delay) const { Call<vlListAppendLaserOffDelay>(handle_, delay); }
  void AppendEvaluationLeadTime(Microseconds time) const {
    Call<vlListAppendEvaluationLeadTime>(handle_, time);
  }
  void AppendSleep(Microseconds duration) const { Call<vlListAppendSleep>(handle_, duration); }
  void AppendSkyWritingMode(SkyWritingMode mode) const { Call<vlListAppendSkyWritingMode>(handle_, mode); }
  void AppendSkyWritingMinCoH(double limit) const { Call<vlListAppendSkyWritingMinCoH>(handle_, limit); }
  void AppendSkyWritingMergedExtensionsMaxCoH(double limit) const {
    Call<vlListAppendSkyWritingMergedExtensionsMaxCoH>(handle_, limit);
  }
  void AppendSkyWritingAccelerationDelay(Microseconds delay) const {
    Call<vlListAppendSkyWritingAccelerationDelay>(handle_, delay);
  }
  void AppendSkyWritingDecelerationDelay(Microseconds delay) const {
    Call<vlListAppendSkyWritingDecelerationDelay>(handle_, delay);
  }
  void AppendSkyWritingExtensionTime(Microseconds time) const {
    Call<vlListAppendSkyWritingExtensionTime>(handle_, time);
  }
  void AppendSkyWritingLaserOnDelay(Microseconds delay) const {
    Call<vlListAppendSkyWritingLaserOnDelay>(handle_, delay);
  }
  void AppendSkyWritingLaserOffDelay(Microseconds delay) const {
    Call<vlListAppendSkyWritingLaserOffDelay>(handle_, delay);
  }

  // Wobble: while marking, x and y swing by amplitude * sin(2 pi frequency t + phase).
  void AppendEnableWobble(bool on) const { Call<vlListAppendEnableWobble>(handle_, on); }
  void AppendWobbleAmplitude(double x, double y) const { Call<vlListAppendWobbleAmplitude>(handle_, x, y); }
  void AppendWobbleFrequency(double x, double y) const { Call<vlListAppendWobbleFrequency>(handle_, x, y); }
  void AppendWobblePhase(double x, double y) const { Call<vlListAppendWobblePhase>(handle_, x, y); }
  void AppendWobbleCircle(double amplitude, double frequency) const {
    Call<vlListAppendWobbleCircle>(handle_, amplitude, frequency);
  }
  void AppendWobbleEight(double amplitude_x, double amplitude_y, double frequency) const {
    Call<vlListAppendWobbleEight>(handle_, amplitude_x, amplitude_y, frequency);
  }

  // Dashed lines.
  void AppendEnableDashedLine(bool on, double offset) const {
    Call<vlListAppendEnableDashedLine>(handle_, on, offset);
  }
  void AppendDashedLinePattern(Span<double> lengths) const {
    Call<vlListAppendDashedLinePattern>(handle_, lengths.data(), lengths.size());
  }

  // Laser.
  void AppendLaserOn() const { Call<vlListAppendLaserOn>(handle_); }
  void AppendLaserOn2(std::int32_t pulses, bool wait) const {
    Call<vlListAppendLaserOn2>(handle_, pulses, wait);
  }
  void AppendLaserOff() const { Call<vlListAppendLaserOff>(handle_); }
  void AppendPower(std::uint16_t power, std::int32_t channel) const {
    Call<vlListAppendPower>(handle_, power, channel);
  }
  void AppendPower2(std::uint16_t power, double ramp, std::int32_t channel) const {
    Call<vlListAppendPower2>(handle_, power, ramp, channel);
  }
  void AppendPowerScale(double factor, std::int32_t channel) const {
    Call<vlListAppendPowerScale>(handle_, factor, channel);
  }
  void AppendSimmerPower(std::uint16_t power) const { Call<vlListAppendSimmerPower>(handle_, power); }
  void AppendLmFrequency(double frequency) const { Call<vlListAppendLmFrequency>(handle_, frequency); }
  void AppendLmWidth(Microseconds width) const { Call<vlListAppendLmWidth>(handle_, width); }
  void AppendEnablePilot(bool on) const { Call<vlListAppendEnablePilot>(handle_, on); }
  void AppendArmLaser(bool on) const { Call<vlListAppendArmLaser>(handle_, on); }
  void AppendEnableVelocityCorrection(bool on, std::int32_t channel) const {
    Call<vlListAppendEnableVelocityCorrection>(handle_, on, channel);
  }
  void AppendEnablePowerCorrection(bool on, std::int32_t channel) const {
    Call<vlListAppendEnablePowerCorrection>(handle_, on, channel);
  }
  void AppendEnablePowerCalibration(bool on, std::int32_t channel) const {
    Call<vlListAppendEnablePowerCalibration>(handle_, on, channel);
  }

  // Progress, variables, signals.
  void AppendProgress(std::int32_t value) const { Call<vlListAppendProgress>(handle_, value); }
  void AppendIncrementCounter(const Text& name) const { Call<vlListAppendIncrementCounter>(handle_, name); }
  void AppendBooleanSet(const Text& name, bool value) const {
    Call<vlListAppendBooleanSet>(handle_, name, value);
  }
  void AppendIntegerSet(const Text& name, std::int32_t value) const {
    Call<vlListAppendIntegerSet>(handle_, name, value);
  }
  void AppendSignalSet(const Text& name) const { Call<vlListAppendSignalSet>(handle_, name); }
  void AppendSignalReset(const Text& name) const { Call<vlListAppendSignalReset>(handle_, name); }

  // Waits.
  void AppendWaitStart(ListTimeout timeout) const { Call<vlListAppendWaitStart>(handle_, timeout); }
  void AppendWaitForInput(std::uint32_t mask, IOPort port, bool expected, bool all, std::uint32_t value,
                          ListTimeout timeout) const {
    Call<vlListAppendWaitForInput>(handle_, mask, port, expected, all, value, timeout);
  }
  void AppendWaitForSignal(const Text& name, ListTimeout timeout) const {
    Call<vlListAppendWaitForSignal>(handle_, name, timeout);
  }
  void AppendSuspend() const { Call<vlListAppendSuspend>(handle_); }

  // Marking on the fly.
  void AppendStartMotf() const { Call<vlListAppendStartMotf>(handle_); }
  void AppendStopMotf2D(double x, double y) const { Call<vlListAppendStopMotf2D>(handle_, x, y); }
  void AppendStopMotf3D(double x, double y, double z) const {
    Call<vlListAppendStopMotf3D>(handle_, x, y, z);
  }
  void AppendMotfWaitPart(std::int32_t part) const { Call<vlListAppendMotfWaitPart>(handle_, part); }
  void AppendMotfWaitDistance(double distance, MotfDistanceMode mode, std::int32_t source) const {
    Call<vlListAppendMotfWaitDistance>(handle_, distance, mode, source);
  }
  void AppendMotfTileOffset(double offset) const { Call<vlListAppendMotfTileOffset>(handle_, offset); }

  // Labels and branches.
  void AppendLabel(const Text& label) const { Call<vlListAppendLabel>(handle_, label); }
  void AppendBranchAbs(std::int32_t position) const { Call<vlListAppendBranchAbs>(handle_, position); }
  void AppendBranchRel(std::int32_t distance) const { Call<vlListAppendBranchRel>(handle_, distance); }
  void AppendBranchToLabel(const Text& label) const { Call<vlListAppendBranchToLabel>(handle_, label); }
  void AppendBranchAbsCondPort(std::int32_t position, std::uint32_t mask, IOPort port, bool expected,
                               bool all, std::uint32_t value) const {
    Call<vlListAppendBranchAbsCondPort>(handle_, position, mask, port, expected, all, value);
  }
  void AppendBranchRelCondPort(std::int32_t distance, std::uint32_t mask, IOPort port, bool expected,
                               bool all, std::uint32_t value) const {
    Call<vlListAppendBranchRelCondPort>(handle_, distance, mask, port, expected, all, value);
  }
  void AppendBranchToLabelCondPort(const Text& label, std::uint32_t mask, IOPort port, bool expected,
                                   bool all, std::uint32_t value) const {
    Call<vlListAppendBranchToLabelCondPort>(handle_, label, mask, port, expected, all, value);
  }
  void AppendBranchAbsCondFlag(std::int32_t position, const Text& name, bool value) const {
    Call<vlListAppendBranchAbsCondFlag>(handle_, position, name, value);
  }
  void AppendBranchRelCondFlag(std::int32_t distance, const Text& name, bool value) const {
    Call<vlListAppendBranchRelCondFlag>(handle_, distance, name, value);
  }
  void AppendBranchToLabelCondFlag(const Text& label, const Text& name, bool value) const {
    Call<vlListAppendBranchToLabelCondFlag>(handle_, label, name, value);
  }

  // Loops.
  void AppendLoopStart(std::int32_t count) const { Call<vlListAppendLoopStart>(handle_, count); }
  void AppendLoopEnd() const { Call<vlListAppendLoopEnd>(handle_); }
  void AppendLoopBreak() const { Call<vlListAppendLoopBreak>(handle_); }

  // Switch: one of several cases, or the default behind them.
  void AppendSwitchPort(IOPort port, bool shifted, std::uint32_t mask) const {
    Call<vlListAppendSwitchPort>(handle_, port, shifted, mask);
  }
  void AppendSwitchValue(const Text& name) const { Call<vlListAppendSwitchValue>(handle_, name); }
  void AppendCaseAbsPort(std::int32_t position, std::uint32_t value) const {
    Call<vlListAppendCaseAbsPort>(handle_, position, value);
  }
  void AppendCaseAbsValue(std::int32_t position, std::int32_t value) const {
    Call<vlListAppendCaseAbsValue>(handle_, position, value);
  }
  void AppendCaseRelPort(std::int32_t distance, std::uint32_t value) const {
    Call<vlListAppendCaseRelPort>(handle_, distance, value);
  }
  void AppendCaseRelValue(std::int32_t distance, std::int32_t value) const {
    Call<vlListAppendCaseRelValue>(handle_, distance, value);
  }
  void AppendCaseToLabelPort(const Text& label, std::uint32_t value) const {
    Call<vlListAppendCaseToLabelPort>(handle_, label, value);
  }
  void AppendCaseToLabelValue(const Text& label, std::int32_t value) const {
    Call<vlListAppendCaseToLabelValue>(handle_, label, value);
  }
  void AppendCaseBranchListPort(std::int32_t list_id, std::uint32_t value) const {
    Call<vlListAppendCaseBranchListPort>(handle_, list_id, value);
  }
  void AppendCaseBranchListValue(std::int32_t list_id, std::int32_t value) const {
    Call<vlListAppendCaseBranchListValue>(handle_, list_id, value);
  }
  void AppendCaseCallListPort(std::int32_t list_id, std::uint32_t value) const {
    Call<vlListAppendCaseCallListPort>(handle_, list_id, value);
  }
  void AppendCaseCallListValue(std::int32_t list_id, std::int32_t value) const {
    Call<vlListAppendCaseCallListValue>(handle_, list_id, value);
  }
  void AppendDefaultAbs(std::int32_t position) const { Call<vlListAppendDefaultAbs>(handle_, position); }
  void AppendDefaultRel(std::int32_t distance) const { Call<vlListAppendDefaultRel>(handle_, distance); }
  void AppendDefaultToLabel(const Text& label) const { Call<vlListAppendDefaultToLabel>(handle_, label); }
  void AppendDefaultBranchList(std::int32_t list_id) const {
    Call<vlListAppendDefaultBranchList>(handle_, list_id);
  }
  void AppendDefaultCallList(std::int32_t list_id) const {
    Call<vlListAppendDefaultCallList>(handle_, list_id);
  }

  // Other lists on the card.
  void AppendBranchList(std::int32_t list_id) const { Call<vlListAppendBranchList>(handle_, list_id); }
  void AppendBranchListCondPort(std::int32_t list_id, std::uint32_t mask, IOPort port, bool expected,
                                bool all, std::uint32_t value) const {
    Call<vlListAppendBranchListCondPort>(handle_, list_id, mask, port, expected, all, value);
  }
  void AppendBranchListCondFlag(std::int32_t list_id, const Text& name, bool value) const {
    Call<vlListAppendBranchListCondFlag>(handle_, list_id, name, value);
  }
  void AppendCallList(std::int32_t list_id) const { Call<vlListAppendCallList>(handle_, list_id); }
  void AppendCallListCondPort(std::int32_t list_id, std::uint32_t mask, IOPort port, bool expected, bool all,
                              std::uint32_t value) const {
    Call<vlListAppendCallListCondPort>(handle_, list_id, mask, port, expected, all, value);
  }
  void AppendCallListCondFlag(std::int32_t list_id, const Text& name, bool value) const {
    Call<vlListAppendCallListCondFlag>(handle_, list_id, name, value);
  }
  void AppendExitList() const { Call<vlListAppendExitList>(handle_); }
  void AppendExitListCondPort(std::uint32_t mask, IOPort port, bool expected, bool all,
                              std::uint32_t value) const {
    Call<vlListAppendExitListCondPort>(handle_, mask, port, expected, all, value);
  }
  void AppendExitListCondFlag(const Text& name, bool value) const {
    Call<vlListAppendExitListCondFlag>(handle_, name, value);
  }
  void AppendBranchStandAloneList() const { Call<vlListAppendBranchStandAloneList>(handle_); }

  // Text, with the active font of the card (KelvoFontAPI.h).
  void AppendSelectFont(std::int32_t font_id) const { Call<vlListAppendSelectFont>(handle_, font_id); }
  void AppendMarkChar(char character) const { Call<vlListAppendMarkChar>(handle_, character); }
  void AppendMarkText(const Text& text) const { Call<vlListAppendMarkText>(handle_, text); }
  void AppendMarkTime() const { Call<vlListAppendMarkTime>(handle_); }
  void AppendMarkCounter(const Text& name, std::int32_t digits) const {
    Call<vlListAppendMarkCounter>(handle_, name, digits);
  }

  // Peripherals.
  void AppendEnhancedCommand(std::int32_t head, Axis axis, std::uint32_t command) const {
    Call<vlListAppendEnhancedCommand>(handle_, head, axis, command);
  }
  void AppendGpioValue(IOPort port, PinAction action, std::uint32_t value) const {
    Call<vlListAppendGpioValue>(handle_, port, action, value);
  }
  void AppendDacValue(PowerTarget target, std::uint32_t value) const {
    Call<vlListAppendDacValue>(handle_, target, value);
  }
  void AppendTraceConfig(const TraceBufferConfig& config) const {
    Call<vlListAppendTraceConfig>(handle_, config);
  }
  void AppendTraceLabel(std::int32_t label) const { Call<vlListAppendTraceLabel>(handle_, label); }
  void AppendSpiWrite(std::int32_t module, std::uint32_t value) const {
    Call<vlListAppendSpiWrite>(handle_, module, value);
  }
  void AppendSerialPortTransmitString(const Text& text) const {
    Call<vlListAppendSerialPortTransmitString>(handle_, text);
  }
  void AppendSerialPortTransmitLine(const Text& text) const {
    Call<vlListAppendSerialPortTransmitLine>(handle_, text);
  }
  void AppendSerialPortTransmitBytes(Span<std::uint8_t> bytes) const {
    Call<vlListAppendSerialPortTransmitBytes>(handle_, bytes.data(), bytes.size());
  }
  void AppendSerialPortVerifyResponseString(const Text& request, const Text& response) const {
    Call<vlListAppendSerialPortVerifyResponseString>(handle_, request, response);
  }
  void AppendSerialPortVerifyResponseLine(const Text& request, const Text& response) const {
    Call<vlListAppendSerialPortVerifyResponseLine>(handle_, request, response);
  }
  void AppendSerialPortVerifyResponseBytes(Span<std::uint8_t> request, Span<std::uint8_t> response) const {
    Call<vlListAppendSerialPortVerifyResponseBytes>(handle_, request.data(), request.size(), response.data(),
                                                    response.size());
  }
};

}  // namespace kelvo

#endif
