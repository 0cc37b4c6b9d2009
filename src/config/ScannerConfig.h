// The scanner: its field and its heads.
#pragma once

#include <vector>

#include "common/Point.h"
#include "config/ScanHeadConfig.h"
#include "config/ScanHeadFormat.h"

namespace VELTRO::KELVO::ClientLib {

class ScannerConfig : public Record<ScannerConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 12;
  static constexpr std::string_view WireName = "ScannerConfig";
  static constexpr std::string_view Name = WireName;

  // clang-format off
  KELVO_FIELDS(
      (Point3D, FieldSize, {{65536, 65536, 1}}),
      (double, MaxMagnification, 1),
      (std::int32_t, HeadCount, 1),
      (std::vector<ScanHeadConfig>, Heads, std::vector<ScanHeadConfig>(1)),
      (double, ScanHeadDelay, 0),
      (ScanHeadFormat, HeadFormat, ScanHeadFormat::SL2_Single3D))
  // clang-format on

  // Sets the format, with as many heads and axes as it has; those that stay keep their values. Throws
  // std::runtime_error "Unknown head format", and changes nothing then.
  void SetHeadFormat(ScanHeadFormat format);
};

extern template class Record<ScannerConfig>;

}  // namespace VELTRO::KELVO::ClientLib
