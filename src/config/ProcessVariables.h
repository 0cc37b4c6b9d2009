// The card's standing marking parameters: what holds at the start of every list.
#pragma once

#include <array>
#include <limits>
#include <vector>

#include "common/KelvoAPIEnums.h"
#include "common/Point.h"
#include "common/Transform3D.h"
#include "common/WobbleShape.h"
#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

class SkyWritingSettings : public Record<SkyWritingSettings> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 4;
  static constexpr double Unset = std::numeric_limits<double>::quiet_NaN();

  // clang-format off
  KELVO_FIELDS(
      (SkyWritingMode, Mode, SkyWritingMode::Disabled),
      (double, MinCoH, 0),
      (double, MergedExtensionsMaxCoH, Unset),
      (double, ExtensionTime, 0),
      (double, AccelerationDelay, 0),
      (double, DecelerationDelay, 0),
      (double, LaserOnDelay, 0),
      (double, LaserOffDelay, 0))
  // clang-format on
};

class WobbleSettings : public Record<WobbleSettings> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 1;
  // Of x and y. Unlike a point's, their text has no names.
  using Pair = std::array<double, 2>;

  // clang-format off
  KELVO_FIELDS(
      (Pair, Amplitude, {0, 0}),
      (Pair, Frequency, {0.0001, 0.0001}),
      (Pair, Phase, {0, WobbleShape::QuarterTurn}))
  // clang-format on

  WobbleSettings() = default;
  explicit WobbleSettings(const WobbleShape& shape)
      : Amplitude(shape.Amplitude.Coordinates),
        Frequency(shape.Frequency.Coordinates),
        Phase(shape.Phase.Coordinates) {}
};

class ProcessVariables : public Record<ProcessVariables> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 18;
  static constexpr std::string_view WireName = "ProcessVariables";
  static constexpr std::string_view RemoteName = "Variables";  // of its methods
  static constexpr const char* TooMany = "Too much OnOffPattern values";
  static constexpr const char* IllegalNumber = "Illegal number of OnOffPattern values";

  // clang-format off
  KELVO_FIELDS(
      (double, SpeedScale, 1),
      (double, JumpSpeed, 1),
      (double, JumpDelay, 0),
      (bool, EnableVariableJumpDelay, false),
      (double, MinJumpDelay, 0),
      (double, JumpLengthLimit, 0),
      (double, MarkSpeed, 1),
      (double, MarkDelay, 0),
      (double, MagnificationSpeed, 5e-07),
      (bool, EnableVariablePolyDelay, false),
      (double, PolyDelay, 0),
      (double, LaserOnDelay, 0),
      (double, LaserOffDelay, 0),
      (double, MaxDwellTime, 1000),
      (double, LmFrequency, 0.1),
      (double, LmWidth, 1),
      (std::uint16_t, Power, 0),
      (std::uint16_t, Power1, 0),
      (Transform3D, Transformation, {}),
      (Point3D, HeadingScale, {1, 1, 1}),
      (double, TileOffset, 0),
      (std::vector<double>, OnOffPattern, {}),
      (bool, EnableDashedLine, false),
      (double, EvaluationLeadTime, 0),
      (SkyWritingSettings, SkyWriting, {}),
      (WobbleSettings, Wobble, {}))
  // clang-format on
};

class RecordText;
// The text has another order than the wire: MaxDwellTime stands behind PolyDelay.
void WriteFields(const ProcessVariables& variables, RecordText& text);

extern template class Record<SkyWritingSettings>;
extern template class Record<WobbleSettings>;
extern template class Record<ProcessVariables>;

}  // namespace VELTRO::KELVO::ClientLib
