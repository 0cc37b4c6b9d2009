#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

#include "execution/Checks.h"
#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::CommandCode2;
using ClientLib::Point2D;
using ClientLib::Point3D;

namespace {

using Parameters = ProcessParameters;

// What the values of parameters must be.
double Speed(double v) {
  return Positive(v, "speed");
}
double Delay(double t) {
  return NotNegative(t, "delay");
}
double LaserDelay(double t) {
  return Finite(t, "delay");
}
double Frequency(double f) {
  return Positive(f, "frequency");
}
double Scale(double s) {
  return Positive(s, "scale of the speeds");
}
double LengthLimit(double l) {
  return NotNegative(l, "length");
}
double HeadingCosine(double c) {
  return Finite(c, "cosine");
}
Point2D Wobbling(Point2D p) {
  for (const double value : p.Coordinates) Finite(value, "wobble");
  return p;
}
bool Switch(bool isOn) {
  return isOn;
}
std::int32_t SkyMode(std::int32_t mode) {
  if (!ClientLib::SkyWritingMode::_is_valid(mode)) {
    throw std::runtime_error("There is no sky-writing mode " + std::to_string(mode) + ".");
  }
  return mode;
}

// A command with one value, which Check lets pass into a parameter.
template <auto Parameter, auto Check>
constexpr CommandRow Sets(std::int32_t code) {
  using Value = std::remove_reference_t<decltype(std::declval<Parameters&>().*Parameter)>;
  return {code, [](Run& run, Value value) { run.Galvos.Parameters.*Parameter = Check(value); }};
}
// The same into a member of a group of parameters.
template <auto Group, auto Member, auto Check>
constexpr CommandRow SetsIn(std::int32_t code) {
  using Value = std::remove_reference_t<decltype((std::declval<Parameters&>().*Group).*Member)>;
  return {code, [](Run& run, Value value) { run.Galvos.Parameters.*Group.*Member = Check(value); }};
}

// A command that changes how positions become those of the galvos.
template <auto Change, class... Values>
constexpr CommandRow Transforms(std::int32_t code) {
  return {code, [](Run& run, Values... values) {
            Transformation transformation = run.Galvos.GetTransformation();
            std::invoke(Change, transformation, values...);
            run.Galvos.SetTransformation(transformation);
          }};
}

void SetAffine(Transformation& transformation, Array<double> a, Array<double> b) {
  if (a.GetCount() != 9 || b.GetCount() != 3) {
    throw std::runtime_error("A transformation has 9 factors and 3 shifts.");
  }
  transformation.SetAffine({{{{a[0], a[1], a[2]}}, {{a[3], a[4], a[5]}}, {{a[6], a[7], a[8]}}}},
                           {{b[0], b[1], b[2]}});
}

void SetPattern(Dashes& pattern, Array<double> lengths) {
  std::vector<double> all(lengths.GetCount());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = lengths[i];
  pattern.SetPattern(std::move(all));
}

// A command for what the virtual card does not have: its values must be of these types, and that is all.
template <class... Values>
constexpr CommandRow Taken(std::int32_t code) {
  return {code, [](Run&, Values...) {}};
}

}  // namespace

