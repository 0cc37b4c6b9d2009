// Every verb of the tool without a card, with one that refuses and with one that goes; and what is left on a card when the
// connection is lost in the middle.
#include "support/FakeCard.h"
#include "tool/ToolShell.h"

namespace VELTRO::KELVO::Test {
namespace {

// Each verb that needs a card, with all else that it needs; what it fetches goes to `out`.
const std::vector<std::string> Verbs = {"info",
                                        "clock show",
                                        "clock set",
                                        "watch",
                                        "config show laser",
                                        "config get laser.FpsStart",
                                        "config set laser.FpsStart=2",
                                        "config diff s",
                                        "config export laser -o out",
                                        "config import s",
                                        "config load laser",
                                        "config store laser",
                                        "config abort",
                                        "list run f",
                                        "list put 7 f",
                                        "list get 7 -o out",
                                        "list load 7",
                                        "list store 7",
                                        "list delete 7",
                                        "list ls",
                                        "list status 7",
                                        "list caret 7",
                                        "list abort",
                                        "files ls",
                                        "files put f JOBFILES/f",
                                        "files get JOBFILES/f -o out",
                                        "files rm JOBFILES/f",
                                        "files backup out",
                                        "files restore b",
                                        "correction ls",
                                        "correction show 0:3",
                                        "correction put 0:3 f",
                                        "correction get 0:3 -o out",
                                        "correction select 0:3",
                                        "correction delete 0:3",
                                        "correction load",
                                        "correction store",
                                        "power-correction show",
                                        "power-correction create o",
                                        "power-correction set 1,2,3=4",
                                        "power-correction put f",
                                        "power-correction get -o out",
                                        "power-correction load",
                                        "power-correction store",
                                        "font put 3 t",
                                        "font get 3 -o out",
                                        "font activate 3",
                                        "font ls 3",
                                        "font rm 3",
                                        "font load 3",
                                        "font store 3",
                                        "io ls",
                                        "io get 1.3",
                                        "io set 1.3=1",
                                        "io watch 1",
                                        "variable ls",
                                        "variable get x",
                                        "variable set x=1",
                                        "serial send x",
                                        "serial receive",
                                        "laser status",
                                        "laser pilot on --yes",
                                        "laser arm --yes",
                                        "laser disarm",
                                        "log show",
                                        "call Dance"};
const std::vector<std::string> VerbsWithoutCard = {
    "discover",     "predict",      "config defaults", "log on",       "log off",       "list check",
    "list preview", "font preview", "record",          "session show", "session import"};
// Those that read a file, ahead of its name.
const std::vector<std::string> Readers = {
    "config diff",          "config import",      "list run",
    "list check",           "list preview",       "font preview",
    "list put 7",           "correction put 0:3", "power-correction create",
    "power-correction put", "font put 3"};

constexpr const char* Files =
    "mkdir -p b/JOBFILES; echo '{ JA, P2D[ 1 2 ] }' >f; echo f >b/JOBFILES/f; cp " EXAMPLES_DATA
    "/optics.json o; echo '{\"A\": \"[]\"}' >t; echo '{\"laser\": {\"FpsStart\": 2}}' >s; ";

TEST(ToolFailure, EveryVerbIsTried) {
  const ToolShell shell;
  const auto below = [&shell](const std::string& group) {
    const std::string help =
        shell.Run("kelvo " + group + " --help | sed -n '/^Subcommands:/,/^$/s/^  //p'").Output;
    std::istringstream lines(help);
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);) names.push_back(line.substr(0, line.find(' ')));
    return names;
  };
  std::string tried = "\n";
  for (const auto& rows : {Verbs, VerbsWithoutCard}) {
    for (const std::string& row : rows) tried += row + " \n";
  }
  for (const std::string& name : below("")) {
    const std::vector<std::string> verbs = below(name);
    if (verbs.empty()) {
      EXPECT_THAT(tried, HasSubstr("\n" + name + " "));
    }
    for (const std::string& verb : verbs) EXPECT_THAT(tried, HasSubstr("\n" + name + " " + verb + " "));
  }
}

// Runs each of the verbs with something ahead of it and behind it. Each fails with that code and text, and leaves no file.
void ExpectOfEach(const std::vector<std::string>& verbs, const std::string& ahead, const std::string& behind,
                  int code, const std::string& text) {
  const ToolShell shell;
  std::string script = Files;
  for (const std::string& verb : verbs) {
    script += ahead + " kelvo " + verb + " " + behind +
              " >said 2>error; echo \"$? $(ls -d out 2>&-) $(grep ^kelvo: error)\"; ";
  }
  std::istringstream lines(shell.Run(script).Output);
  for (const std::string& verb : verbs) {
    std::string line;
    std::getline(lines, line);
    EXPECT_THAT(line, AllOf(StartsWith(std::to_string(code) + "  kelvo: "), HasSubstr(text))) << verb;
  }
}

