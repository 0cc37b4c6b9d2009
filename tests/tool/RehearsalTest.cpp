// list check and list preview: what they find in a list and say of its run, without a card.
#include "tool/ToolShell.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(ToolCheck, TellsEachFaultAndItsPlace) {
  SKIP_UNDER_THREAD_SANITIZER();
  const ToolShell shell;
  // The text of a list, as printf has it, and what is printed; empty when there is no fault.
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"[ { JA, P2D[ 1 2 ] } ]", "", ""},
      {"# only { a comment\\n[ ]", "", ""},
      {"", "", "l:1:1: There is no command.\n  \n  ^\n"},
      {"{ JA, P2D[ 1 2 ] }\\n  { JA, P2D[ 1 ] }\\n{ XX }\\n{ JA, P2D[ 1 2 ]", "",
       "l:2:16: Unable to parse Point.\n    { JA, P2D[ 1 ] }\n                 ^\n"
       "l:3:3: Unable to parse command code.\n  { XX }\n    ^\n"
       "l:4:17: Unable to parse command.\n  { JA, P2D[ 1 2 ]\n                  ^\n"},
      {"[ { LOF } # }\\n ; { LON }", "", "l:2:2: Unable to parse command.\n   ; { LON }\n   ^\n"},
      {"[ { LOF }", "", "l:1:10: The list has no end, ].\n"},
      {"[ { LOF } ] x", "", "l:1:13: Unable to parse command.\n"},
      {"{ LOF }\\n\\xe4\\xf6", "",
       "l:2:1: Unable to parse command. The byte 0xE4 has no place there.\n  ??\n  ^\n"},
      {"{ LOS, I32[2], I32[1] } { LOE, I32[2] } { LOE, I32[1] }", "",
       "l:1:25: It ends loop depth 2, but depth 1 is open here.\n"},
      {"{ LOE, I32[1] } { LOB } { LOS, I32[2], I32[1] }", "", "l:1:25: The loop has no end.\n"},
      {"{ BA, I32[3] }\\n{ LOF }\\n{ LON } { BR, I32[-9] }", "",
       "l:3:9: There is no command -6 to branch to.\n"},
      {"{ BA, I32[3] }\\n{ LOF }\\n{ LON }\\n{ LOF }", "",
       "l:2:1: The commands 1 to 2 are never reached.\n  { LOF }\n  ^\n"},
      {"{ LOS, I32[0], I32[1] } { LON } { LOE, I32[1] }", "",
       "l:1:25: The commands 1 to 2 are never reached.\n"},
      {"{ LOS, I32[2], I32[1] } { LOB } { LOF } { LOE, I32[1] } { LON }", "",
       "l:1:33: The commands 2 to 3 are never reached.\n"},
      {"{ JA, P2D[ 4 0 ] }\\n{ MR, P2D[ 2 0 ] }\\n{ JA, P2D[ 0 -6 ] }", "--field 10x12",
       "l:2:1: It leads out of the field, to X=6 Y=0.\n  { MR, P2D[ 2 0 ] }\n  ^\n"},
      {"{ MS, F64[ -1 ] }", "", "l:1:1: List 1, command 0 (MS): The speed must be positive and finite.\n"},
      {"{ CL, I32[ 7 ] }", "", "command 0 (CL): There is no list 7 here.\n"},
      {"{ CL, I32[ 7 ] }", "--with 7=l", "command 0 (CL): More than 64 calls are open.\n"},
      {"{ WI, U32[1], I32[2], Bool[True], Bool[True], U32[1], I32[-1] }", "",
       "It waits for what does not come.\n"},
      {"{ WI, U32[1], I32[2], Bool[True], Bool[True], U32[1], I32[-1] }", "--input 2=1", ""},
      {"{ WS, I32[-1] } { MA, P2D[ 1 1 ] } { BA, I32[0] }", "", ""},
      {"{ NO } { BA, I32[0] }", "", "The run does not come to an end.\n"},
      {"{ SL, F64[ 1e12 ] }", "", "The run has reached the execution limit of 86400000 ms.\n"},
  };
  for (const auto& [text, options, expected] : cases) {
    SCOPED_TRACE(text);
    const auto [code, output, error] =
        shell.Run(std::string("printf \"") + text + "\" >l; kelvo list check l " + options);
    EXPECT_EQ(code, *expected == '\0' ? 0 : 4) << output << error;
    const bool isWhole = std::string_view(expected).find('^') != std::string_view::npos || *expected == '\0';
    EXPECT_TRUE(isWhole ? output == expected : output.find(expected) != std::string::npos) << output;
  }
}

