// The text of a value in the command log. None depends on the locale of the process.
#pragma once

#include <charconv>
#include <concepts>
#include <string>
#include <string_view>
#include <vector>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

// Appends a text such that it stays within its line, whoever reads it: a line feed as "\n", a carriage return as "\r",
// a tab as "\t", a backslash as "\\", and as "\x" and two digits each byte of any other control character and of the
// separators of lines and paragraphs (U+0000 to U+001F, U+007F to U+009F, U+2028, U+2029).
void AppendEscaped(std::string& line, std::string_view text);

std::string LogText(const msgpack::object& value);

inline std::string LogText(std::string_view value) {
  return std::string(value);
}
inline std::string LogText(const std::string& value) {
  return value;
}
inline std::string LogText(const char* value) {
  return value;
}
inline std::string LogText(bool value) {
  return value ? "1" : "0";
}

template <class T>
requires(std::integral<T> || std::floating_point<T>) std::string LogText(T value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return {text, end};
}

template <class T>
requires requires(const T& value) {
  { value.ToString() } -> std::convertible_to<std::string>;
}
std::string LogText(const T& value) {
  return value.ToString();
}

template <class T>
std::string LogText(const std::vector<T>& values) {
  std::string text = "[";
  for (const auto& value : values) text.append(text.size() > 1 ? ", " : " ").append(LogText(value));
  return text + " ]";
}

}  // namespace VELTRO::KELVO::ClientLib
