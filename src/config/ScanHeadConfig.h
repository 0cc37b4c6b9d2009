// One scan head, as a part of the scanner's configuration.
#pragma once

#include <vector>

#include "common/Transform3D.h"
#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

class RecordText;

struct ScanHeadAxis {
  KELVO_FIELDS((double, AccelerationTime, 0), (double, TrackingError, 0), (double, HeadBias, 0))
};

// AxisCount is how many axes the head has; Axes has an entry for each of them. Deliberate oddities: on the wire the
// version stands behind AxisCount, and AxisCount is not in the text.
class ScanHeadConfig : public Record<ScanHeadConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 10;
  static constexpr const char* Name = "ScanHeadConfig";
  static constexpr std::size_t VersionPlace = 1;
  static constexpr std::int32_t DefaultAxisCount = 3;

  // clang-format off
  KELVO_FIELDS(
      (std::int32_t, AxisCount, DefaultAxisCount),
      (Transform3D, FieldTransform, {}),
      (std::vector<ScanHeadAxis>, Axes, std::vector<ScanHeadAxis>(DefaultAxisCount)),
      (bool, EnableFieldCorrection, false))
  // clang-format on
};

void WriteFields(const ScanHeadConfig& head, RecordText& text);

extern template class Record<ScanHeadConfig>;

}  // namespace VELTRO::KELVO::ClientLib