TEST(ToolCheck, KnowsWhereABranchMayLead) {
  const ToolShell shell;
  const std::string input = ", U32[1], I32[2], Bool[True], Bool[True], U32[1] }",
                    flag = ", U32[1], Bool[True] }";
  const std::tuple<const char*, std::string, bool> cases[] = {
      {"BAC", input, false},  {"BRC", input, true},           {"BACF", flag, false},
      {"BRCF", flag, true},   {"CASGA", ", I32[1] }", false}, {"CASGR", ", I32[1] }", true},
      {"DEFGA", " }", false}, {"DEFGR", " }", true},
  };
  for (const auto& [name, rest, isRelative] : cases) {
    // The last of five commands is reached by the branch alone, which is the third.
    const auto check = [&, &name = name, &rest = rest](int number) {
      const std::string branch = std::string("{ ") + name + ", I32[" + std::to_string(number) + "]" + rest;
      return shell.Run("printf \"{ LON } { LON } " + branch + " { EXL } { LOF }\" >l; kelvo list check l")
          .Output;
    };
    const std::string right = check(isRelative ? 2 : 4), wrong = check(isRelative ? 4 : 2);
    EXPECT_THAT(right, Not(AnyOf(HasSubstr("never reached"), HasSubstr("no command"), HasSubstr("parse"))))
        << name;
    EXPECT_THAT(wrong, HasSubstr(isRelative ? "There is no command 6 to branch to." : "never reached."))
        << name;
  }
}

TEST(ToolCheck, ReadsAnyFileInLittleMemory) {
  SKIP_UNDER_THREAD_SANITIZER();
  const ToolShell shell;
  const Row rows[] = {
      // Half a million commands, and a fault in the last line, in a command that lies across parts that are read.
      {"yes \"{ JA, P2D[ X=1.5 Y=2.25 ] }\" | head -500000 >l; echo \"{ LON }}\" >>l; kelvo list check l", 4,
       "l:500001:8: Unable to parse command.\n"},
      {"yes \"{ JA, P2D[ X=1.5 Y=2.25 ] }\" | tr -d \"\\n\" | head -c 3000000 >l; kelvo list check l", 4,
       "l:1:3000001: Unable to parse command.\n"},
      {"kelvo list check - <l", 4, "-:1:3000001: "},
      {"(printf \"{ DLP, F64Arr[\"; yes 0.25 | head -200000 | tr \"\\n\" \" \"; echo \"] }\") >l; kelvo list "
       "check l",
       4, "l:1:1000015: Command exceeds the maximum allowed command size"},
      {"rm l; truncate -s 1G l; (" LITTLE_MEMORY "; kelvo list check l)", 4,
       "l:1:1: Unable to parse command. The byte 0x00 has no place there.\n"},
      {"(" LITTLE_MEMORY "; kelvo list put 1 l)", 1, "l:1:1: Unable to parse command."},
      {"(printf \"{ JA, \"; head -c 200M /dev/zero | tr \"\\0\" \" \") >l; (" LITTLE_MEMORY "; kelvo list "
       "check l)",
       4, "l:1:1: The command is longer than 64 MiB.\n"},
      // A comment of several parts, in which commands seem to be.
      {"(printf \"{ LON } #\"; yes \"{ LON }\" | head -400000 | tr -d \"\\n\"; printf \"\\n{ BA, I32[9] }\") "
       ">l; "
       "kelvo list check l",
       4, "l:2:1: There is no command 9 to branch to.\n"},
      {"kelvo list check none", 1, "Cannot open 'none': No such file or directory."},
      {"kelvo list check l --field big", 2, "--field takes a number"},
      {"kelvo list check l --with 7", 2, "--with takes NUMBER=..., not '7'."},
  };
  ExpectAll(shell, rows);
}

TEST(ToolPreview, EstimatesTheRun) {
  const ToolShell shell;
  const Row rows[] = {
      // 3 mm jumped in 3 ms, 4 and 5 mm marked in 4 and 5 ms, 1 ms with the laser on, 2 ms off.
      {"printf \"{ JS, F64[0.001] } { MS, F64[0.001] } { JA, P2D[3 0] } { MA, P2D[3 4] } { MA, P2D[0 0] }"
       "{ LON } { SL, F64[1000] } { LOF } { SL, F64[2000] }\" >l; kelvo list preview l",
       0, "Time      0.015 s\nMarked    9 mm\nJumped    3 mm\nLaser on  66.6667 % of the time\n"},
      {"kelvo list preview l --json", 0,
       "\"time\": 15000.0,\n  \"markedLength\": 9.0,\n  \"jumpedLength\": 3.0,"},
      {"kelvo list preview l -o l.gif", 2, "-o takes a name that ends in .svg, .png or .pdf, not 'l.gif'."},
      {"kelvo list preview l -o none/l.svg", 1, "Cannot write 'none/l.svg': No such file or directory."},
      {"kelvo list preview l --colour red", 2, "--colour takes power, speed or order, not 'red'."},
      // Two powers: two colours, which the legend tells; a field with its frame.
      {"printf \"{ PWR, U16[1000], I32[0] } { MA, P2D[5 0] } { PWR, U16[2500], I32[0] } { MA, P2D[5 5] }\" "
       ">l; "
       "kelvo list preview l -o l.svg --colour power --field 40x20 && grep -c -e \">1000<\" -e \">2500<\" -e "
       "\"id=.marks-2\" -e \"id=.frame\" l.svg",
       0, "4\n"},
      {"echo \"{ MS, F64[ 0 ] }\" >l; kelvo list preview l", 1, "l:1:1: List 1, command 0 (MS): "},
      {"echo \"{ WS, I32[-1] } { MA, P2D[ 1 1 ] } { BA, I32[0] }\" >l; kelvo list preview l", 0,
       "Marked    1.41421 mm"},
  };
  ExpectAll(shell, rows);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
