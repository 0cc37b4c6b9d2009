#include "capi/KelvoErrorHandler.h"

namespace VELTRO::KELVO::ClientLib {

KelvoErrorHandler& KelvoErrorHandler::getThreadLocalInstance() noexcept {
  thread_local KelvoErrorHandler instance;
  return instance;
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