std::span<const CommandRow> ParameterCommands() {
  using P = Parameters;
  static constexpr auto Sky = &P::Sky;
  static constexpr auto Wobble = &P::Wobbling;
  using SkyOf = SkyWriting;
  static constexpr CommandRow Rows[] = {
      Sets<&P::JumpSpeed, Speed>(CommandCode::JUMP_SPEED),
      Sets<&P::MarkSpeed, Speed>(CommandCode::MARK_SPEED),
      Sets<&P::MagnificationSpeed, Speed>(CommandCode::MAGNIFICATION_SPEED),
      Sets<&P::SpeedScale, Scale>(CommandCode::SPEED_SCALE),
      Sets<&P::JumpDelay, Delay>(CommandCode::JUMP_DELAY),
      Sets<&P::JumpDelayMin, Delay>(CommandCode::JUMP_DELAY_MIN),
      Sets<&P::JumpLengthLimit, LengthLimit>(CommandCode::JUMP_LENGTH_LIMIT),
      Sets<&P::HasVariableJumpDelay, Switch>(CommandCode::VAR_JUMP_DELAY),
      Sets<&P::MarkDelay, Delay>(CommandCode::MARK_DELAY),
      Sets<&P::PolyDelay, Delay>(CommandCode::POLY_DELAY),
      Sets<&P::HasVariablePolyDelay, Switch>(CommandCode::VAR_POLY_DELAY),
      Sets<&P::LaserOnDelay, LaserDelay>(CommandCode::LON_DELAY),
      Sets<&P::LaserOffDelay, LaserDelay>(CommandCode::LOFF_DELAY),
      Sets<&P::LmFrequency, Frequency>(CommandCode::LM_FREQUENCY),

      SetsIn<Sky, &SkyOf::Mode, SkyMode>(CommandCode::SKYWRITING_MODE),
      SetsIn<Sky, &SkyOf::MinCoH, HeadingCosine>(CommandCode::SKYWRITING_MIN_COH),
      SetsIn<Sky, &SkyOf::AccelerationDelay, Delay>(CommandCode::SKYWRITING_ACCELERATION_DELAY),
      SetsIn<Sky, &SkyOf::DecelerationDelay, Delay>(CommandCode::SKYWRITING_DECELERATION_DELAY),
      SetsIn<Sky, &SkyOf::ExtensionTime, Delay>(CommandCode::SKYWRITING_EXTENSION_TIME),
      {CommandCode::SKYWRITING_LASERON_DELAY, [](Run&, double t) { LaserDelay(t); }},
      {CommandCode::SKYWRITING_LASEROFF_DELAY, [](Run&, double t) { LaserDelay(t); }},

      SetsIn<Wobble, &Simulation::Wobble::Amplitude, Wobbling>(CommandCode::WOBBLE_AMPLITUDE),
      SetsIn<Wobble, &Simulation::Wobble::Frequency, Wobbling>(CommandCode::WOBBLE_FREQUENCY),
      SetsIn<Wobble, &Simulation::Wobble::Phase, Wobbling>(CommandCode::WOBBLE_PHASE),
      SetsIn<Wobble, &Simulation::Wobble::IsEnabled, Switch>(CommandCode::WOBBLE_ENABLE),
      {CommandCode::DASHED_LINE_PATTERN,
       [](Run& run, Array<double> lengths) { SetPattern(run.Galvos.Pattern, lengths); }},
      {CommandCode::DASHED_LINE_ENABLE,
       [](Run& run, bool isOn, double begin) { run.Galvos.Pattern.Enable(isOn, begin); }},

      Transforms<&Transformation::SetScaling, Point2D>(CommandCode::SCALING_FACTOR),
      Transforms<&Transformation::SetHeadingScale, Point3D>(CommandCode::HEADING_SCALE),
      Transforms<SetAffine, Array<double>, Array<double>>(CommandCode::TRANSFORMATION),

      {CommandCode::LM_WIDTH, [](Run&, double width) { NotNegative(width, "width"); }},
      Taken<double>(CommandCode::SKYWRITING_MERGED_EXTENSIONS_MAX_COH),  // NaN is no limit
      Taken<std::uint16_t>(CommandCode::SET_SIMMERPOWER),
      Taken<bool>(CommandCode::ENABLE_PILOT),
      Taken<bool>(CommandCode::ARM_LASER),
      Taken<bool, std::int32_t>(CommandCode::VELDEPCOR_ENABLE),
      Taken<bool, std::int32_t>(CommandCode::POWERCOR_ENABLE),
      Taken<bool, std::int32_t>(CommandCode::POWERCAL_ENABLE),
      Taken<std::int32_t, std::int32_t, Array<double>>(CommandCode::HEAD_BIAS_SET),
      Taken<std::int32_t, std::int32_t>(CommandCode::FCORR_SELECT_CORRECTION),
      Taken<>(CommandCode::START_MOTF),
      Taken<std::int32_t>(CommandCode::MOTF_WAIT_PART),
      Taken<double, std::int32_t, std::int32_t>(CommandCode::MOTF_WAIT_DISTANCE),
      Taken<double>(CommandCode::MOTF_TILE_OFFSET),
      Taken<std::int32_t, std::uint32_t, std::uint32_t>(CommandCode::PERIPHERAL_ENHCMD),
      Taken<std::int32_t, std::uint32_t>(CommandCode::PERIPHERAL_DAC),
      Taken<std::int32_t, std::uint32_t, std::uint32_t, std::uint32_t>(CommandCode::PERIPHERAL_TRACE_CFG),
      Taken<std::int32_t>(CommandCode::PERIPHERAL_TRACE_LABEL),
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