TEST(ToolFailure, EveryVerbSaysWhatIsWrongWithItsCard) {
  ExpectOfEach(Verbs, "KELVO_CARD=", "", 2, "No card is named. Name it by --card");
  const FakeCard leaving([](Peer& peer) { static_cast<void>(peer.Handshake() && peer.Fill(1)); });
  const FakeCard refusing(
      FakeCard::Answering([](const Request& request) { return ErrorResponse(request.Id, "Not today."); }));
  std::vector<std::string> refused = Verbs;
  std::erase(refused, "watch");  // it goes on
  ExpectOfEach(Verbs, "KELVO_CARD=127.0.0.1:1", "", 3, "Error: Cannot open connection to 127.0.0.1/1.");
  ExpectOfEach(Verbs, "KELVO_CARD=127.0.0.1:" + std::to_string(leaving.Port()), "", 3,
               "The connection to the card was lost");
  ExpectOfEach(refused, "KELVO_CARD=127.0.0.1:" + std::to_string(refusing.Port()), "", 1, "Not today.");
  ExpectOfEach(Readers, "", "none", 1, "Cannot open 'none': No such file or directory.");
}

// Stands between a client and the card on a port, and is gone when the client makes that call for the nth time.
FakeCard::Script GoneAt(int port, const std::string& method, int nth) {
  return [=](Peer& client) {
    const int socket = Connect(port);
    std::thread answers([&] {
      char bytes[65536];
      for (ssize_t count; (count = recv(socket, bytes, sizeof bytes, 0)) > 0;)
        client.Send({bytes, static_cast<std::size_t>(count)});
    });
    int left = nth;
    for (Request request; client.Next(request) && (request.Method != method || --left > 0);) {
      const std::string frame = Frame(0x00, Packed(request.Id, request.Method) + request.Sent);
      EXPECT_EQ(send(socket, frame.data(), frame.size(), MSG_NOSIGNAL), std::ssize(frame));
    }
    shutdown(socket, SHUT_RDWR);
    answers.join();
    close(socket);
  };
}

TEST(ToolFailure, SaysWhatALostConnectionHasLeft) {
  const ToolShell shell({"--speed", "1"});
  struct LostRow {
    std::string Command, Method;
    int Nth;
    std::string Says, Look, Found;
  };
  const std::string lost = "kelvo: The connection to the card was lost: ";
  const LostRow rows[] = {
      {"files put big JOBFILES/a", "FileWrite", 3, "'JOBFILES/a' may be on the card in part.",
       "until kelvo files get JOBFILES/a -o x 2>&-; do :; done; stat -c %s x", "16384\n"},
      {"files get BINFILES/big -o old", "FileRead", 2, lost, "cat old; ls -A | grep -c part", "old\n0\n"},
      {"files backup bak", "FileRead", 15, "ConnectionAborted. 1 of 2 files were fetched.",
       "find bak -type f", "bak/BINFILES/big\n"},
      {"files restore b", "FileOpen", 2, "'JOBFILES/g' may be on the card in part. 1 of 2 files were sent.",
       "kelvo files ls JOBFILES", "JOBFILES/a\nJOBFILES/f\n"},
      {"config set laser.FpsStart=2", "SetLaserConfig", 1,
       "If it has left an update open, 'kelvo config abort' gives it up.",
       "kelvo config get laser.FpsStart 2>&1; kelvo config abort; kelvo config get laser.FpsStart 2>&1",
       "An update of the card's settings is open; it may be that of a lost connection. 'kelvo config abort' "
       "gives it "
       "up.\n0.0\n0.0\n"},
      {"config import s", "EndUpdate", 1, "'kelvo config abort' gives it up.",
       "kelvo config import s 2>&-; echo $?; kelvo config abort; kelvo config get laser.FpsStart",
       "1\n0.0\n"},
      {"list put 7 f", "SetList", 1, lost, "kelvo list status 7", "no such list\n"},
      {"list run long --id 3", "GetListCaret", 1, lost, "kelvo list status 3; kelvo list abort", "running\n"},
      {"correction put 0:3 big", "FileWrite", 2, lost, "kelvo correction ls --json", "[]\n"},
      {"correction put 0:3 big", "SetHeadCorrection", 1, lost,
       "kelvo correction ls --json; kelvo correction put 1:2 o", "[]\n"},
      {"power-correction put big", "SetPowerCorrection", 1, lost, "kelvo power-correction show; echo $?",
       "1\n"},
      {"correction ls", "GetHeadCorrectionHash", 1, lost + "ConnectionAborted", "", ""},
      {"font ls", "GetFont", 4, lost + "ConnectionAborted", "", ""},
      {"font put 3 t", "SetFont", 1, lost, "kelvo font ls", ""},
      {"io set 1.1=1 1.2=1", "WriteGpioPort", 2, lost, "kelvo io get 1.1 1.2", "1.1 1\n1.2 0\n"},
      {"watch --json", "GetOperatingState", 3, "The connection to the card was lost.", "", ""},
  };
  shell.Run(
      Files +
      std::string("seq 20000 >big; kelvo files put big BINFILES/big; echo old >old; echo g >b/JOBFILES/g; "
                  "echo '{ SL, F64[ 60e6 ] }' >long"));
  for (const auto& [command, method, nth, says, look, found] : rows) {
    const FakeCard between(GoneAt(shell.CardPort(), method, nth));
    const auto [code, output, error] =
        shell.Run("kelvo --card 127.0.0.1:" + std::to_string(between.Port()) + " " + command);
    EXPECT_EQ(code, 3) << command << "\n" << error;
    EXPECT_THAT(error, HasSubstr(says)) << command;
    EXPECT_EQ(LinesOfErrors(error), 1) << command << "\n" << error;
    EXPECT_EQ(shell.Run(look).Output, found) << command;
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
