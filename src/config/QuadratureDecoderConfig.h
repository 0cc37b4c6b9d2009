// How the card counts the pulses of encoders.
#pragma once

#include <vector>

#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

class QuadratureDecoderModule : public Record<QuadratureDecoderModule> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 4;
  // clang-format off
  KELVO_FIELDS(
      (bool, SimulateEncoder, false),
      (double, SimulationSpeed, 0),
      (double, SimulationAcceleration, 0),
      (bool, InvertDirection, false),
      (bool, EnableIndex, false),
      (double, DistancePerCount, 1))
  // clang-format on
};

class QuadratureDecoderConfig : public Record<QuadratureDecoderConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 4;
  static constexpr std::string_view WireName = "QuadratureDecoderConfig";
  static constexpr std::string_view Name = WireName;

  KELVO_FIELDS((std::vector<QuadratureDecoderModule>, Modules, std::vector<QuadratureDecoderModule>(2)))
};

extern template class Record<QuadratureDecoderModule>;
extern template class Record<QuadratureDecoderConfig>;

}  // namespace VELTRO::KELVO::ClientLib
