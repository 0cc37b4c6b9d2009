#include "Verb.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace VELTRO::KELVO::Tool {

namespace {

[[noreturn]] void Refuse(std::string_view name, std::string_view text, const std::string& wanted) {
  throw WrongUsage(std::string(name) + " takes " + wanted + ", not '" + std::string(text) + "'.");
}

template <class T>
bool Parse(std::string_view text, T& value, auto... base) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base...);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::int64_t ParseWhole(std::string_view name, std::string_view text, std::int64_t least, std::int64_t most) {
  std::int64_t value = 0;
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const bool isNumber =
      isHexadecimal ? Parse(text.substr(2), value, 16) && text[2] != '-' : Parse(text, value, 10);
  if (!isNumber || value < least || value > most) {
    Refuse(name, text, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return value;
}

double ParseNumber(std::string_view name, std::string_view text) {
  double value = 0;
  if (!Parse(text, value) || !std::isfinite(value)) Refuse(name, text, "a number");
  return value;
}

std::uint32_t ParseTime(std::string_view name, std::string_view text) {
  const bool isMilliseconds = text.ends_with("ms");
  double value = 0;
  if ((!isMilliseconds && !text.ends_with('s')) ||
      !Parse(text.substr(0, text.size() - (isMilliseconds ? 2 : 1)), value) || !std::isfinite(value) ||
      value < 0 || value * (isMilliseconds ? 1 : 1000) > 4e9) {
    Refuse(name, text, "a time like 500ms or 2s");
  }
  return static_cast<std::uint32_t>(std::llround(value * (isMilliseconds ? 1 : 1000)));
}

const std::vector<std::string>& Arguments::All(std::string_view name) const {
  static const std::vector<std::string> none;
  const auto found = given_.find(std::string(name));
  return found == given_.end() ? none : found->second;
}

const std::string& Arguments::Text(std::string_view name) const {
  static const std::string none;
  const auto& all = All(name);
  return all.empty() ? none : all.front();
}

std::int64_t Arguments::Whole(std::string_view name, std::int64_t least, std::int64_t most) const {
  return ParseWhole(name, Text(name), least, most);
}

Kind KindOf(const Parameter& parameter) {
  struct Row {
    std::string_view Value;
    Kind Is;
  };
  static constexpr Row Kinds[] = {
      {"FILE", Kind::LocalFile},
      {"LOCAL", Kind::LocalFile},
      {"FILE-OR-AREA", Kind::FileOrArea},
      {"AREA", Kind::Area},
      {"FIELD", Kind::Field},
      {"FIELD=VALUE", Kind::FieldValue},
      {"ID", Kind::ListId},
      {"DIRECTORY", Kind::CardDirectory},
      {"REMOTE", Kind::CardFile},
      {"STATE", Kind::OnOrOff},
      {"DIR", Kind::LocalFile},
  };
  const auto* const found =
      std::ranges::find(Kinds, parameter.IsOption() ? parameter.Value : parameter.Name, &Row::Value);
  return found == std::end(Kinds) ? Kind::Text : found->Is;
}

std::vector<const Verb*> AllVerbs() {
  std::vector<const Verb*> all;
  for (const auto verbs : {CardVerbs(), ConfigVerbs(), ListVerbs(), RehearsalVerbs(), FileVerbs(),
                           BackupVerbs(), CorrectionVerbs(), FontVerbs(), IoVerbs(), LaserVerbs(), LogVerbs(),
                           RecordVerbs(), SessionVerbs(), CallVerbs()}) {
    for (const Verb& verb : verbs) all.push_back(&verb);
  }
  return all;
}

std::span<const Parameter> CommonOptions() {
  static constexpr Parameter Options[] = {
      {"--card", "HOST[:PORT]", "The card; else KELVO_CARD, else the one of --serial", Parameter::Any},
      {"--serial", "NUMBER", "Look for the card with this serial number; else KELVO_SERIAL", Parameter::Any},
      {"--timeout", "TIME", "How long a call may take: 500ms, 2s (17s)"},
      {"--log", "FILE", "Write the calls to the card and its answers into this file"},
      {"--json", "", "Print data as JSON"},
      {"--quiet", "", "No progress and no remarks on standard error, only errors"},
  };
  return Options;
}

}  // namespace VELTRO::KELVO::Tool
