// The last error of each thread.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "capi/ThreadOwned.h"

namespace VELTRO::KELVO::ClientLib {

class KelvoErrorHandler {
 public:
  static KelvoErrorHandler& getThreadLocalInstance() noexcept {
    return ThreadOwned<KelvoErrorHandler>::Get();
  }

  // Keeps a text as the current error. When it cannot be stored the error is "Unable to generate error
  // message.".
  void InsertError(const std::exception& error) noexcept { InsertError(error.what()); }
  void InsertError(const char* text) noexcept;
  // No error; the buffer is kept for the next.
  void Clear() noexcept { current_ = {}; }

  std::string_view Get() const noexcept { return current_; }

  // No error, and no memory either.
  void Release() noexcept;

 private:
  std::string buffer_;
  std::string_view current_;
};

}  // namespace VELTRO::KELVO::ClientLib
