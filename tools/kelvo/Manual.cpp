#include "Manual.h"

#include <cstdio>
#include <string>

#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

// As it is read, whatever characters man takes for its own.
std::string Literal(std::string_view text) {
  std::string literal = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text) {
    if (c == '\\') {
      literal += "\\e";
    } else if (c == '-') {
      literal += "\\-";
    } else {
      literal += c;
    }
  }
  return literal;
}

std::string Bold(std::string_view text) {
  return "\\fB" + Literal(text) + "\\fR";
}
std::string Italic(std::string_view text) {
  return "\\fI" + Literal(text) + "\\fR";
}

void Put(const std::string& line) {
  std::puts(line.c_str());
}

std::string Told(const Parameter& parameter) {
  if (!parameter.IsOption()) return Italic(parameter.Name);
  return Bold(parameter.Name) + (parameter.Value.empty() ? "" : " " + Italic(parameter.Value));
}

// "kelvo list get ID [-o FILE]"
std::string Usage(const Verb& verb) {
  std::string text = Bold(verb.Path);
  for (const Parameter& parameter : verb.Parameters) {
    std::string one = Told(parameter) + (parameter.IsMany() ? "..." : "");
    const bool isNeeded = !parameter.IsOption() &&
                          (parameter.Number == Parameter::One || parameter.Number == Parameter::AtLeastOne);
    text += isNeeded ? " " + one : " [" + one + "]";
  }
  return text;
}

void PutParameters(std::span<const Parameter> parameters) {
  for (const Parameter& parameter : parameters) {
    Put(".TP\n" + Told(parameter));
    Put(Literal(parameter.Help) + ".");
  }
}

}  // namespace

int PrintManual() {
  Put(".TH KELVO 1 \"\" \"kelvo " KELVO_VERSION "\" \"User Commands\"");
  Put(".SH NAME\nkelvo \\- commission controller cards, run jobs on them and keep their settings");
  Put(".SH SYNOPSIS\n" + Bold("kelvo") + " [" + Italic("OPTION") + "]... " + Italic("VERB") + " [" +
      Italic("ARGUMENT") + "]...");
  Put(".SH OPTIONS\nEvery verb takes these.");
  PutParameters(CommonOptions());
  Put(".TP\n" + Bold("--version") + "\nPrint the version.");
  Put(".TP\n" + Bold("--help") + "\nTell what there is; behind a verb, what that takes.");
  Put(".SH VERBS");
  for (const Verb* verb : AllVerbs()) {
    Put(".SS \"" + Usage(*verb) + "\"");
    Put(Literal(verb->Help) + ".");
    PutParameters(verb->Parameters);
  }
  Put(".SH EXIT STATUS");
  for (const auto& [code, word, when] : ExitCodes)
    Put(".TP\n" + Bold(std::to_string(static_cast<int>(code))) + "\n" + Literal(when) + ".");
  Put(".SH ENVIRONMENT");
  Put(".TP\n" + Bold("KELVO_CARD") + "\nThe card, where " + Bold("--card") + " names none.");
  Put(".TP\n" + Bold("KELVO_SERIAL") + "\nThe card's serial number, where nothing else names a card.");
  Put(".TP\n" + Bold("NO_COLOR") + "\nIf it is set and not empty, nothing is coloured.");
  Put(".SH EXAMPLES\n.EX");
  for (const char* const line :
       {"kelvo discover", "kelvo --card 192.168.1.7 info", "kelvo config set laser.FpsPolarity=ActiveLow",
        "kelvo list run job.txt --repeat 3"}) {
    Put(Literal(line));
  }
  Put(".EE");
  return std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace VELTRO::KELVO::Tool
