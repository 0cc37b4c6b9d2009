// The decoders of encoder pulses.
#pragma once

#include <cstdint>

#include "config/QuadratureDecoderConfig.h"
#include "config/RecordAPI.h"

namespace VELTRO::KELVO::ClientLib {

class QuadratureDecoderAPI : public RecordAPI<QuadratureDecoderConfig> {
 public:
  using RecordAPI::RecordAPI;

  void ResetEncoderPosition(int module) { caller_.Call("ResetEncoderPosition", module); }
  std::int32_t ReadEncoderPosition(int module) {
    return caller_.Call<std::int32_t>("ReadEncoderPosition", module);
  }
};

}  // namespace VELTRO::KELVO::ClientLib
