// The command-line tool, driven as a user does, against a virtual card in a process of its own: exit codes, what it says,
// and what is on the card afterwards.
#include "tool/ToolShell.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(Tool, RefusesWhatItCannotRead) {
  const ToolShell shell;
  const Row rows[] = {
      {"kelvo lits run", 2, "kelvo: There is no verb 'lits run'. Did you mean 'list run'?"},
      {"kelvo list rnu x", 2, "Did you mean 'list run'?"},
      {"kelvo dance", 2, "'kelvo --help' lists the verbs."},
      {"kelvo list put 7", 2, "FILE is required"},
      {"kelvo list put x y", 2, "ID takes a whole number from -2147483648 to 2147483647, not 'x'."},
      {"kelvo info --timeout 5", 2, "--timeout takes a time like 500ms or 2s, not '5'."},
      {"kelvo info --card x:99999", 2, "The port of --card takes a whole number from 1 to 65535"},
      {"KELVO_CARD= kelvo info", 2, "No card is named. Name it by --card"},
      {"kelvo info --card 127.0.0.1:1", 3, "Error: Cannot open connection to 127.0.0.1/1."},
      {"kelvo config get lasr.FpsStart", 2, "There is no area 'lasr'. Did you mean 'laser'?"},
      {"kelvo config get laser.FpsStrat", 2, "There is no field 'laser.FpsStrat'. Did you mean 'FpsStart'?"},
      {"kelvo config get scanner.Heads[1]", 2, "It has 1 elements, counted from 0."},
      {"kelvo config get laser..x", 2, "'laser..x' is no field."},
      {"kelvo config set laser.FpsPolarity=ActiveLo", 2, "Did you mean 'ActiveLow'?"},
      {"kelvo config set laser.FpsStart=fast", 2, "laser.FpsStart takes a number, not fast."},
      {"kelvo config set laser.SimmerPower=65536", 2, "laser.SimmerPower takes a whole number of its range"},
      {"kelvo config set laser", 2, "'laser' is no FIELD=VALUE."},
      {"kelvo config import none.json", 1, "Cannot open 'none.json': No such file or directory."},
      {"echo [] >x; kelvo config import x", 1, "'x' holds no settings"},
      {"echo { >x; kelvo config import x", 1, "'x' is no JSON: "},
      {"echo \"{\\\"laser\\\": {\\\"Fps\\\": 1}}\" >x; kelvo config import x", 2,
       "There is no field 'laser.Fps'."},
      {"kelvo list run none.txt", 1, "Cannot open 'none.txt'"},
      {"echo abc >x; kelvo list put 1 x", 1, "x:1:1: Unable to parse command."},
      {"kelvo list get 99", 1, "There is no list 99 on the card."},
      {"kelvo files put x JOBFILE/x", 2, "There is no directory 'JOBFILE'. Did you mean 'JOBFILES'?"},
      {"kelvo files put none JOBFILES/x", 1, "Cannot open 'none': No such file or directory."},
      {"kelvo files get x", 2, "One is written like JOBFILES/plate.bin."},
      {"kelvo files get JOBFILES/none", 1, "There is no file 'none'."},
      {"kelvo clock set noon", 2, "TIME takes 'YYYY-MM-DD HH:MM:SS' in UTC, not 'noon'."},
      {"kelvo laser arm </dev/null", 1, "--yes says it without a terminal."},
      {"kelvo laser pilot maybe", 2, "STATE takes on or off, not 'maybe'."},
      {"kelvo call Dance", 1, "Unknown method 'Dance'."},
      {"kelvo call GetListStatus x", 2, "'x' is no JSON value."},
      {"kelvo call GetListStatus '{\"base64\": \"A\"}'", 1, "A text in base64 is none."},
      {"kelvo discover --ping x", 2, "--ping takes a whole number"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, KeepsSettings) {
  const ToolShell shell;
  const Row rows[] = {
      {"kelvo config defaults laser", 0, "laser.FpsPolarity                ActiveHigh\n"},
      {"kelvo config set laser.FpsPolarity=ActiveLow laser.FpsStart=2.5", 0},
      {"kelvo config get laser.FpsPolarity", 0, "ActiveLow\n"},
      {"kelvo config set scanner.FieldSize=[90,80,70] system.TimeZone=Asia/Kolkata", 0},
      {"kelvo config get scanner.FieldSize system.TimeZone", 0,
       "scanner.FieldSize  [90.0,80.0,70.0]\nsystem.TimeZone    Asia/Kolkata\n"},
      {"kelvo config get scanner.FieldSize[1] --json", 0, "{\n  \"scanner.FieldSize[1]\": 80.0\n}\n"},
      {"kelvo config diff --defaults laser", 4,
       "laser.FpsPolarity  ActiveLow  ActiveHigh\nlaser.FpsStart     2.5        0.0\n"},
      {"script -qec '" TOOL_PROGRAM " config diff --defaults laser' /dev/null", 4,
       "  \33[31mActiveLow\33[m  \33[32mActiveHigh\33[m\r\n"},
      {"for no in 'NO_COLOR=1 $0' '$0 --quiet' '$0 | cat'; do script -qc \"${no/\\$0/" TOOL_PROGRAM
       " config diff --defaults laser}\" /dev/null; done | grep -c $'\\33'; true",
       0, "0\n"},
      {"kelvo config diff --defaults process", 0},
      {"kelvo config export -o all.json && kelvo config diff all.json", 0},
      {"kelvo config set laser.FpsStart=3 && kelvo config diff all.json --json", 4,
       "\"field\": \"laser.FpsStart\",\n    \"card\": 3.0,\n    \"other\": 2.5\n"},
      {"kelvo config import all.json && kelvo config get laser.FpsStart", 0, "2.5\n"},
      {"kelvo config store laser && kelvo config set laser.FpsStart=4 && kelvo config load laser && kelvo "
       "config get laser.FpsStart",
       0, "2.5\n"},
      // A zone that the card refuses, behind a change that it takes: nothing is changed.
      {"kelvo config set laser.FpsStart=9 system.TimeZone=Nowhere", 1, "There is no time zone 'Nowhere'."},
      {"kelvo config get laser.FpsStart", 0, "2.5\n"},
      {"kelvo call BeginUpdate; kelvo config set laser.FpsStart=9", 1, "'kelvo config abort' gives it up."},
      {"kelvo config abort && kelvo config set laser.FpsStart=9 && kelvo config get laser.FpsStart", 0,
       "9.0\n"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, RunsLists) {
  const ToolShell shell;
  const Row rows[] = {
      {"kelvo list run " EXAMPLES_DATA "/rosette.txt", 0, "List 1 done: 424 vectors in 2.674 s.\n"},
      {"kelvo list put 7 " EXAMPLES_DATA "/rosette.txt && kelvo list ls", 0, "1\n7\n"},
      {"kelvo list get 7 -o job.txt && kelvo list put 8 job.txt && kelvo list get 8 | cmp - job.txt", 0},
      {"kelvo list status 7 && kelvo list caret 7", 0, "ready\n-1\n"},
      {"kelvo list delete 7 && kelvo list status 7", 0, "no such list\n"},
      {"echo '{ JA, P2D[1 2] } # here' | kelvo list run - --id 3 --repeat 2 --json", 0,
       "\"list\": 3,\n    \"file\": \"-\",\n    \"macroVectors\": 1,"},
      {"echo '{ LOB }' | kelvo list run -", 1, "List 1, command 0 (LOB): "},
      {"kelvo --json list ls", 0, "[\n  1,\n  3,\n  8\n]\n"},
      {"kelvo call GetListStatus 3", 0, "1\n"},
      {"kelvo call GetList 3", 0, "[-1,[272,{\"base64\":\"AQAAEWs"},
      {"kelvo call DeleteList 3 true && kelvo call GetStoredListIDs", 0, "[1,8]\n"},
      {"kelvo call SetSpeedScale 2.0 && kelvo call GetSpeedScale", 0, "2.0\n"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, MovesFiles) {
  const ToolShell shell;
  const Row rows[] = {
      {"seq 9999 >local && kelvo files put local JOBFILES/plate.bin && kelvo files ls", 0,
       "JOBFILES/plate.bin\n"},
      {"kelvo files get JOBFILES/plate.bin && cmp local plate.bin", 0},
      {"kelvo files get JOBFILES/plate.bin -o other && cmp local other", 0},
      {"kelvo files ls LISTFILES --json", 0, "{\n  \"LISTFILES\": []\n}\n"},
      {"kelvo files rm JOBFILES/plate.bin && kelvo files ls JOBFILES --json", 0, "\"JOBFILES\": []"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, TellsWhatTheCardIs) {
  const ToolShell shell({"--serial", "47\033[31m11", "--firmware",
                         "1.\xE2\x80\xAE"
                         "2"});
  const Row rows[] = {
      {"kelvo info", 0, "serial           47[31m11\nproduct          1.2\n"},
      {"kelvo info --json", 0, "\"serial\": \"47\\u001b[31m11\",\n  \"product\": \"1.\\u202e2\""},
      {"kelvo clock set '2031-02-03 04:05:00' && kelvo clock show", 0, "utc    2031-02-03 04:05:"},
      {"kelvo laser arm --yes && kelvo laser status", 0, "pilot  no\narmed  yes\nalarm  no\n"},
      {"kelvo laser disarm && kelvo laser pilot on --yes && kelvo laser status --json", 0,
       "\"pilot\": true,\n  \"armed\": false"},
      {"kelvo predict 12345", 0, "internal, IPv4  169.254.192.230\n"},
      {"kelvo --version", 0, "kelvo 3."},
      {"kelvo list --help", 0, "Upload lists and run them"},
      {"kelvo config show | head -1", 0, "laser.FpsPolarity"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, SetsPinsAndVariables) {
  const ToolShell shell({"--wire", "1.3=2.0"});
  const Row rows[] = {
      {"kelvo config set 'gpio.Ports[1].PinNames=[\"lamp\"]' && kelvo io set lamp=1 1.3=1", 0},
      {"kelvo io get lamp 1.1 2.0", 0, "lamp 1\n1.1 0\n2.0 1\n"},
      {"kelvo io get lamp", 0, "1\n"},
      {"kelvo io ls", 0, "1     output     0x00000009        lamp=1\n"},
      {"kelvo io get lmap", 2, "There is no pin 'lmap'. Did you mean 'lamp'?"},
      {"kelvo io set lamp=2", 2, "'lamp=2' is no PIN=0 or PIN=1."},
      {"kelvo io set 0.0=1", 1, "Port 0 is an input."},
      {"kelvo variable set serial=7 && kelvo variable set done=true && kelvo variable get serial", 0, "7\n"},
      {"kelvo variable get done --boolean", 0, "true\n"},
      {"kelvo variable ls", 0, "  serial\n"},
      {"kelvo serial send abc && kelvo serial receive", 0, "abc"},
      {"kelvo serial receive --wait 10ms --port 0", 0, ""},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, CtrlCAbortsARunAndLeavesTheCardIdle) {
  const ToolShell shell({"--speed", "1"});
  const auto [code, output, error] = shell.Run(
      "echo '{ SL, F64[ 60e6 ] }' >long; " TOOL_PROGRAM
      " list run long & tool=$!; until [ $(kelvo call IsExecutionInProgress) = true ] || ! kill -0 $tool; do "
      "sleep 0.02; done; kill -INT $tool; wait $tool; code=$?; kelvo call IsExecutionInProgress; exit $code");
  EXPECT_EQ(code, 130) << error;
  EXPECT_EQ(output, "false\n");
  EXPECT_NE(error.find("The card is idle.\n"), std::string::npos) << error;
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
