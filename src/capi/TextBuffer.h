// Texts on their way into a caller's buffer.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "capi/Frame.h"

namespace VELTRO::KELVO::ClientLib {

// Copies the text with its terminating zero and tells its length without it. Throws std::runtime_error "Buffer is
// too small.". Deliberate oddity: the buffer must have room for one byte more than that.
inline void CopyText(const std::string& text, char* buffer, std::uint32_t size, std::uint32_t* length) {
  NotNull(length, "length");
  NotNull(buffer, "buffer");
  if (text.size() + 1 >= size) throw std::runtime_error("Buffer is too small.");
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  *length = static_cast<std::uint32_t>(text.size());
}

// The same with the text that `get` gives, which is not called when there is nowhere to put it.
template <class Get>
void TellText(char* buffer, std::uint32_t size, std::uint32_t* length, Get&& get) {
  NotNull(length, "length");
  NotNull(buffer, "buffer");
  CopyText(get(), buffer, size, length);
}

}  // namespace VELTRO::KELVO::ClientLib
