// A command list: packed commands, labels, loops, and a method for every command there is.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "common/KelvoAPIEnums.h"
#include "common/Transform3D.h"
#include "common/WobbleShape.h"
#include "lists/CommandCodes.h"
#include "lists/LabelList.h"
#include "lists/PackedCommands.h"
#include "lists/TraceBufferConfig.h"
#include "lists/VariableId.h"
#include "rpc/MsgPack.h"
#include "rpc/OutputPacket.h"

namespace VELTRO::KELVO::ClientLib {

class CommandList : public PackedCommands {
  using Code = CommandCode;
  using Code2 = CommandCode2;
  using Text = std::string_view;
  using Int = std::int32_t;
  using UInt = std::uint32_t;
  template <class T>
  using Array = std::span<const T>;

 public:
  static constexpr std::string_view WireName = "list";

  CommandList() = default;
  explicit CommandList(std::span<const Command> commands);

  using PackedCommands::Append;
  // Appends the commands of another list, neither its labels nor its open loops.
  void Append(const CommandList& other) { PackedCommands::Append(other); }

  // The list of a text (CommandTextReader.h).
  static CommandList FromString(Text text);

  // Empties commands and labels. Loops that are open stay open.
  void Clear();

  // Declares a label at the current end: the position of the next command. Throws as LabelList does.
  void AppendLabel(Text name);
  // Puts the positions of the labels into the commands that refer to them. Throws as LabelList does.
  void ResolveBranchesAndLabels() { labels_.Resolve(*this); }

  // A number that travels ahead of the commands; -1 in a new list.
  Int GetListField() const { return listField_; }
  void SetListField(Int field) { listField_ = field; }
  // Open loops: 0 when every loop is closed.
  Int GetLoopDepth() const { return loopDepth_; }

  // ---- A method for every command: its code and its values, in the order in which they travel ----

  // Motion
  void AppendJumpAbs(Point2D p) { Append(Code::JUMP_ABS, p); }
  void AppendJumpAbs(Point3D p) { Append(Code::JUMP_3D_ABS, p); }
  void AppendJumpRel(Point2D p) { Append(Code::JUMP_REL, p); }
  void AppendJumpRel(Point3D p) { Append(Code::JUMP_3D_REL, p); }
  void AppendMarkAbs(Point2D p) { Append(Code::MARK_ABS, p); }
  void AppendMarkAbs(Point3D p) { Append(Code::MARK_3D_ABS, p); }
  void AppendMarkRel(Point2D p) { Append(Code::MARK_REL, p); }
  void AppendMarkRel(Point3D p) { Append(Code::MARK_3D_REL, p); }
  void AppendMagnificationAbs(double magnification, bool wait) {
    Append(Code::MAGNIFICATION_ABS, magnification, wait);
  }
  void AppendMagnificationRel(double difference, bool wait) {
    Append(Code::MAGNIFICATION_REL, difference, wait);
  }

