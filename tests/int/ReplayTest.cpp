// The virtual card that answers from a recording, as a program of its own.
#include "int/CardClient.h"

namespace VELTRO::KELVO::Test {
namespace {

constexpr const char* Head =
    R"({"kelvoSession":1,"started":"2026-01-02T03:04:05Z","by":"a test","firmware":"1.2","serialNumber":"77"})"
    "\n";

// Lines of a recording in short: "TIME CONNECTION REST", where the rest is "> METHOD [ARGUMENTS]", "= JSON" or "! JSON" to
// the latest request of the connection, "* JSON" for a notification, "raw BASE64", "ended" by the card or "left".
Text Lines(const std::vector<Text>& rows) {
  Text lines;
  std::map<Text, int> ids;
  for (const Text& row : rows) {
    std::istringstream words(row);
    Text time, connection, what, first, rest;
    words >> time >> connection >> what;
    if (what == ">") words >> first;
    std::getline(words >> std::ws, rest);
    const int id = what == ">" ? ++ids[connection] : ids[connection];
    const std::map<Text, Text> ends = {
        {">", R"("to card","kind":"request","id":)" + std::to_string(id) + ",\"method\":\"" + first +
                  "\",\"arguments\":" + rest},
        {"=", R"("from card","kind":"response","id":)" + std::to_string(id) + ",\"result\":" + rest},
        {"!", R"("from card","kind":"error","id":)" + std::to_string(id) + ",\"error\":" + rest},
        {"*", R"("from card","kind":"notification","values":)" + rest},
        {"raw", R"("from card","kind":"raw","raw":{"base64":")" + rest + "\"}"},
        {"ended", R"("from card","kind":"ended")"},
        {"left", R"("to card","kind":"ended")"},
    };
    lines += "{\"time\":" + time + ",\"connection\":" + connection + ",\"way\":" + ends.at(what) + "}\n";
  }
  return lines;
}

class Replay {
 public:
  explicit Replay(const Text& recording, std::vector<std::string> options = {})
      : card_((Write(recording), options.insert(options.begin(), {"--replay", Path()}), options)) {}

  CardProcess& Card() { return card_; }
  Text Path() const { return directory_.Path + "/s"; }

 private:
  void Write(const Text& recording) { std::ofstream(Path()) << recording; }

