// The scanner: its configuration, where its heads are, and their bias.
#pragma once

#include <cstdint>
#include <vector>

#include "common/KelvoAPIEnums.h"
#include "common/Point.h"
#include "config/RecordAPI.h"
#include "config/ScannerConfig.h"

namespace VELTRO::KELVO::ClientLib {

// Of each head the positions of its axes, in the order of their indices in the head format.
struct ScannerPositions {
  static constexpr const char* Name = "ScannerPositions";
  static constexpr std::string_view WireName = "positions";

  KELVO_FIELDS((std::vector<std::vector<double>>, Heads, {}))
};

class ScannerAPI : public RecordAPI<ScannerConfig> {
 public:
  using RecordAPI::RecordAPI;

  // Where the heads ought to be.
  Point3D GetNominalPosition() { return caller_.Call<Point3D>("GetNominalPosition"); }
  // Asks the heads where they are.
  ScannerPositions ReadPositions() { return caller_.Call<ScannerPositions>("ReadPositions"); }
  // What the heads told the last time.
  ScannerPositions ReadLastPositions() { return caller_.Call<ScannerPositions>("ReadLastPositions"); }
  Point3D GetHeadBias(std::int32_t head) { return caller_.Call<Point3D>("GetHeadBias", head); }
  // A value for each of the axes, which are flags, in the order of Axis.
  void SetHeadBias(std::int32_t head, Axes axes, const std::vector<double>& values) {
    caller_.Call("SetHeadBias", head, axes._to_integral(), values);
  }
};

}  // namespace VELTRO::KELVO::ClientLib
