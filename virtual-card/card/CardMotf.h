// Marking on the fly as clients see it: nothing moves past the virtual card, so no encoder counts and no part comes.
#pragma once

#include <atomic>
#include <cstdint>

#include "card/KeptRecord.h"
#include "config/QuadratureDecoderConfig.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class CardMotf {
 public:
  explicit CardMotf(KeptRecord<ClientLib::QuadratureDecoderConfig>& decoders) : decoders_(decoders) {}

  std::int32_t GetPendingParts() const { return 0; }
  void ResetState() {}
  // Throw std::runtime_error "There is no decoder module MODULE.".
  std::int32_t ReadEncoderPosition(std::int32_t module);
  void ResetEncoderPosition(std::int32_t module);

  std::atomic<double> Factor1xSpeed{1};

 private:
  KeptRecord<ClientLib::QuadratureDecoderConfig>& decoders_;
};

}  // namespace VELTRO::KELVO::VirtualCard
