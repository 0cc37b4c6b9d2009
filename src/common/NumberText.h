// Numbers in texts, whatever the locale.
#pragma once

#include <charconv>
#include <string>

namespace VELTRO::KELVO::ClientLib {

// As a default output stream of the C locale writes it.
inline void AppendNumber(std::string& text, double value) {
  constexpr int StreamPrecision = 6;
  char digits[32];
  text.append(
      digits,
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, StreamPrecision).ptr);
}

}  // namespace VELTRO::KELVO::ClientLib
