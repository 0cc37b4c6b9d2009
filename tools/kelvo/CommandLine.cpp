#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

#include "SoundsLike.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr const char* Description =
    "Commissions KELVO controller cards, runs jobs on them and keeps their settings.";
std::string Footer() {
  std::string text;
  for (const auto& [code, word, when] : ExitCodes) {
    text += (text.empty() ? "Exit codes: " : ", ") + std::to_string(static_cast<int>(code)) + " " +
            std::string(word);
  }
  return text + ".";
}

void Add(CLI::App& app, const Parameter& parameter, Arguments& given) {
  const auto take = [&given, name = parameter.Name](const CLI::results_t& results) {
    given.Add(name, results);
    return true;
  };
  const std::string name(parameter.Name), help(parameter.Help);
  if (parameter.IsOption() && parameter.Value.empty()) {
    app.add_flag_callback(
        name, [&given, flag = parameter.Name] { given.Add(flag, {}); }, help);
    return;
  }
  CLI::Option* const option = app.add_option(name, take, help);
  if (parameter.IsOption()) {
    const bool isRepeated = parameter.Number == Parameter::Any;
    option->type_name(std::string(parameter.Value))->type_size(1)->expected(1, isRepeated ? -1 : 1);
    option->allow_extra_args(false);
    return;
  }
  option->type_name("")->type_size(1);
  const bool isMany = parameter.IsMany();
  const bool isNeeded = parameter.Number == Parameter::One || parameter.Number == Parameter::AtLeastOne;
  option->expected(1, isMany ? -1 : 1)->allow_extra_args(isMany)->required(isNeeded);
}

// The words ahead of the first option.
std::string VerbOf(const std::vector<std::string>& words) {
  std::string path;
  for (const std::string& word : words) {
    if (word.starts_with('-')) break;
    path += path.empty() ? word : " " + word;
  }
  return path;
}

// For words that begin with no verb.
void CheckVerb(const std::vector<std::string>& words) {
  const std::string given = VerbOf(words);
  std::vector<std::string> paths;
  for (const Verb* verb : AllVerbs()) paths.emplace_back(verb->Path);
  const auto isKnown = [&](const std::string& path) {
    return (given + " ").starts_with(path + " ") || path.starts_with(given + " ") || given.empty() ||
           path == given;
  };
  if (std::ranges::any_of(paths, isKnown)) return;
  const std::size_t second = given.find(' ');
  const std::string tried =
      given.substr(0, given.find(' ', second == std::string::npos ? second : second + 1));
  std::string hint = DidYouMean(tried, paths);
  if (hint.empty()) hint = DidYouMean(given.substr(0, second), paths);
  throw WrongUsage("There is no verb '" + tried + "'.",
                   hint.empty() ? "'kelvo --help' lists the verbs." : hint);
}

}  // namespace

std::optional<CommandLine> ParseCommandLine(const std::vector<std::string>& words) {
  CommandLine line{nullptr, {}};
  CLI::App app(Description, "kelvo");
  app.footer(Footer());
  app.require_subcommand(1);
  app.fallthrough();
  app.set_version_flag("--version", "kelvo " KELVO_VERSION);
  for (const Parameter& option : CommonOptions()) Add(app, option, line.Given);
  std::map<std::string, CLI::App*> groups;
  std::map<const CLI::App*, const Verb*> verbs;
  for (const Verb* verb : AllVerbs()) {
    const std::string path(verb->Path);
    const std::size_t blank = path.find(' ');
    CLI::App* parent = &app;
    if (blank != std::string::npos) {
      const std::string name = path.substr(0, blank);
      CLI::App*& group = groups[name];
      if (group == nullptr) {
        group = app.add_subcommand(name, "Verbs: 'kelvo " + name + " --help'");
        group->require_subcommand(1)->fallthrough();
      }
      parent = group;
    }
    CLI::App* const own = parent->add_subcommand(path.substr(blank == std::string::npos ? 0 : blank + 1),
                                                 std::string(verb->Help));
    own->fallthrough(!verb->TakesRest);
    verbs[own] = verb;
    for (const Parameter& parameter : verb->Parameters) {
      if (!verb->TakesRest || &parameter != &verb->Parameters.back()) Add(*own, parameter, line.Given);
    }
    if (verb->TakesRest) own->prefix_command();
  }
  CheckVerb(words);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::Success& help) {
    app.exit(help);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw WrongUsage(
        error.what(),
        "'kelvo " + VerbOf({words.begin(), words.begin() + std::min<std::ptrdiff_t>(2, std::ssize(words))}) +
            " --help' tells what there is.");
  }
  for (const auto& [own, verb] : verbs) {
    if (!own->parsed()) continue;
    line.Called = verb;
    if (verb->TakesRest) line.Given.Add(verb->Parameters.back().Name, own->remaining());
  }
  return line;
}

}  // namespace VELTRO::KELVO::Tool