  // Curves
  void AppendArcAbs(Point2D centre, double sweep) { Append(Code::MARK_ARC_ABS, centre, sweep); }
  void AppendArcAbs(Point3D centre, double sweep) { Append(Code::MARK_ARC_3D_ABS, centre, sweep); }
  void AppendArcRel(Point2D centre, double sweep) { Append(Code::MARK_ARC_REL, centre, sweep); }
  void AppendArcRel(Point3D centre, double sweep) { Append(Code::MARK_ARC_3D_REL, centre, sweep); }
  void AppendEllipseAbs(Point2D c, double a, double b, double turn) {
    Append(Code::MARK_ELLIPSE_ABS, c, a, b, turn);
  }
  void AppendEllipseAbs(Point3D c, double a, double b, double turn) {
    Append(Code::MARK_ELLIPSE_3D_ABS, c, a, b, turn);
  }
  void AppendEllipseRel(Point2D c, double a, double b, double turn) {
    Append(Code::MARK_ELLIPSE_REL, c, a, b, turn);
  }
  void AppendEllipseRel(Point3D c, double a, double b, double turn) {
    Append(Code::MARK_ELLIPSE_3D_REL, c, a, b, turn);
  }
  void AppendEllipticCurveAbs(Point2D centre, double ratio, double turn, double sweep) {
    Append(Code::MARK_ELLIPTIC_CURVE_ABS, centre, ratio, turn, sweep);
  }
  void AppendEllipticCurveAbs(Point3D centre, double ratio, double turn, double sweep) {
    Append(Code::MARK_ELLIPTIC_CURVE_3D_ABS, centre, ratio, turn, sweep);
  }
  void AppendEllipticCurveRel(Point2D centre, double ratio, double turn, double sweep) {
    Append(Code::MARK_ELLIPTIC_CURVE_REL, centre, ratio, turn, sweep);
  }
  void AppendEllipticCurveRel(Point3D centre, double ratio, double turn, double sweep) {
    Append(Code::MARK_ELLIPTIC_CURVE_3D_REL, centre, ratio, turn, sweep);
  }
  void AppendGeneralEllipse(Point3D centre, Point3D a, Point3D b, double sweep) {
    Append(Code::MARK_GENERAL_ELLIPSE, centre, a, b, sweep);
  }
  void AppendBezierAbs(Point2D control, Point2D end) { Append(Code::MARK_BEZIER_ABS, control, end); }
  void AppendBezierAbs(Point3D control, Point3D end) { Append(Code::MARK_BEZIER_3D_ABS, control, end); }
  void AppendBezierRel(Point2D control, Point2D end) { Append(Code::MARK_BEZIER_REL, control, end); }
  void AppendBezierRel(Point3D control, Point3D end) { Append(Code::MARK_BEZIER_3D_REL, control, end); }
  void AppendBezierAbs(Point2D c1, Point2D c2, Point2D end) {
    Append(Code::MARK_BEZIER_CUBIC_ABS, c1, c2, end);
  }
  void AppendBezierAbs(Point3D c1, Point3D c2, Point3D end) {
    Append(Code::MARK_BEZIER_CUBIC_3D_ABS, c1, c2, end);
  }
  void AppendBezierRel(Point2D c1, Point2D c2, Point2D end) {
    Append(Code::MARK_BEZIER_CUBIC_REL, c1, c2, end);
  }
  void AppendBezierRel(Point3D c1, Point3D c2, Point3D end) {
    Append(Code::MARK_BEZIER_CUBIC_3D_REL, c1, c2, end);
  }

