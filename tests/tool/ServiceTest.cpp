// The verbs for what else a card keeps: backups of its files, corrections, fonts; logs; and several cards watched at
// once.
#include "support/FakeCard.h"
#include "tool/ToolShell.h"

namespace VELTRO::KELVO::Test {
namespace {

// A command line that runs the tool until something is so, and then interrupts it as Ctrl-C does. What it prints is in
// `out` until then.
std::string Interrupted(const std::string& words, const std::string& untilThat) {
  return ": >out; " TOOL_PROGRAM " " + words + " >out & tool=$!; until " + untilThat +
         " || ! kill -0 $tool; do sleep 0.02; done; kill -INT $tool; wait $tool; code=$?; cat out; exit "
         "$code";
}

TEST(Tool, KeepsCorrections) {
  const ToolShell shell;
  const Row rows[] = {
      {"kelvo correction ls --json", 0, "[]\n"},
      {"cp " EXAMPLES_DATA
       "/optics.json o; seq 5 >x; for at in 1:2 0:10; do kelvo correction put $at o; done",
       1, "There is no head correction slot 0, 10."},
      // What was sent for the slot that there is not has been taken away again.
      {"kelvo files ls CORRFILES", 0, "CORRFILES/head5Correction.kc7\n"},
      {"kelvo correction put 0:3 x && kelvo correction put 0:1 o && kelvo correction select 0:3", 0},
      {"kelvo correction ls", 0,
       "CORRECTION  SELECTED  HASH\n0:1         no        dcc02e9511dfd38f\n0:3         yes       "},
      {"kelvo correction ls --json", 0,
       "\"head\": 1,\n    \"slot\": 2,\n    \"selected\": false,\n    \"hash\": \"dcc0"},
      {"kelvo correction get 0:3 && cmp x head6Correction.kc7 && kelvo correction get 1:2 -o y && cmp o y",
       0},
      {"kelvo correction show 0:1", 0, "MinorVersion      1\n"},
      {"kelvo correction store && kelvo correction select 0:1 && kelvo correction load && kelvo correction "
       "ls",
       0, "0:3         yes"},
      {"kelvo correction delete 0:3 && kelvo correction ls | wc -l", 0, "3\n"},
      {"kelvo correction select 0:3", 1, "There is no head correction 0, 3."},
      {"kelvo power-correction show", 1, "There is no power correction on the card."},
      {"kelvo correction show 0:1 --json >p && kelvo power-correction create p && kelvo power-correction "
       "show",
       0, "MinorVersion      1\n"},
      {"kelvo power-correction set -10,5,0=0.9 1,2,3=0.5 && kelvo power-correction get && stat -c %s "
       "powerCorrection.kc7",
       0, "344\n"},
      {"kelvo power-correction put x", 1, "'_tmpPowerCorrection.kc7' is no power correction."},
      {"kelvo power-correction store && kelvo files ls CORRFILES | tail -1", 0,
       "CORRFILES/powerCorrection.kc7\n"},
      {"kelvo power-correction create o && kelvo power-correction load && kelvo power-correction get -o z && "
       "cmp z "
       "powerCorrection.kc7",
       0},
      {"kelvo power-correction put z", 0},
      {"kelvo power-correction create x", 1, "'x' has no optical parameters: "},
      {"kelvo power-correction set 1,2=3", 2, "'1,2=3' is no POINT=VALUE."},
      {"kelvo power-correction set 1,2,3=x", 2, "VALUE takes a number, not 'x'."},
      {"kelvo correction show 03", 2, "'03' is no HEAD:SLOT. One is written like 0:3."},
      {"kelvo correction show 0:-1", 2, "SLOT takes a whole number from 0"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, KeepsFonts) {
  const ToolShell shell;
  const std::string font =
      R"({"A": "[ { JR, P2D[ 1 2 ] } ]", "U+0042": "{ MR, P2D[ 3 4 ] }", "ä": "[]", "€": "[]", "U+D800": "[]"})";
  const Row rows[] = {
      {"echo '" + font + "' >f && kelvo font put 3 f && kelvo font ls", 0,
       "FONT  COUNT  CHARACTERS\n3     5      U+0041-U+0042 U+00E4 U+20AC U+D800\n"},
      {"kelvo font ls --json | tr -d ' \\n'", 0,
       "[{\"font\":3,\"characters\":[\"A\",\"B\",\"ä\",\"€\",\"U+D800\"]}]"},
      {"kelvo font get 3", 0,
       "{\n  \"A\": \"[ { JR, P2D[ X=1 Y=2 ] } ]\",\n  \"B\": \"[ { MR, P2D[ X=3 Y=4 ] } ]\","},
      {"kelvo font get 3 -o g && kelvo font put 4 g && kelvo font get 4 | cmp - g", 0},
      {"kelvo font activate 7", 1, "There is no font 7 on the card."},
      {"kelvo font activate 4 && echo '{ MCH, I32[ 65 ] }' | kelvo list run -", 0, "List 1 done: "},
      {"kelvo font store 3 && kelvo font rm 3 && kelvo font ls 4 3", 1, "There is no font 3 on the card."},
      {"kelvo font load 3 && kelvo font ls 3", 0, "3     5  "},
      {"echo '{\"AB\": \"[]\"}' | kelvo font put 5 -", 1, "'-': 'AB' is no character of a font."},
      {"echo '{\"A\": \"[]\", \"U+0041\": \"[]\"}' | kelvo font put 5 -", 1, "'-': 'U+0041' is there twice."},
      {"echo '{\"B\": 5}' | kelvo font put 5 -", 1, "'-': 'B' has no text of a list."},
      {"echo '{\"B\": \"x\"}' | kelvo font put 5 -", 1, "'-', character 'B': Illegal list content!"},
      {"echo 5 | kelvo font put 5 -", 1, "'-' holds no font"},
      {"kelvo font ls 5", 1, "There is no font 5 on the card."},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, BacksUpFiles) {
  // It writes so slowly that no large file is on it before its transfer is interrupted.
  const ToolShell shell({"--speed", "max", "--fault", "FileWrite:delay=20ms"});
  const Row rows[] = {
      {"seq 9999 >a; : >empty; kelvo files put a JOBFILES/a.b && kelvo files put empty 'BINFILES/.an empty "
       "one'",
       0},
      {"kelvo files backup bak", 0, "BINFILES/.an empty one\nJOBFILES/a.b\n"},
      {"cmp a bak/JOBFILES/a.b && cmp empty 'bak/BINFILES/.an empty one' && find bak | wc -l", 0, "8\n"},
      {"seq 3 >b; kelvo files put b JOBFILES/a.b; kelvo files put b JOBFILES/other; kelvo files restore bak "
       "--json",
       0, "[\n  \"BINFILES/.an empty one\",\n  \"JOBFILES/a.b\"\n]\n"},
      {"kelvo files get JOBFILES/a.b -o c && cmp a c && kelvo files ls JOBFILES", 0,
       "JOBFILES/a.b\nJOBFILES/other\n"},
      // What is no file of the backup is told, and the others are restored.
      {"kelvo files rm JOBFILES/a.b; ln -s ../../b bak/JOBFILES/a.a; kelvo files restore bak", 1,
       "2 of 3 files were sent. 'JOBFILES/a.a': 'bak/JOBFILES/a.a' is no plain file."},
      {"kelvo files ls JOBFILES", 0, "JOBFILES/a.b\n"},
      // Nothing is written through a link.
      {"kelvo files put a JOBFILES/a.a; kelvo files backup bak --json", 1,
       "3 of 4 files were fetched. 'JOBFILES/a.a': "},
      {"seq 3 | cmp - b && mv bak/LISTFILES elsewhere && ln -s ../elsewhere bak/LISTFILES && kelvo files "
       "backup bak",
       1, "'bak/LISTFILES' cannot be a directory of the backup."},
      {"kelvo files restore home", 1, "'home' is no backup: it has no directory like JOBFILES."},
      {"kelvo files backup a", 1, "Cannot make 'a': Not a directory."},
      {"truncate -s 200M big; " +
           Interrupted("files put big JOBFILES/new", "kelvo files ls JOBFILES | grep new"),
       130, "Interrupted. 'JOBFILES/new' is not on the card."},
      {"mkdir -p huge/JOBFILES; cp a huge/JOBFILES/0; ln big huge/JOBFILES/z; " +
           Interrupted("files restore huge --quiet", "kelvo files ls JOBFILES | grep z"),
       130, "Interrupted. 'JOBFILES/z' is not on the card. 1 of 2 files were sent."},
      {"truncate -s 100M big; " +
           Interrupted("correction put 0:3 big", "kelvo files ls CORRFILES | grep tmp"),
       130, "Interrupted."},
      {"kelvo files ls JOBFILES CORRFILES", 0, "JOBFILES/0\nJOBFILES/a.a\nJOBFILES/a.b\nJOBFILES/other\n"},
      {"kelvo files ls CORRFILES --json", 0, "[]"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, WritesNoBackupOutsideTheDirectory) {
  const std::vector<std::string> names = {"../out",          "..", ".", "", "sub/out", "/tmp/kelvo-out",
                                          ".kelvo-1-1.part", "in"};
  const FakeCard card(FakeCard::Answering([&names](const Request& request) {
    if (request.Method == "GetFiles") return Response(request.Id, names);
    return request.Method == "FileGetSize" ? Response(request.Id, std::uint64_t{0}) : Response(request.Id, 1);
  }));
  const ToolShell shell;
  const Row rows[] = {
      {"kelvo --card 127.0.0.1:" + std::to_string(card.Port()) + " files backup deep/bak", 1,
       "5 of 40 files were fetched. 'BINFILES/../out': This is no name for a local file."},
      {"find . /tmp/kelvo-out -type f 2>/dev/null | sort | tr '\\n' ' '", 0,
       "./deep/bak/BINFILES/in ./deep/bak/CORRFILES/in ./deep/bak/JOBFILES/in ./deep/bak/LISTFILES/in "
       "./deep/bak/PROCVARFILES/in ./error "},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, WritesLogs) {
  const ToolShell shell({"--verbose"});
  const Row rows[] = {
      {"kelvo list status 4 --log one && grep -o 'TX: GetListStatus( 4 )' one", 0,
       "TX: GetListStatus( 4 )\n"},
      {"kelvo list status 4 --log none/one", 1,
       "Unable to open log file 'none/one': No such file or directory"},
      {"kelvo log on logs && kelvo list status 5 && kelvo list status 6 && grep -hoc 'TX: GetListStatus' "
       "logs/* | wc -l",
       0, "2\n"},
      {"rm -r logs; kelvo info", 1, "'kelvo log off' ends the logging."},
      {"kelvo log off && kelvo info && ls", 0, "one\n"},
      {"kelvo log on one", 1, "The logging cannot be switched: Not a directory."},
      {"HOME= kelvo log on logs", 1, "HOME is not set."},
      {"kelvo log show && kelvo log show --json", 0, "GetListStatus(6)"},
  };
  ExpectAll(shell, rows);
}

TEST(Tool, WatchesSeveralCards) {
  const ToolShell shell;
  const FakeCard leaving([](Peer& peer) {
    Request request;
    if (!peer.Handshake()) return;
    for (; peer.Next(request) && request.Method != "GetOperatingState";)
      peer.Send(Response(request.Id, true));
    peer.Send(Response(request.Id, 4));
    peer.Next(request);
  });
  const std::string other = "127.0.0.1:" + std::to_string(leaving.Port());
  const FakeCard silent(FakeCard::Answering([](const Request&) { return std::string(); }));
  const auto [code, output, error] = shell.Run(
      "(until grep idle out; do sleep 0.02; done; echo '{ PI, I32[ 7 ] } { LOB }' | kelvo list run -) >run "
      "2>&1 & " +
      Interrupted("watch --timeout 60s --log log --card $KELVO_CARD --card " + other,
                  "grep lost out && grep list-idle out"));
  EXPECT_EQ(code, 0) << error;
  const std::string own = shell.CardPlace();
  for (const std::string& line :
       {own + " state idle\n", other + " state running, scanner error\n", other + " state lost\n",
        own + " progress 7\n", own + " error List 1, command 1 (LOB): No loop is open here.\n",
        own + " list-idle 1\n"}) {
    EXPECT_THAT(output, HasSubstr(line));
  }
  const Row rows[] = {
      {"kelvo watch --card " + other, 3, "The connection to the card was lost."},
      {Interrupted("watch --card 127.0.0.1:" + std::to_string(silent.Port()), "[ -s out ]"), 0,
       "state silent\n"},
      {Interrupted("watch --timeout 60s --json", "[ -s out ]"), 0,
       "{\"card\":\"" + own + "\",\"event\":\"state\",\"value\":\"idle\"}\n"},
      {"kelvo info --card $KELVO_CARD --serial 5", 2, "Several cards are named. This verb takes one."},
      {"grep -c GetOperatingState log log.2", 0, "log.2:"},
  };
  ExpectAll(shell, rows);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
