// How the card counts the pulses of encoders.
#pragma once

#include <vector>

#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

class QuadratureDecoderModule : public Record<QuadratureDecoderModule, 4> {
 public:
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

class QuadratureDecoderConfig : public Record<QuadratureDecoderConfig, 4> {
 public:
  static constexpr const char* Name = "QuadratureDecoderConfig";

  KELVO_FIELDS((std::vector<QuadratureDecoderModule>, Modules, std::vector<QuadratureDecoderModule>(2)))
};

extern template class Record<QuadratureDecoderModule, QuadratureDecoderModule::CurrentConfigVersion>;
extern template class Record<QuadratureDecoderConfig, QuadratureDecoderConfig::CurrentConfigVersion>;

}  // namespace VELTRO::KELVO::ClientLib
