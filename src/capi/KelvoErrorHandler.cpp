#include "capi/KelvoErrorHandler.h"

#include <cstddef>
#include <new>

namespace VELTRO::KELVO::ClientLib {

KelvoErrorHandler& KelvoErrorHandler::getThreadLocalInstance() noexcept {
  // Never destroyed, so that it serves to the very end of its thread: destructors of an application's static
  // and thread-local objects call the library, too. What the thread's end destroys is the text.
  alignas(KelvoErrorHandler) thread_local std::byte storage[sizeof(KelvoErrorHandler)];
  thread_local KelvoErrorHandler* const instance = ::new (storage) KelvoErrorHandler;
  struct TextRelease {
    ~TextRelease() { instance->Release(); }
  };
  thread_local const TextRelease release;
  static_cast<void>(&release);  // made with the first use
  return *instance;
}

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