  // Lines of pixels and dots
  void AppendBitmapLineAbs(Point2D from, Point2D to, Array<std::uint16_t> powers, Int channel) {
    Append(Code::MARK_BMP_ABS, from, to, powers, channel);
  }
  void AppendBitmapLineAbs(Point3D from, Point3D to, Array<std::uint16_t> powers, Int channel) {
    Append(Code::MARK_BMP_3D_ABS, from, to, powers, channel);
  }
  void AppendBitmapLineRel(Point2D from, Point2D to, Array<std::uint16_t> powers, Int channel) {
    Append(Code::MARK_BMP_REL, from, to, powers, channel);
  }
  void AppendBitmapLineRel(Point3D from, Point3D to, Array<std::uint16_t> powers, Int channel) {
    Append(Code::MARK_BMP_3D_REL, from, to, powers, channel);
  }
  // They travel with the powers ahead of the exposure times. Deliberate oddity: the relative forms write the absolute
  // codes.
  void AppendPointAndShootLineAbs(Point2D from, Point2D to, Array<double> times, Array<std::uint16_t> powers,
                                  Int channel) {
    Append(Code::MARK_PAS_ABS, from, to, powers, times, channel);
  }
  void AppendPointAndShootLineAbs(Point3D from, Point3D to, Array<double> times, Array<std::uint16_t> powers,
                                  Int channel) {
    Append(Code::MARK_PAS_3D_ABS, from, to, powers, times, channel);
  }
  void AppendPointAndShootLineRel(Point2D from, Point2D to, Array<double> times, Array<std::uint16_t> powers,
                                  Int channel) {
    Append(Code::MARK_PAS_ABS, from, to, powers, times, channel);
  }
  void AppendPointAndShootLineRel(Point3D from, Point3D to, Array<double> times, Array<std::uint16_t> powers,
                                  Int channel) {
    Append(Code::MARK_PAS_3D_ABS, from, to, powers, times, channel);
  }
  void AppendJumpAndShoot(Array<double> coordinates, bool is3D, Int pulses) {
    Append(is3D ? Code::MARK_JAS_3D_ABS : Code::MARK_JAS_ABS, coordinates, pulses);
  }
  void AppendMicroVectors(Array<Point2DInt> vectors) { Append(Code2::INTERNAL_ADD_MICROVECTORS_2D, vectors); }
  void AppendMicroVectors(Array<Point3DInt> vectors) { Append(Code2::INTERNAL_ADD_MICROVECTORS_3D, vectors); }
  void AppendPositions(Array<Point2D> positions) { Append(Code2::INTERNAL_ADD_POSITIONS_2D, positions); }
  void AppendPositions(Array<Point3D> positions) { Append(Code2::INTERNAL_ADD_POSITIONS_3D, positions); }

  // Where things are
  void AppendScalingFactor(Point2D factors) { Append(Code::SCALING_FACTOR, factors); }
  void AppendTransformation(const Transform3D& t) {
    Append(Code::TRANSFORMATION, Array<double>(t.A), Array<double>(t.B));
  }
  void AppendHeadingTransformation(Point3D factors) { Append(Code::HEADING_SCALE, factors); }
  void AppendHeadBias(Int head, Axes axes, Array<double> biases) {
    Append(Code::HEAD_BIAS_SET, head, axes._to_integral(), biases);
  }
  void AppendSelectHeadCorrection(Int head, Int correction) {
    Append(Code::FCORR_SELECT_CORRECTION, head, correction);
  }

  // Speeds and delays
  void AppendJumpSpeed(double speed) { Append(Code::JUMP_SPEED, speed); }
  void AppendMarkSpeed(double speed) { Append(Code::MARK_SPEED, speed); }
  void AppendMagnificationSpeed(double speed) { Append(Code::MAGNIFICATION_SPEED, speed); }
  void AppendSpeedScale(double factor) { Append(Code::SPEED_SCALE, factor); }
  void AppendJumpDelay(double delay) { Append(Code::JUMP_DELAY, delay); }
  void AppendMinimumJumpDelay(double delay) { Append(Code::JUMP_DELAY_MIN, delay); }
  void AppendJumpLengthLimit(double length) { Append(Code::JUMP_LENGTH_LIMIT, length); }
  void AppendEnableVariableJumpDelay(bool on) { Append(Code::VAR_JUMP_DELAY, on); }
  void AppendMarkDelay(double delay) { Append(Code::MARK_DELAY, delay); }
  void AppendPolyDelay(double delay) { Append(Code::POLY_DELAY, delay); }
  void AppendEnableVariablePolyDelay(bool on) { Append(Code::VAR_POLY_DELAY, on); }
  void AppendLaserOnDelay(double delay) { Append(Code::LON_DELAY, delay); }
  void AppendLaserOffDelay(double delay) { Append(Code::LOFF_DELAY, delay); }
  void AppendEvaluationLeadTime(double time) { Append(Code2::EVALUATION_LEADTIME, time); }
  void AppendSleep(double duration) { Append(Code::SLEEP, duration); }

