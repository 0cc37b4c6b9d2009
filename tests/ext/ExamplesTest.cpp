// The example programs as a user runs them, on a virtual card in another process: what they print and how they end.
#include <tuple>

#include "int/CardProcess.h"

namespace VELTRO::KELVO::Test {
namespace {

// Runs a shell command among the example programs and their data. Its exit code and what it wrote.
std::pair<int, std::string> RunExample(const std::string& command) {
  const std::string where = "exec 2>&1; cd " EXAMPLES_DATA "; PATH=" EXAMPLES_PROGRAMS ":$PATH; ";
  std::string output;
  std::FILE* const pipe = popen((where + command).c_str(), "r");
  for (int next; (next = fgetc(pipe)) != EOF;) output += static_cast<char>(next);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST(Examples, SayWhatTheyDidOrWhyNot) {
  // At this speed a wait for a part to come or go takes no time.
  const CardProcess card({"--speed", "max"});
  const CardProcess starCard({"--speed", "max", "--input", "1=4"});
  const CardProcess oddCard({"--speed", "max", "--input", "1=6"});
  const auto on = [](const CardProcess& c) { return " 127.0.0.1 " + std::to_string(c.GetPort()); };
  const std::string here = on(card);
  const std::string nowhere = " 127.0.0.1 1";
  const std::string refused = "vlConnect failed:\n  Error: Cannot open connection to 127.0.0.1/1.";
  // clang-format off
  const std::tuple<std::string, int, std::string> rows[] = {
      {"mark_nameplate" + here, 0, "progress 100 %\n"},
      {"build_font --text Text --text '' --text '{~}'" + here, 0, "marked: Text\nmarked: \nmarked: {~}\n"},
      {"list_from_text rosette.txt" + here, 0, "The list on the card is the same.\n"},
      {"list_from_text -" + here + " <rosette.txt", 0, "The list on the card is the same.\n"},
      {"echo '{ MA, P2D[ 1 ] }' | list_from_text -" + here, 1, "vlListAllocateFromString failed:\n  "},
      {"echo '{ LOB }' | list_from_text -" + here, 1, "The card reports:\n"},
      {"list_from_text missing.txt" + here, 2, "missing.txt: No such file"},
      {"branch_on_input" + here, 0, "part 7: waiting\npart 7: nobody came\n"},
      {"branch_on_input" + on(starCard), 0, "part 7: waiting\npart 7: star\n"},
      {"branch_on_input" + on(oddCard), 0, "part 7: waiting\npart 7: of no known kind\n"},
      {"list_of_lists" + here, 0, "list 6: 3 commands\nmarked a dial\n"},
      {"print_configuration" + here, 0, "Scanner\n  FieldSize={ X=65536, Y=65536, Z=1 }\n  MaxMagnification=1\n"},
      {"mark_nameplate" + nowhere, 1, refused},
      {"build_font" + nowhere, 1, refused},
      {"list_from_text rosette.txt" + nowhere, 1, refused},
      {"branch_on_input" + nowhere, 1, refused},
      {"list_of_lists" + nowhere, 1, refused},
      {"print_configuration" + nowhere, 1, refused},
  };
  // clang-format on
  for (const auto& [command, code, expected] : rows) {
    const auto [exitCode, output] = RunExample(command);
    EXPECT_EQ(exitCode, code) << command << "\n" << output;
    EXPECT_NE(output.find(expected), std::string::npos) << command << "\n" << output;
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
