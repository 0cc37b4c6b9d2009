#include "capi/KelvoErrorHandler.h"

namespace VELTRO::KELVO::ClientLib {

void KelvoErrorHandler::Release() noexcept {
  Clear();
  std::string().swap(buffer_);
}

void KelvoErrorHandler::InsertError(const char* text) noexcept {
  try {
    buffer_ = text;
    current_ = buffer_;
  } catch (...) {
    current_ = "Unable to generate error message.";
  }
}

}  // namespace VELTRO::KELVO::ClientLib