  // Sky-writing, wobble, dashes
  void AppendSkyWritingMode(SkyWritingMode mode) { Append(Code::SKYWRITING_MODE, mode._to_integral()); }
  void AppendSkyWritingMinCoH(double limit) { Append(Code::SKYWRITING_MIN_COH, limit); }
  void AppendSkyWritingMergedExtensionsMaxCoH(double limit) {
    Append(Code::SKYWRITING_MERGED_EXTENSIONS_MAX_COH, limit);
  }
  void AppendSkyWritingAccelerationDelay(double delay) { Append(Code::SKYWRITING_ACCELERATION_DELAY, delay); }
  void AppendSkyWritingDecelerationDelay(double delay) { Append(Code::SKYWRITING_DECELERATION_DELAY, delay); }
  void AppendSkyWritingExtensionTime(double time) { Append(Code::SKYWRITING_EXTENSION_TIME, time); }
  void AppendSkyWritingLaserOnDelay(double delay) { Append(Code::SKYWRITING_LASERON_DELAY, delay); }
  void AppendSkyWritingLaserOffDelay(double delay) { Append(Code::SKYWRITING_LASEROFF_DELAY, delay); }
  void AppendEnableWobble(bool on) { Append(Code::WOBBLE_ENABLE, on); }
  void AppendWobbleAmplitude(Point2D amplitude) { Append(Code::WOBBLE_AMPLITUDE, amplitude); }
  void AppendWobbleFrequency(Point2D frequency) { Append(Code::WOBBLE_FREQUENCY, frequency); }
  void AppendWobblePhase(Point2D phase) { Append(Code::WOBBLE_PHASE, phase); }
  void AppendWobbleCircle(double amplitude, double frequency) {
    AppendWobble(WobbleShape::Circle(amplitude, frequency));
  }
  void AppendWobbleEight(Point2D amplitude, double frequency) {
    AppendWobble(WobbleShape::Eight(amplitude, frequency));
  }
  void AppendEnableDashedLine(bool on, double offset) { Append(Code::DASHED_LINE_ENABLE, on, offset); }
  void AppendDashedLinePattern(Array<double> lengths) { Append(Code::DASHED_LINE_PATTERN, lengths); }

  // Laser
  void AppendLaserOn() { Append(Code::LASER_ON); }
  void AppendLaserOn(Int pulses, bool wait) { Append(Code::LASER_ON_PULSES, pulses, wait); }
  void AppendLaserOff() { Append(Code::LASER_OFF); }
  void AppendPower(std::uint16_t power, Int channel) { Append(Code::SET_POWER, power, channel); }
  void AppendPower(std::uint16_t power, double ramp, Int channel) {
    Append(Code::SET_POWER_CHANGE, power, ramp, channel);
  }
  void AppendPowerScale(double factor, Int channel) { Append(Code::POWER_SCALE, factor, channel); }
  void AppendSimmerPower(std::uint16_t power) { Append(Code::SET_SIMMERPOWER, power); }
  void AppendLmFrequency(double frequency) { Append(Code::LM_FREQUENCY, frequency); }
  void AppendLmWidth(double width) { Append(Code::LM_WIDTH, width); }
  void AppendEnablePilot(bool on) { Append(Code::ENABLE_PILOT, on); }
  void AppendArmLaser(bool on) { Append(Code::ARM_LASER, on); }
  void AppendEnableVelocityCorrection(bool on, Int channel) { Append(Code::VELDEPCOR_ENABLE, on, channel); }
  void AppendEnablePowerCorrection(bool on, Int channel) { Append(Code::POWERCOR_ENABLE, on, channel); }
  void AppendEnablePowerCalibration(bool on, Int channel) { Append(Code::POWERCAL_ENABLE, on, channel); }

