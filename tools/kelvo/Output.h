// What is printed: data on standard output, remarks and errors on standard error.
#pragma once

#include <cstdio>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace VELTRO::KELVO::Tool {

using Json = nlohmann::ordered_json;

// A text from a card or a file without what could make a terminal show anything else: control characters, and marks that
// change the direction of text, are left out.
std::string Clean(std::string_view text);

// On a terminal, unless it is to be quiet or NO_COLOR is set.
enum class Colour { None = 0, Red = 31, Green = 32 };

class Output {
 public:
  Output(bool asJson, bool isQuiet) : AsJson(asJson), IsQuiet(isQuiet) {}

  const bool AsJson;
  const bool IsQuiet;

  // A line on standard output, as it is.
  void Line(std::string_view text) const;
  // Rows of cells under their heads; of columns without heads when those are empty.
  // Where there are colours, columns have those of `colours`.
  void Table(const std::vector<std::string>& heads, const std::vector<std::vector<std::string>>& rows,
             const std::vector<Colour>& colours = {}) const;
  void Print(const Json& data) const;
  // A line on standard error, unless quiet.
  void Remark(std::string_view text) const;
};

// Of a JSON value: texts without quotes, cleaned.
std::string Shown(const Json& value);

}  // namespace VELTRO::KELVO::Tool
