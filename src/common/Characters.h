// Texts in UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

// How much of the text there is in `most` bytes without a part of a character at the end.
constexpr std::size_t WholeCharacters(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text.size();
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80) --most;
  return most;
}

}  // namespace VELTRO::KELVO::ClientLib