  // Progress, variables, signals
  void AppendProgress(Int value) { Append(Code::PROGRESS_ID, value); }
  void AppendIncrementCounter(Text name) { Append(Code::INCR_COUNTER, VariableId(name)); }
  void AppendBooleanSet(Text name, bool value) { Append(Code::BOOLEAN_SET, VariableId(name), value); }
  void AppendIntegerSet(Text name, Int value) { Append(Code::INTEGER_SET, VariableId(name), value); }
  void AppendSignalSet(Text name) { Append(Code::SIGNAL_SET, VariableId(name)); }
  void AppendSignalReset(Text name) { Append(Code::SIGNAL_RESET, VariableId(name)); }

  // Waits
  void AppendWaitStart(Int timeout) { Append(Code::WAIT_START, timeout); }
  void AppendWaitForInput(UInt mask, Int port, bool expected, bool all, UInt value, Int timeout) {
    Append(Code::WAIT_INPUT, mask, port, expected, all, value, timeout);
  }
  void AppendWaitForSignal(Text name, Int timeout) { Append(Code2::WAIT_SIGNAL, VariableId(name), timeout); }
  void AppendSuspend() { Append(Code2::SUSPEND); }

  // Marking on the fly
  void AppendStartMotf() { Append(Code::START_MOTF); }
  void AppendStopMotf(Point2D p) { Append(Code::STOP_MOTF, p); }
  void AppendStopMotf(Point3D p) { Append(Code::STOP_MOTF_3D, p); }
  void AppendMotfWaitPart(Int part) { Append(Code::MOTF_WAIT_PART, part); }
  void AppendMotfWaitDistance(double distance, MotfDistanceMode mode, Int source) {
    Append(Code::MOTF_WAIT_DISTANCE, distance, mode._to_integral(), source);
  }
  void AppendMotfTileOffset(double offset) { Append(Code::MOTF_TILE_OFFSET, offset); }

  // Branches inside the list
  void AppendBranchAbs(Int position) { Append(Code2::BRANCH_ABS, position); }
  void AppendBranchRel(Int distance) { Append(Code2::BRANCH_REL, distance); }
  void AppendBranchToLabel(Text label) { AppendReferring(label, Code2::BRANCH_ABS, Int{0}); }
  void AppendBranchAbs(Int position, UInt mask, Int port, bool expected, bool all, UInt value) {
    Append(Code2::BRANCH_ABS_COND, position, mask, port, expected, all, value);
  }
  void AppendBranchRel(Int distance, UInt mask, Int port, bool expected, bool all, UInt value) {
    Append(Code2::BRANCH_REL_COND, distance, mask, port, expected, all, value);
  }
  void AppendBranchToLabel(Text label, UInt mask, Int port, bool expected, bool all, UInt value) {
    AppendReferring(label, Code2::BRANCH_ABS_COND, Int{0}, mask, port, expected, all, value);
  }
  void AppendBranchAbs(Int position, Text name, bool value) {
    Append(Code2::BRANCH_ABS_COND_FLAG, position, VariableId(name), value);
  }
  void AppendBranchRel(Int distance, Text name, bool value) {
    Append(Code2::BRANCH_REL_COND_FLAG, distance, VariableId(name), value);
  }
  void AppendBranchToLabel(Text label, Text name, bool value) {
    AppendReferring(label, Code2::BRANCH_ABS_COND_FLAG, Int{0}, VariableId(name), value);
  }

  // Loops. Opening one makes what follows one deeper; the depth travels with the command.
  void AppendLoopStart(Int count) { Append(Code2::LOOP_START, count, loopDepth_ + 1), ++loopDepth_; }
  // Deliberately unguarded: without an open loop the depth goes below 0.
  void AppendLoopEnd() { Append(Code2::LOOP_END, loopDepth_), --loopDepth_; }
  // Throws std::runtime_error "No loop opened!".
  void AppendLoopBreak() { CheckLoopOpened(), Append(Code2::LOOP_BREAK); }

