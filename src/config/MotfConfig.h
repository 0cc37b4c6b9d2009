// How the card follows the motion of a part.
#pragma once

#include "common/KelvoAPIEnums.h"
#include "common/Point.h"
#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

// What tells the way of the part.
class MotfSource : public Record<MotfSource> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 2;
  // clang-format off
  KELVO_FIELDS(
      (MotfSourceType, SourceType, MotfSourceType::QuadratureDecoder),
      (std::int32_t, ModuleID, 0))
  // clang-format on

  MotfSource() = default;
  explicit MotfSource(std::int32_t moduleId) : ModuleID(moduleId) {}
};

class MotfConfig : public Record<MotfConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 9;
  static constexpr std::string_view WireName = "MotfConfig";
  // clang-format off
  KELVO_FIELDS(
      (MotfOperatingMode, OperatingMode, MotfOperatingMode::Standard),
      (MotfSource, MainSource, MotfSource(0)),
      (bool, UseCompensation, false),
      (MotfSource, CompensationSource, MotfSource(1)),
      (bool, EnableDebounce, false),
      (double, DebounceTime, 0),
      (bool, EnableSuppression, false),
      (double, SuppressionDistance, 0),
      (double, PartDistance, 0),
      (double, ResponseTime, 0),
      (Point3D, MainDirection, {1, 0, 0}),
      (Point3D, CompensationDirection, {0, 1, 0}),
      (Point3D, Offset, {0, 0, 0}))
  // clang-format on

  // The main direction at `angle`, in radians, from the x axis, and the compensation direction a quarter turn
  // counter-clockwise from it.
  void SetDirectionFromAngle(double angle);
};

extern template class Record<MotfSource>;
extern template class Record<MotfConfig>;

}  // namespace VELTRO::KELVO::ClientLib
