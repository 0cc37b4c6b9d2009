#include "Staging.h"

#include <map>
#include <string>
#include <utility>

#include "FontFile.h"
#include "ListText.h"

namespace VELTRO::KELVO::Tool {

namespace {

// "7=FILE": what is ahead of the sign, a number, and behind it.
std::pair<std::int32_t, std::string> ParsePair(std::string_view name, const std::string& text) {
  const std::size_t sign = text.find('=');
  if (sign == std::string::npos || sign + 1 == text.size()) {
    throw WrongUsage(std::string(name) + " takes NUMBER=..., not '" + text + "'.");
  }
  return {static_cast<std::int32_t>(ParseWhole(name, text.substr(0, sign), INT32_MIN, INT32_MAX)),
          text.substr(sign + 1)};
}

}  // namespace

ClientLib::Font ReadFont(std::int32_t id, const std::string& path) {
  ClientLib::Font font(id);
  for (const auto& [code, text] : ReadFontFile(path)) {
    font.CharContainer[code] = ListText(path + ", character '" + CharacterName(code) + "'", text).ReadWhole();
  }
  return font;
}

std::span<const Parameter> StageOptions() {
  static constexpr Parameter Options[] = {
      {"--with", "ID=FILE", "List that the list calls or branches to; itself it is list 1", Parameter::Any},
      {"--font", "ID=FILE", "Font that it marks with; the lowest number is the active one", Parameter::Any},
      {"--input", "PORT=VALUE", "Levels on the pins of a port; 0 without it", Parameter::Any},
      {"--standalone-list", "ID", "List that GOTO_STANDALONE_LIST branches to"},
      {"--field", "WIDTHxHEIGHT", "The field, in millimetres around the origin"},
  };
  return Options;
}

Simulation::Stage MakeStage(const Arguments& given) {
  Simulation::Stage stage;
  for (const std::string& text : given.All("--with")) {
    const auto [id, path] = ParsePair("--with", text);
    stage.Lists[id] = ReadListFile(path);
  }
  for (const std::string& text : given.All("--font")) {
    const auto [id, path] = ParsePair("--font", text);
    stage.Fonts[id] = ReadFont(id, path);
  }
  for (const std::string& text : given.All("--input")) {
    const auto [port, value] = ParsePair("--input", text);
    stage.Inputs[port] = static_cast<std::uint32_t>(ParseWhole("--input", value, 0, UINT32_MAX));
  }
  if (given.Has("--standalone-list")) stage.StandaloneList = given.Int32("--standalone-list");
  return stage;
}

std::optional<Simulation::Box> ParseField(const Arguments& given) {
  if (!given.Has("--field")) return std::nullopt;
  const std::string& text = given.Text("--field");
  const std::size_t x = text.find('x');
  const double width = ParseNumber("--field", text.substr(0, x));
  const double height = x == std::string::npos ? width : ParseNumber("--field", text.substr(x + 1));
  if (!(width > 0 && height > 0 && width < 1e9 && height < 1e9)) {
    throw WrongUsage("--field takes WIDTHxHEIGHT in millimetres, not '" + text + "'.");
  }
  return Simulation::Box{{{-width / 2, -height / 2}}, {{width / 2, height / 2}}};
}

}  // namespace VELTRO::KELVO::Tool
