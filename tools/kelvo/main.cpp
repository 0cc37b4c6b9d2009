// The command-line tool: finds cards, keeps their settings, runs jobs on them.
#include <fcntl.h>
#include <unistd.h>

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

std::vector<std::string> InEnvironment(const char* variable) {
  const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nobody else runs yet
  return value == nullptr || *value == 0 ? std::vector<std::string>() : std::vector<std::string>{value};
}

CardChoice Chosen(const Arguments& given) {
  CardChoice choice{given.All("--card"), given.All("--serial"), given.Text("--timeout"), given.Text("--log")};
  const bool isNamed = !choice.Cards.empty() || !choice.Serials.empty();
  if (!isNamed) choice.Cards = InEnvironment("KELVO_CARD");
  if (!isNamed && choice.Cards.empty()) choice.Serials = InEnvironment("KELVO_SERIAL");
  return choice;
}

int Fail(const Failure& failure) {
  std::fprintf(stderr, "kelvo: %s\n", Clean(failure.Told()).c_str());
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
    Session session(Output(given.Has("--json"), given.Has("--quiet")), Chosen(given));
    return static_cast<int>(line->Called->Run(session, given));
  } catch (const Failure& failure) {
    return Fail(failure);
  } catch (const std::exception& error) {
    return Fail(Refused(error.what()));
  }
}

// A connection must not get the number of a stream that whoever started the program has closed: what is said to the
// user would go to the card.
void OpenStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", O_RDWR);
  }
}

}  // namespace

int main(int count, char** words) {
  OpenStandardStreams();
  signal(SIGPIPE, SIG_DFL);  // "kelvo ... | head" ends quietly
  const int code = Run({words + 1, words + count});
  // What could not be written is not done.
  if (std::fflush(stdout) != 0 && code == 0) return Fail(Refused("Standard output cannot be written."));
  return code;
}
