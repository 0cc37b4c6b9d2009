#include "Output.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

namespace VELTRO::KELVO::Tool {

namespace {

constexpr char32_t Replacement = 0xFFFD;

struct Character {
  std::size_t Bytes;
  char32_t Code;
};

// The first one of a text in UTF-8; a byte that begins none counts as one that is replaced.
Character FirstOf(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t bytes = lead < 0x80                  ? 1
                            : lead < 0xC2 || lead > 0xF4 ? 0
                            : lead < 0xE0                ? 2
                            : lead < 0xF0                ? 3
                                                         : 4;
  if (bytes == 0 || bytes > text.size()) return {1, Replacement};
  char32_t code = bytes == 1 ? lead : lead & (0x7FU >> bytes);
  for (const char c : text.substr(1, bytes - 1)) {
    if ((c & 0xC0) != 0x80) return {1, Replacement};
    code = code << 6 | (c & 0x3F);
  }
  const bool isTooLong = (bytes == 3 && code < 0x800) || (bytes == 4 && code < 0x10000);
  if (isTooLong || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return {1, Replacement};
  return {bytes, code};
}

// Control characters, and marks that separate lines or change the direction of text.
bool IsHidden(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x61C || code == 0x200E || code == 0x200F ||
         (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

// The text with other things in place of hidden characters.
template <class Instead>
std::string Replaced(std::string_view text, Instead&& instead) {
  std::string replaced;
  replaced.reserve(text.size());
  while (!text.empty()) {
    const auto [bytes, code] = FirstOf(text);
    if (IsHidden(code)) {
      replaced += instead(code);
    } else if (code == Replacement) {
      replaced += "\xEF\xBF\xBD";
    } else {
      replaced += text.substr(0, bytes);
    }
    text.remove_prefix(bytes);
  }
  return replaced;
}

// Characters, which are not bytes.
std::size_t Width(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

Output::Output(bool asJson, bool isQuiet) : AsJson(asJson), IsQuiet(isQuiet) {
  const char* const noColour =
      std::getenv("NO_COLOR");  // NOLINT(concurrency-mt-unsafe): nobody else runs yet
  isColoured_ = !isQuiet && isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == 0);
}

std::string Clean(std::string_view text) {
  return Replaced(text, [](char32_t) { return ""; });
}

std::string Escaped(std::string_view json) {
  return Replaced(json, [](char32_t code) -> std::string {
    if (code == '\n') return "\n";  // between values: in texts it is escaped already
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(code));
    return text;
  });
}

std::string Shown(const Json& value) {
  return Clean(value.is_string() ? value.get<std::string>()
                                 : value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void Output::Line(std::string_view text) const {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fputc('\n', stdout);
}

void Output::Table(const std::vector<std::string>& heads, std::vector<std::vector<std::string>> rows,
                   const std::vector<Colour>& colours) const {
  for (auto& cells : rows) std::ranges::transform(cells, cells.begin(), &Clean);
  std::vector<std::size_t> widths;
  const auto measure = [&](const std::vector<std::string>& cells) {
    widths.resize(std::max(widths.size(), cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], Width(cells[i]));
  };
  measure(heads);
  std::ranges::for_each(rows, measure);
  const auto print = [&](const std::vector<std::string>& cells, bool isColoured) {
    std::string line;
    std::size_t blanks = 0;  // those behind the last cell are left out
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const Colour colour = isColoured && i < colours.size() ? colours[i] : Colour::None;
      if (!cells[i].empty()) line.append(std::exchange(blanks, 0), ' ');
      line += colour == Colour::None ? cells[i]
                                     : (colour == Colour::Red ? "\33[31m" : "\33[32m") + cells[i] + "\33[m";
      blanks += widths[i] - Width(cells[i]) + 2;
    }
    Line(line);
  };
  if (!heads.empty()) print(heads, false);
  for (const auto& cells : rows) print(cells, isColoured_);
}

void Output::Print(const Json& data) const {
  Line(Escaped(data.dump(2, ' ', false, Json::error_handler_t::replace)));
}

void Output::PrintNow(const Json& data) const {
  Line(Escaped(data.dump(-1, ' ', false, Json::error_handler_t::replace)));
  std::fflush(stdout);
}

void Output::Remark(std::string_view text) const {
  if (!IsQuiet) std::fprintf(stderr, "%s\n", Clean(text).c_str());
}

}  // namespace VELTRO::KELVO::Tool
