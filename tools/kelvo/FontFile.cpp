#include "FontFile.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>

#include "Failure.h"
#include "Files.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::size_t MostFontFileBytes = std::size_t{64} << 20;

// The code of "A" or "U+0041"; nothing for other names.
std::optional<std::uint16_t> CodeOf(std::string_view name) {
  if (name.size() == 6 && name.starts_with("U+")) {
    std::uint16_t code = 0;
    const auto [end, error] = std::from_chars(name.data() + 2, name.data() + 6, code, 16);
    return error == std::errc() && end == name.data() + 6 ? std::optional(code) : std::nullopt;
  }
  // JSON texts are sound UTF-8.
  const auto at = [name](std::size_t i) { return static_cast<unsigned char>(name[i]); };
  const std::size_t bytes = name.empty() ? 0 : at(0) < 0x80 ? 1 : at(0) < 0xE0 ? 2 : at(0) < 0xF0 ? 3 : 0;
  if (bytes == 0 || name.size() != bytes) return {};
  std::uint32_t code = bytes == 1 ? at(0) : at(0) & (0x7FU >> bytes);
  for (std::size_t i = 1; i < bytes; ++i) code = code << 6 | (at(i) & 0x3FU);
  return static_cast<std::uint16_t>(code);
}

}  // namespace

std::string CharacterName(std::uint16_t code) {
  if ((code & 0xF800U) == 0xD800U) {  // half of a pair
    char name[8];
    std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(code));
    return name;
  }
  if (code < 0x80) return {static_cast<char>(code)};
  const char last = static_cast<char>(0x80U | (code & 0x3FU));
  if (code < 0x800) return {static_cast<char>(0xC0U | code >> 6U), last};
  return {static_cast<char>(0xE0U | code >> 12U), static_cast<char>(0x80U | (code >> 6U & 0x3FU)), last};
}

FontTexts ReadFontFile(const std::string& path) {
  Json font;
  try {
    font = Json::parse(ReadFile(path, MostFontFileBytes));
  } catch (const Json::exception& error) {
    throw Refused("'" + path + "' is no JSON: " + error.what());
  }
  if (!font.is_object()) throw Refused("'" + path + "' holds no font: it is no object of characters.");
  const auto wrong = [&path](const std::string& name, const char* what) {
    return Refused("'" + path + "': '" + name + "' " + what);
  };
  FontTexts texts;
  for (const auto& [name, text] : font.items()) {
    const auto code = CodeOf(name);
    if (!code) throw wrong(name, "is no character of a font.");
    if (!text.is_string()) throw wrong(name, "has no text of a list.");
    if (!texts.emplace(*code, text.get<std::string>()).second) throw wrong(name, "is there twice.");
  }
  return texts;
}

Json FontJson(const FontTexts& texts) {
  Json font = Json::object();
  for (const auto& [code, text] : texts) font[CharacterName(code)] = text;
  return font;
}

}  // namespace VELTRO::KELVO::Tool
