#include "card/CardMotf.h"

#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::VirtualCard {

std::int32_t CardMotf::ReadEncoderPosition(std::int32_t module) {
  if (module < 0 || static_cast<std::size_t>(module) >= decoders_.Get().Modules.size()) {
    throw std::runtime_error("There is no decoder module " + std::to_string(module) + ".");
  }
  return 0;
}

void CardMotf::ResetEncoderPosition(std::int32_t module) {
  ReadEncoderPosition(module);
}

}  // namespace VELTRO::KELVO::VirtualCard