  // Switch. The values of cases are 32 bits, whatever their sign. The first value of SWITCH_VALUE is always 0.
  void AppendSwitch(Int port, bool shifted, UInt mask) { Append(Code2::SWITCH, port, shifted, mask); }
  void AppendSwitch(Text name) { Append(Code2::SWITCH_VALUE, Int{0}, VariableId(name)); }
  void AppendCaseAbs(Int position, Int value) { Append(Code2::CASE_GOTO_ABS, position, value); }
  void AppendCaseAbs(Int position, UInt value) { AppendCaseAbs(position, Bits(value)); }
  void AppendCaseRel(Int distance, Int value) { Append(Code2::CASE_GOTO_REL, distance, value); }
  void AppendCaseRel(Int distance, UInt value) { AppendCaseRel(distance, Bits(value)); }
  void AppendCaseToLabel(Text label, Int value) {
    AppendReferring(label, Code2::CASE_GOTO_ABS, Int{0}, value);
  }
  void AppendCaseToLabel(Text label, UInt value) { AppendCaseToLabel(label, Bits(value)); }
  void AppendCaseBranchList(Int list, Int value) { Append(Code2::CASE_BRANCH_LIST, list, value); }
  void AppendCaseBranchList(Int list, UInt value) { AppendCaseBranchList(list, Bits(value)); }
  void AppendCaseCallList(Int list, Int value) { Append(Code2::CASE_CALL_LIST, list, value); }
  void AppendCaseCallList(Int list, UInt value) { AppendCaseCallList(list, Bits(value)); }
  void AppendDefaultAbs(Int position) { Append(Code2::DEFAULT_GOTO_ABS, position); }
  void AppendDefaultRel(Int distance) { Append(Code2::DEFAULT_GOTO_REL, distance); }
  void AppendDefaultToLabel(Text label) { AppendReferring(label, Code2::DEFAULT_GOTO_ABS, Int{0}); }
  void AppendDefaultBranchList(Int list) { Append(Code2::DEFAULT_BRANCH_LIST, list); }
  void AppendDefaultCallList(Int list) { Append(Code2::DEFAULT_CALL_LIST, list); }

  // Other lists
  void AppendBranchList(Int list) { Append(Code2::BRANCH_LIST, list); }
  void AppendBranchList(Int list, UInt mask, Int port, bool expected, bool all, UInt value) {
    Append(Code2::BRANCH_LIST_COND, list, mask, port, expected, all, value);
  }
  void AppendBranchList(Int list, Text name, bool value) {
    Append(Code2::BRANCH_LIST_COND_FLAG, list, VariableId(name), value);
  }
  void AppendCallList(Int list) { Append(Code2::CALL_LIST, list); }
  void AppendCallList(Int list, UInt mask, Int port, bool expected, bool all, UInt value) {
    Append(Code2::CALL_LIST_COND, list, mask, port, expected, all, value);
  }
  void AppendCallList(Int list, Text name, bool value) {
    Append(Code2::CALL_LIST_COND_FLAG, list, VariableId(name), value);
  }
  void AppendExitList() { Append(Code2::EXIT_LIST); }
  void AppendExitList(UInt mask, Int port, bool expected, bool all, UInt value) {
    Append(Code2::EXIT_LIST_CONDITION, mask, port, expected, all, value);
  }
  void AppendExitList(Text name, bool value) { Append(Code2::EXIT_LIST_FLAG, VariableId(name), value); }
  void AppendBranchStandAloneList() { Append(Code2::GOTO_STANDALONE_LIST); }

  // Text. A character travels as a number from 0 to 255.
  void AppendSelectFont(Int font) { Append(Code::SELECT_FONT, font); }
  void AppendMarkChar(char character) {
    Append(Code2::MARK_CHAR, Int{static_cast<unsigned char>(character)});
  }
  void AppendMarkText(Text text);
  void AppendMarkTime() { Append(Code2::MARK_TIME); }
  void AppendMarkCounter(Text name, Int digits) {
    Append(Code2::MARK_COUNTER, Bits(VariableId(name)), digits);
  }