  const TemporaryDirectory directory_;
  CardProcess card_;
};

Text Called(std::int32_t card, const Text& call) {
  char text[1000] = "";
  std::uint32_t length = 0;
  const std::size_t space = call.find(' ');
  const Text outcome = Outcome(vlCallJson(card, call.substr(0, space).c_str(), call.substr(space).c_str(),
                                          text, sizeof text, &length));
  return outcome == "0" ? Text(text, length) : outcome;
}

TEST(Replay, AnswersByMethodAndArgumentsInTheRecordedOrder) {
  const Text recording = Head + Lines({
                                    "0 1 > Set [1,{\"a\":[2.0,\"x\"]}]",
                                    "0.1 1 = 1",  // line 3
                                    "0.2 1 > Set [1,{\"a\":[2.5,\"x\"]}]",
                                    "0.3 1 ! [\"Not so.\",\"\",null]",
                                    "0.4 1 > Set [1,{\"a\":[2.0,\"x\"]}]",
                                    "0.5 1 = {\"base64\":\"AQI=\"}",
                                    "0.6 1 > GetX []",
                                    "0.7 1 = 7.0",
                                    "0.8 1 > GetX []",
                                    "0.9 1 = {\"number\":\"nan\"}",
                                    "1.0 2 > Other []",
                                    "1.1 2 = 5",
                                    "1.2 1 > Lost []",
                                });
  const Text here = " of PATH:";
  // What is asked, and what comes: without --strict and with it.
  const struct {
    Text Call, Usually, Strictly = {};
  } rows[] = {
      {"Set [1, {\"a\": [2.0, \"x\"]}]", "1"},
      {"Set [1, {\"a\": [2.5, \"x\"]}]", "Not so."},
      {"Set [1, {\"a\": [2.0, \"x\"]}]", R"({"base64":"AQI="})"},
      {"Set [1, {\"a\": [2.0, \"x\"]}]",
       "Set with these arguments is recorded twice and asked for the 3rd time."},
      {"Set [1, {\"a\": [2.0, \"y\"]}]",
       "The recording has no such call: Set, arguments[1].a[1] is \"y\" and not \"x\" as in the nearest, Set "
       "of PATH:2."},
      {"Set [1, {\"a\": [2.5, \"x\"], \"b\": 3}]",
       "The recording has no such call: Set, arguments[1].b is 3 and not nothing as in the nearest, Set of "
       "PATH:4."},
      {"Set [1, {\"a\": [2, \"x\"]}]",
       "The recording has no such call: Set, arguments[1].a[0] is 2 and not 2.0 as in the nearest, Set of "
       "PATH:2."},
      {"Set []",
       "The recording has no such call: Set, arguments[0] is nothing and not 1 as in the nearest, Set of "
       "PATH:2."},
      {"GetX []", "7.0"},
      {"GetX []", R"({"number":"nan"})"},
      {"GetX []", R"({"number":"nan"})",
       "GetX with these arguments is recorded twice and asked for the 3rd time."},
      {"Dance [1]",
       "The recording has no such call: Dance is not called on connection 1. Next there is Lost of PATH:14."},
      {"Other []",
       "The recording has no such call: Other is not called on connection 1 (it is on connection 2, line "
       "12). Next there "
       "is Lost of PATH:14."},
      {"Lost []", "The recording has no answer to Lost of PATH:14."},
  };
  for (const bool isStrict : {false, true}) {
    Replay replay(recording, isStrict ? std::vector<std::string>{"--strict"} : std::vector<std::string>{});
    const Connection connection(replay.Card().GetPort());
    for (const auto& [call, usually, strictly] : rows) {
      Text expected = isStrict && !strictly.empty() ? strictly : usually;
      if (const auto at = expected.find("PATH"); at != Text::npos) expected.replace(at, 4, replay.Path());
      EXPECT_EQ(Called(connection, call), expected) << call;
      // What does not match is on standard error, too.
      if (expected.find("record") != Text::npos) {
        EXPECT_THAT(replay.Card().ReadLine(), EndsWith(": " + expected + "\n"));
      }
    }
  }
}

TEST(Replay, RepeatsTheAnswersOfWhatChangesNothing) {
  std::vector<Text> lines;
  const std::vector<Text> methods = {"GetFiles",   "IsReady",       "ReadPort",      "WaitForIdle",
                                     "FileExists", "FileGetSize",   "GetFileHandle", "ReadSerialPort",
                                     "FileRead",   "FileWriteText", "GetX"};
  for (const Text& method : methods) lines.insert(lines.end(), {"0 1 > " + method + " []", "0 1 = 5"});
  Replay replay(Head + Lines(lines));
  const Connection connection(replay.Card().GetPort());
  std::vector<Text> repeated;
  for (const Text& method : methods) {
    EXPECT_EQ(Called(connection, method + " []"), "5") << method;
    if (Called(connection, method + " []") == "5") repeated.push_back(method);
  }
  EXPECT_THAT(repeated, testing::ElementsAre("GetFiles", "IsReady", "ReadPort", "WaitForIdle", "FileExists",
                                             "FileGetSize", "GetX"));
}

TEST(Replay, AnswersEachConnectionAsTheRecordedOne) {
  const Text recording = Head + Lines({"0 4 > Do []", "0 4 = 1", "0 9 > Do []", "0 9 = 2", "0 9 > Lost []",
                                       "0 9 ended", "0 9 left"});
  Replay replay(recording);
  Replay strict(recording, {"--strict"});
  const Text oneMore = "The recording has 2 connections, and this is one more.";
  const auto refusal = [](Replay& one) { return Outcome(vlConnect("127.0.0.1", one.Card().GetPort())); };
  for (int run = 0; run < 2; ++run) {
    const Connection first(replay.Card().GetPort()), second(replay.Card().GetPort());
    EXPECT_EQ(Called(first, "Do []"), "1");
    EXPECT_EQ(Called(second, "Do []"), "2");
    EXPECT_EQ(refusal(replay), oneMore);
    EXPECT_EQ(Called(second, "Lost []"), "ConnectionAborted") << "the card ended it in place of an answer";
    EXPECT_EQ(Called(first, "Do []"), "Do with these arguments is recorded once and asked for the 2nd time.");
  }
  // When all have gone it begins anew, unless it is strict.
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(Called(Connection(strict.Card().GetPort()), "Do []"), std::to_string(i + 1));
  EXPECT_EQ(refusal(strict), oneMore);
}

// What comes over a connection until it ends or so many bytes have come, and how long that took.
std::pair<Text, double> Received(int port, const Text& sent, std::size_t size) {
  const Stopwatch time;
  const int socket = Test::Connect(port);
  EXPECT_EQ(send(socket, sent.data(), sent.size(), 0), static_cast<ssize_t>(sent.size()));
  Text all;
  char bytes[1000];
  for (ssize_t count; all.size() < size && (count = recv(socket, bytes, sizeof bytes, 0)) > 0;) {
    all.append(bytes, static_cast<std::size_t>(count));
  }
  close(socket);
  return {all, time.Milliseconds()};
}

TEST(Replay, NotifiesAsLateAsItWasRecordedAtTheSpeedAskedFor) {
  // Ahead of the first call, of the answer and behind it; a call that waits; bytes; and the end. Nobody waits for the
  // first minute, and what is recorded for `max` takes one and a half.
  const auto recording = [](double step) {
    const auto at = [step](int steps) { return std::to_string(60 + steps * step) + " 1 "; };
    return Head + Lines({at(0) + "* [1,0]", at(1) + "> Do []", at(2) + "* [1,1]", at(3) + "= 8",
                         at(4) + "* [1,2]", at(10) + "> WaitForX []", at(12) + "= 9",
                         at(13) + "raw //8=", at(13) + "ended", at(13) + "left"});
  };
  // The seconds between the lines, the milliseconds that at least pass.
  const std::tuple<Text, double, double> speeds[] = {{"1", 0.1, 300}, {"0.5", 0.1, 600}, {"max", 30, 0}};
  constexpr double Most = 30000;
  const auto request = [](std::uint32_t id, const char* method) {
    return FrameOf(0, id, method, std::vector<int>());
  };
  for (const auto& [speed, step, least] : speeds) {
    Replay replay(recording(step), {"--replay-speed", speed});
    const Text begin = Notification(1, 0) + Notification(1, 1) + Response(3, 8) + Notification(1, 2);
    const auto [first, time] = Received(replay.Card().GetPort(), request(3, "Do"), begin.size());
    EXPECT_EQ(Hex(first), Hex(begin)) << speed;
    EXPECT_GE(time, least);
    EXPECT_LT(time, Most);
    const Text end = Response(4, 9) + "\xFF\xFF";
    const auto [second, endTime] = Received(replay.Card().GetPort(), request(4, "WaitForX"), SIZE_MAX);
    EXPECT_EQ(Hex(second), Hex(Notification(1, 0) + end)) << speed;
    EXPECT_GE(endTime, least);
    EXPECT_LT(endTime, Most);
  }
}

TEST(Replay, SaysWhatIsWrongWithItsFile) {
  const Text line = Lines({"0 1 > GetX []"});
  Replay cut(Head + Lines({"0 1 > GetX []", "0 1 = 3"}) + "{\"time\":");
  EXPECT_EQ(cut.Card().GetWarnings(), cut.Path() + ":4: The recording ends in the middle of a line.\n");
  EXPECT_EQ(Called(Connection(cut.Card().GetPort()), "GetX []"), "3");
  const TemporaryDirectory directory;
  const Text path = directory.Path + "/s";
  const std::tuple<Text, Text> files[] = {
      {"{\"kelvoSession\":2}\n", "'" + path + "' is a session of version 2; this program reads version 1.\n"},
      {"ELF", "'" + path + "' is no recorded session.\n"},
      {Head + line + "{}\n", path + ":3: 'time' is missing or not of its kind.\n"},
  };
  for (const auto& [content, text] : files) {
    std::ofstream(path) << content;
    EXPECT_EQ(Shell(VIRTUAL_CARD_PROGRAM " --port 0 --replay " + path), std::pair(1, text));
  }
  EXPECT_EQ(Shell(VIRTUAL_CARD_PROGRAM " --port 0 --strict 2>&1").first, 2);
}

TEST(Replay, ServesWhatTheLibraryRecorded) {
  const TemporaryDirectory directory;
  const Text path = directory.Path + "/session.jsonl";
  const auto run = [](std::int32_t card) {
    const std::int64_t list = vlListAllocate(card);
    for (int i = 0; i < 5000; ++i) vlListAppendMarkAbs2D(list, i % 10, 0.5);  // long enough to stay packed
    std::int32_t done = 0;
    std::ostringstream told;
    told << Outcome(vlListSet(card, 6, list, false, -1));
    told << Outcome(vlListExecute(card, 6));
    told << Outcome(vlListWaitForListDone(card, &done, 60000)) << done;
    told << Called(card, "GetListStatus [6]") << Called(card, "Dance [1]");
    vlListReleaseHandle(list);
    return told.str();
  };
  Text recorded;
  {
    const CardProcess card({"--speed", "max"});
    const Connection connection(card.GetPort());
    ASSERT_OK(vlEnableRecording(connection, path.c_str()));
    recorded = run(connection);
  }
  EXPECT_THAT(recorded, AllOf(StartsWith("0006"), EndsWith("Unknown method 'Dance'.")));
  const CardProcess card({"--replay", path, "--replay-speed", "max", "--strict"});
  EXPECT_EQ(run(Connection(card.GetPort())), recorded);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
