// The table of verbs, and the parts of the tool that are best looked at alone.
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "CommandLine.h"
#include "Output.h"
#include "Spinner.h"
#include "Verb.h"
#include "support/Usual.h"

namespace VELTRO::KELVO::Tool {
namespace {

std::string Page(const char* name) {
  std::ifstream file(std::string(PROJECT_FOLDER "/docs/") + name);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(ToolTable, HasRowsThatCanBeTold) {
  std::set<std::string> paths, helps;
  const std::string page = Page("kelvo.md");
  for (const Verb* verb : AllVerbs()) {
    const std::string path(verb->Path);
    EXPECT_TRUE(paths.insert(path).second) << path;
    EXPECT_TRUE(helps.emplace(verb->Help).second) << path << " has the help of another";
    // A verb that is also a group would hide what is in it.
    EXPECT_FALSE(paths.contains(path.substr(0, path.find(' '))) && path.find(' ') != std::string::npos)
        << path;
    EXPECT_NE(page.find("`" + path), std::string::npos) << "docs/kelvo.md does not name " << path;
    std::set<std::string_view> names = {"--help", "-h", "--version"};
    for (const Parameter& option : CommonOptions()) names.insert(option.Name);
    bool isLast = false;
    for (const Parameter& parameter : verb->Parameters) {
      EXPECT_TRUE(names.insert(parameter.Name).second) << path << " " << parameter.Name;
      EXPECT_FALSE(parameter.Help.empty() || parameter.Help.ends_with('.')) << path << " " << parameter.Name;
      if (parameter.IsOption()) continue;
      EXPECT_FALSE(isLast) << path << ": nobody can tell where " << parameter.Name << " begins";
      isLast = parameter.Number != Parameter::One;
    }
  }
}

TEST(ToolTable, HasRowsThatCanBeCalled) {
  for (const Verb* verb : AllVerbs()) {
    std::vector<std::string> words;
    std::istringstream path{std::string(verb->Path)};
    for (std::string word; path >> word;) words.push_back(word);
    const std::ptrdiff_t behind = std::ssize(words);
    for (const Parameter& parameter : verb->Parameters) {
      if (!parameter.IsOption()) words.push_back("a" + std::string(parameter.Name));
    }
    for (const Parameter& parameter : verb->Parameters) {
      if (!parameter.IsOption()) continue;
      words.insert(words.begin() + behind, std::string(parameter.Name));
      if (!parameter.Value.empty()) words.insert(words.begin() + behind + 1, "b");
    }
    const auto line = ParseCommandLine(words);
    ASSERT_TRUE(line) << verb->Path;
    EXPECT_EQ(line->Called, verb) << verb->Path;
    for (const Parameter& parameter : verb->Parameters) {
      ASSERT_TRUE(line->Given.Has(parameter.Name)) << verb->Path << " " << parameter.Name;
      const std::string wanted =
          parameter.IsOption() ? (parameter.Value.empty() ? "" : "b") : "a" + std::string(parameter.Name);
      EXPECT_EQ(line->Given.Text(parameter.Name), wanted) << verb->Path;
    }
  }
}

TEST(ToolTable, HasTheExitCodesOfTheirPage) {
  std::string rows;
  for (const auto& [code, word, when] : ExitCodes)
    rows += "| " + std::to_string(static_cast<int>(code)) + " | " + std::string(when) + " |\n";
  EXPECT_NE(Page("exit-codes.md").find("|---|---|\n" + rows + "\n"), std::string::npos) << rows;
}

TEST(ToolOutput, HasNothingThatATerminalObeys) {
  struct Row {
    std::string_view Text, Clean, Json;
  };
  const Row rows[] = {
      {"plate \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.bin", "plate \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.bin",
       "\"plate \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.bin\""},
      {"a\033[31m\r\n\x7F", "a[31m", "\"a\\u001b[31m\\r\\n\\u007f\""},
      {"a\xC2\x9B z\xD8\x9C", "a z", "\"a\\u009b z\\u061c\""},
      {"\xE2\x80\xAEnib\xE2\x81\xA6\xE2\x80\x8F\xE2\x80\xA8", "nib", "\"\\u202enib\\u2066\\u200f\\u2028\""},
      // What is left out does not make such a character of what stands around it.
      {"\xE2\x01\x80\xAE", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD",
       "\"\xEF\xBF\xBD\\u0001\xEF\xBF\xBD\xEF\xBF\xBD\""},
      {"\x9B\xC1\x9B\xE0\x82\x9B\xED\xA0\x80", "\xEF\xBF\xBD", ""},  // no characters, or written too long
  };
  for (const auto& [text, clean, json] : rows) {
    std::string shown = Clean(text);
    if (json.empty()) {
      while (shown.ends_with("\xEF\xBF\xBD\xEF\xBF\xBD")) shown.resize(shown.size() - 3);
    } else {
      EXPECT_EQ(Escaped(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)), json);
    }
    EXPECT_EQ(shown, clean);
  }
  EXPECT_EQ(Escaped("[\n  1\n]"), "[\n  1\n]");
}

TEST(ToolBar, TellsTheTimeLeft) {
  TimeLeft known(10.0);
  EXPECT_EQ(known.At(4, 0.1), 6);
  EXPECT_FALSE(known.At(11, 0.9));
  TimeLeft reckoned;
  EXPECT_FALSE(reckoned.At(0.5, 0.1)) << "too early";
  EXPECT_FALSE(reckoned.At(2, 0));
  EXPECT_EQ(reckoned.At(2.5, 0.25), 7.5);
  EXPECT_EQ(reckoned.At(2.9, 0.3), 7.5) << "too soon after the one before";
  EXPECT_NEAR(*reckoned.At(4, 0.4), 6, 1e-9) << "as it was reckoned";
  // A stall is believed by and by.
  const double soon = *reckoned.At(5, 0.4), late = *reckoned.At(50, 0.4);
  EXPECT_GT(soon, 5.1);
  EXPECT_LT(soon, 6);
  EXPECT_NEAR(late, 75, 1);
}

}  // namespace
}  // namespace VELTRO::KELVO::Tool