  // Peripherals
  void AppendEnhancedCommand(Int head, Axis axis, UInt command) {
    Append(Code::PERIPHERAL_ENHCMD, head, static_cast<UInt>(axis._to_integral()), command);
  }
  void AppendGpioValue(Int port, Int action, UInt value) {
    Append(Code::PERIPHERAL_PORT, static_cast<UInt>(port), static_cast<UInt>(action), value);
  }
  void AppendDacValue(PowerTarget target, UInt value) {
    Append(Code::PERIPHERAL_DAC, target._to_integral(), value);
  }
  void AppendTraceConfig(const TraceBufferConfig& c) {
    Append(Code::PERIPHERAL_TRACE_CFG, c.Mode, c.Signals, c.Period, c.Length);
  }
  void AppendTraceLabel(Int label) { Append(Code::PERIPHERAL_TRACE_LABEL, label); }
  void AppendSpiWrite(Int module, UInt value) { Append(Code::PERIPHERAL_SPI, module, value); }
  void AppendSerialPortTransmitBytes(Array<std::uint8_t> bytes) {
    Append(Code2::SERIAL_PORT_TRANSMIT, bytes);
  }
  void AppendSerialPortTransmitString(Text text) { Append(Code2::SERIAL_PORT_TRANSMIT, BytesOf(text)); }
  void AppendSerialPortTransmitLine(Text text) { Append(Code2::SERIAL_PORT_TRANSMIT_LINE, BytesOf(text)); }
  void AppendSerialPortVerifyResponseBytes(Array<std::uint8_t> request, Array<std::uint8_t> response) {
    Append(Code2::SERIAL_PORT_VERIFY_RESPONSE, request, response);
  }
  void AppendSerialPortVerifyResponseString(Text request, Text response) {
    Append(Code2::SERIAL_PORT_VERIFY_RESPONSE, BytesOf(request), BytesOf(response));
  }
  void AppendSerialPortVerifyResponseLine(Text request, Text response) {
    Append(Code2::SERIAL_PORT_VERIFY_RESPONSE_LINE, BytesOf(request), BytesOf(response));
  }

  void msgpack_pack(auto& packer) const;
  void msgpack_unpack(const msgpack::object& object);
  // The same, however long the list is. What it was before is lost if that throws.
  void TakeFrom(Body::Reader& reader);

 private:
  static constexpr Int Bits(UInt value) { return static_cast<Int>(value); }
  static Array<std::uint8_t> BytesOf(Text text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
  }
  // The index of the next command, as labels and branches count it.
  Int NextIndex() const;
  void CheckLoopOpened() const;
  void AppendWobble(const WobbleShape& shape);
  template <class... Values>
  void AppendReferring(Text label, Int code, const Values&... values);

  LabelList labels_;
  Int listField_ = -1;
  Int loopDepth_ = 0;
};

// A list in the command log.
inline std::string LogText(const CommandList& list) {
  return list.ToString();
}

// Commands [First, Last) of a list, which travel as a list: one piece of an upload. They are sent from where they lie.
struct ListPiece {
  static constexpr std::string_view WireName = CommandList::WireName;

  const CommandList& List;
  std::size_t First, Last;
};
void PackArgument(OutputPacket& packet, const ListPiece& piece);
inline std::string LogText(const ListPiece& piece) {
  return piece.List.ToString(piece.First, piece.Last);
}

template <class... Values>
void CommandList::AppendReferring(Text label, Int code, const Values&... values) {
  const Int index = NextIndex();
  labels_.AddReference(label, index);
  try {
    Append(code, values...);
  } catch (...) {
    labels_.RemoveReference(label, index);
    throw;
  }
}

void CommandList::msgpack_pack(auto& packer) const {
  packer.pack_array(static_cast<std::uint32_t>(GetCommandCount() + 1));
  packer.pack_int32(listField_);
  PackBytes(packer, Bytes());
}

}  // namespace VELTRO::KELVO::ClientLib
