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
// The text of a JSON value with such characters escaped.
std::string Escaped(std::string_view json);

enum class Colour { None, Red, Green };

class Output {
 public:
  Output(bool asJson, bool isQuiet);

  const bool AsJson;
  const bool IsQuiet;

  // A line on standard output, as it is: for contents, and what was cleaned.
  void Line(std::string_view text) const;
  // Rows of cells, which it cleans, under their heads; of columns without heads when those are empty. The first columns
  // may have colours, which are shown on a terminal, unless the tool is to be quiet or NO_COLOR is set.
  void Table(const std::vector<std::string>& heads, std::vector<std::vector<std::string>> rows,
             const std::vector<Colour>& colours = {}) const;
  void Print(const Json& data) const;
  // A line that is not kept back until there are more.
  void PrintNow(const Json& data) const;
  // A line on standard error, cleaned, unless quiet.
  void Remark(std::string_view text) const;

 private:
  bool isColoured_;
};

// Of a JSON value: texts without quotes, cleaned.
std::string Shown(const Json& value);

}  // namespace VELTRO::KELVO::Tool
