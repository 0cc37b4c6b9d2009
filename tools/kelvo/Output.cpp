#include "Output.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace VELTRO::KELVO::Tool {

namespace {

// The number of bytes at the beginning of a text that are one character that is not to be shown.
std::size_t Hidden(std::string_view text) {
  const auto at = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  if (at(0) < 0x20 || at(0) == 0x7F) return 1;
  if (at(0) == 0xC2 && at(1) >= 0x80 && at(1) < 0xA0) return 2;  // C1 controls
  if (at(0) == 0xD8 && at(1) == 0x9C) return 2;                  // Arabic letter mark
  if (at(0) != 0xE2) return 0;
  const bool isMark = at(1) == 0x80 && (at(2) == 0x8E || at(2) == 0x8F || (at(2) >= 0xAA && at(2) <= 0xAE));
  const bool isIsolate = at(1) == 0x81 && at(2) >= 0xA6 && at(2) <= 0xA9;
  return isMark || isIsolate || (at(1) == 0x80 && (at(2) == 0xA8 || at(2) == 0xA9)) ? 3 : 0;
}

// Characters, which are not bytes.
std::size_t Width(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

bool HasColours() {
  const char* const no = std::getenv("NO_COLOR");  // NOLINT(concurrency-mt-unsafe): nobody changes it
  return isatty(STDOUT_FILENO) == 1 && (no == nullptr || *no == 0);
}

}  // namespace

std::string Clean(std::string_view text) {
  std::string clean;
  while (!text.empty()) {
    const std::size_t hidden = Hidden(text);
    if (hidden == 0) clean += text.front();
    text.remove_prefix(std::min(std::max<std::size_t>(hidden, 1), text.size()));
  }
  return clean;
}

std::string Shown(const Json& value) {
  return Clean(value.is_string() ? value.get<std::string>()
                                 : value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void Output::Line(std::string_view text) const {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fputc('\n', stdout);
}

void Output::Table(const std::vector<std::string>& heads, const std::vector<std::vector<std::string>>& rows,
                   const std::vector<Colour>& colours) const {
  const bool hasColours = !IsQuiet && HasColours();
  std::vector<std::size_t> widths;
  const auto measure = [&](const std::vector<std::string>& cells) {
    widths.resize(std::max(widths.size(), cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], Width(cells[i]));
  };
  measure(heads);
  std::ranges::for_each(rows, measure);
  const auto print = [&](const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const bool isColoured = hasColours && i < colours.size() && colours[i] != Colour::None;
      line += isColoured ? "\33[" + std::to_string(static_cast<int>(colours[i])) + "m" + cells[i] + "\33[m"
                         : cells[i];
      if (i + 1 < cells.size()) line.append(widths[i] - Width(cells[i]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    Line(line);
  };
  if (!heads.empty()) print(heads);
  std::ranges::for_each(rows, print);
}

void Output::Print(const Json& data) const {
  Line(data.dump(2, ' ', false, Json::error_handler_t::replace));
}

void Output::Remark(std::string_view text) const {
  if (!IsQuiet) std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
}

}  // namespace VELTRO::KELVO::Tool
