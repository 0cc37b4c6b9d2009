// The example programs as a user runs them, on a virtual card in another process: what they print and how they end.
#include "int/CardProcess.h"

namespace VELTRO::KELVO::Test {
namespace {

// A shell command among the example programs and their data ends with that code and writes, among other things, that.
void ExpectExample(const std::string& command, int code, const std::string& text) {
  const auto [exitCode, output] = Shell("cd " EXAMPLES_DATA "; PATH=" EXAMPLES_PROGRAMS ":$PATH; " + command);
  EXPECT_EQ(exitCode, code) << command << "\n" << output;
  EXPECT_THAT(output, HasSubstr(text)) << command;
}

TEST(Examples, SayWhatTheyDidOrWhyNot) {
  // At this speed a wait for a part to come or go takes no time.
  const CardProcess card({"--speed", "max"});
  const CardProcess starCard({"--speed", "max", "--input", "1=4"});
  const CardProcess oddCard({"--speed", "max", "--input", "1=6"});
  const auto on = [](const CardProcess& c) { return " 127.0.0.1 " + std::to_string(c.GetPort()); };
  const std::string here = on(card);
  const std::tuple<std::string, int, std::string> rows[] = {
      {"mark_nameplate" + here, 0, "progress 100 %\n"},
      {"mark_square" + here, 0, "progress 25 %\nprogress 50 %\nprogress 75 %\nprogress 100 %\n"},
      {"mark_square 127.0.0.1 1", 1, "Error: Cannot open connection to 127.0.0.1/1.\n"},
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
      {"print_configuration" + here, 0,
       "Scanner\n  FieldSize={ X=65536, Y=65536, Z=1 }\n  MaxMagnification=1\n"},
      {"select_correction optics.json 1 3" + here + " 2>/dev/null", 0, "  \"Hash\": \"dcc02e9511dfd38f\""},
      {"select_correction missing.kc7 1 3" + here, 1, "vlHeadCorrectionSet failed:\n  Unexpected filesize\n"},
      {"d=$(mktemp -d); backup_files save $d" + here + "; backup_files restore $d" + on(starCard) +
           "; backup_files save $d/again" + on(starCard) +
           "; cmp optics.json $d/again/CORRFILES/head7Correction.kc7; rm -r $d",
       0, "1 files\n"},
      {"backup_files restore /no/such" + here, 1, "/no/such/BINFILES: No such file or directory\n"},
  };
  for (const auto& [command, code, expected] : rows) ExpectExample(command, code, expected);
}

TEST(Examples, SayThatNoCardIsThere) {
  for (const char* command :
       {"mark_nameplate", "build_font", "list_from_text rosette.txt", "branch_on_input", "list_of_lists",
        "print_configuration", "backup_files save /tmp/never", "select_correction optics.json 0 0"}) {
    ExpectExample(command + std::string(" 127.0.0.1 1"), 1,
                  "vlConnect failed:\n  Error: Cannot open connection to 127.0.0.1/1.");
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
