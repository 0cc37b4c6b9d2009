// The command-line tool: finds cards, keeps their settings, runs jobs on them.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "CommandLine.h"
#include "Completion.h"
#include "Manual.h"
#include "Session.h"

using namespace VELTRO::KELVO::Tool;

namespace {

std::string Chosen(const Arguments& given, const char* option, const char* variable) {
  if (given.Has(option)) return given.Text(option);
  const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nobody else runs yet
  return value == nullptr ? "" : value;
}

int Fail(const Failure& failure) {
  const std::string text = Clean(failure.what());
  std::fprintf(stderr, "kelvo: %s%s%s\n", text.c_str(), failure.Hint.empty() ? "" : " ",
               Clean(failure.Hint).c_str());
  return static_cast<int>(failure.Code);
}

int Run(const std::vector<std::string>& words) {
  // These are nobody's verbs: shells ask the one, the build the other.
  if (!words.empty() && words[0] == "__complete") return Complete({words.begin() + 1, words.end()});
  if (!words.empty() && words[0] == "__manual") return PrintManual();
  try {
    const auto line = ParseCommandLine(words);
    if (!line) return 0;
    const Arguments& given = line->Given;
    // A card that is named beats a serial number from the environment.
    CardChoice choice{Chosen(given, "--card", "KELVO_CARD"), Chosen(given, "--serial", "KELVO_SERIAL"),
                      given.Text("--timeout")};
    if (given.Has("--serial") && !given.Has("--card")) choice.Card.clear();
    Session session(Output(given.Has("--json"), given.Has("--quiet")), std::move(choice));
    return static_cast<int>(line->Called->Run(session, given));
  } catch (const Failure& failure) {
    return Fail(failure);
  } catch (const std::exception& error) {
    return Fail(Refused(error.what()));
  }
}

}  // namespace

int main(int count, char** words) {
  signal(SIGPIPE, SIG_DFL);  // "kelvo ... | head" ends quietly
  const int code = Run({words + 1, words + count});
  // What could not be written is not done.
  if (std::fflush(stdout) != 0 && code == 0) return Fail(Refused("Standard output cannot be written."));
  return code;
}
