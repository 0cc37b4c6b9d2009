// Connections through the exported functions, against a card that misbehaves on purpose.
#include <ctime>

#include "support/FakeCard.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {
namespace {

constexpr double Prompt = 10000;  // milliseconds; the time-outs that would show are 17000

TEST(Connect, TellsTheCardItsVersionAndReadsTheCardsTexts) {
  std::vector<std::string> calls;
  FakeCard card([&](Peer& peer) {
    for (Request request; peer.Next(request);) {
      std::ostringstream text;
      text << request.Method << request.Arguments.get();
      calls.push_back(text.str());
      peer.Send(Response(request.Id, "text"));
    }
  });
  {
    Connection connection(card.Port());
    ASSERT_GT(connection, 0) << LastError();
  }
  EXPECT_EQ(calls, (std::vector<std::string>{"SetClientLibVersion[\"3.10.3.3013\"]",
                                             "GetFirmwareProductVersion[]", "GetCardSerialNumber[]"}));
}

TEST(Connect, FailsWithAText) {
  // Once the first request has come: before it, sending can fail with a text of its own.
  const auto answering = [](auto answer) {
    return [answer](Peer& peer) {
      for (Request request; peer.Next(request) && peer.Send(answer(request));) continue;
    };
  };
  FakeCard refusing(answering([](const Request& r) { return ErrorResponse(r.Id, "Library too old"); }));
  FakeCard leaving([](Peer& peer) { peer.Fill(6); });
  FakeCard babbling(answering([](const Request&) { return "HTTP/1.1 200 OK\r\n\r\n"; }));
  FakeCard mistyping(answering([](const Request& r) { return Response(r.Id, 7); }));
  const std::tuple<const char*, int, const char*> cases[] = {
      // An empty label is refused without asking a name server.
      {"no..such.host", 1, "Invalid IP address or unable to resolve host name with DNS."},
      {"", 1, "Invalid IP address or unable to resolve host name with DNS."},
      {"127.0.0.1", 0, "Port must be between 1 and 65535."},
      {"127.0.0.1", 65536, "Port must be between 1 and 65535."},
      {"127.0.0.1", 1, "Error: Cannot open connection to 127.0.0.1/1."},
      {"::1", 1, "Error: Cannot open connection to ::1/1."},
      {"127.0.0.1", refusing.Port(), "Library too old"},
      {"127.0.0.1", leaving.Port(), "Connection"},
      {"127.0.0.1", babbling.Port(), "Connection"},
      {"127.0.0.1", mistyping.Port(), "std::bad_cast"},
  };
  for (const auto& [host, port, text] : cases) {
    const AtMost promptly(Prompt, text);
    EXPECT_EQ(vlConnect(host, port), -1);
    EXPECT_THAT(LastError(), HasSubstr(text));
    EXPECT_EQ(LastError(), "") << "reading it clears it";
  }
}

TEST(Connect, EndsAtOnceWhenItsHandleIsDisconnected) {
  BlackHole hole;
  std::int32_t handle = [&] {
    const FakeConnection latest;
    return static_cast<std::int32_t>(latest);
  }();
  for (int round = 0; round < (Sanitized ? 1000 : 4000); ++round) {
    ++handle;  // the one that is next
    std::atomic<bool> ended{false};
    std::thread ending([&] {
      if (round < 5) usleep(static_cast<useconds_t>(round) * 10000);  // in the middle of its waiting
      while (!ended && vlDisconnect(handle) != 0) std::this_thread::yield();
    });
    const Stopwatch watch;
    ASSERT_EQ(vlConnect("127.0.0.1", hole.Port), -1);
    ended = true;
    ending.join();
    ASSERT_LT(watch.Milliseconds(), Prompt) << "round " << round;
  }
}

TEST(Disconnect, DoesNotWaitForStandardOutput) {
  FakeCard card(FakeCard::Then([](Peer& peer, const Request&) { peer.Send("nonsense"); }));
  enum { FullPipe, UnreadPipe, FullSocket, Closed };
  for (const int kind : {FullPipe, UnreadPipe, FullSocket, Closed}) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(kind == FullSocket ? socketpair(AF_UNIX, SOCK_STREAM, 0, ends) : pipe(ends), 0);
    if (kind == FullSocket) std::swap(ends[0], ends[1]);
    if (kind == FullPipe || kind == FullSocket) {
      const int flags = fcntl(ends[1], F_GETFL);
      fcntl(ends[1], F_SETFL, flags | O_NONBLOCK);
      while (write(ends[1], &ends, 1) > 0) continue;
      fcntl(ends[1], F_SETFL, flags);
    } else {
      close(ends[0]);
    }
    const std::int32_t handle = vlConnect("127.0.0.1", card.Port());
    fflush(stdout);
    const int before = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    if (kind == Closed) close(STDOUT_FILENO);
    const Stopwatch watch;
    const int called = vlListExecute(handle, 1);
    const std::string text = LastError();
    const int disconnected = vlDisconnect(handle);
    const double took = watch.Milliseconds();
    dup2(before, STDOUT_FILENO);
    close(before);
    close(ends[1]);
    if (ends[0] >= 0 && (kind == FullPipe || kind == FullSocket)) close(ends[0]);
    EXPECT_EQ(called, -1) << kind;
    EXPECT_EQ(text, "ConnectionAborted") << kind;
    EXPECT_EQ(disconnected, 0) << kind;
    EXPECT_LT(took, Prompt) << kind;
  }
}

TEST(Handles, RiseAndAreNotUsedAgain) {
  FakeCard card(FakeCard::Obliging());
  const std::int32_t first = vlConnect("127.0.0.1", card.Port());
  EXPECT_OK(vlDisconnect(first));
  const std::int32_t second = vlConnect("localhost", card.Port());
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(vlConnect("no..such.host", card.Port()), -1);
  EXPECT_EQ(vlConnect("127.0.0.1", 1), -1) << "uses up a handle";
  const std::int32_t third = vlConnect("127.0.0.1", card.Port());
  EXPECT_EQ(third, second + 2);
  EXPECT_OK(vlDisconnect(second));
  EXPECT_OK(vlDisconnect(third));
  EXPECT_FAILS(vlDisconnect(second), "There is no connection corresponding to this handle.");
}

TEST(LastErrors, AreErasedByASuccess) {
  const FakeConnection connection;
  EXPECT_EQ(vlListAllocate(-1), -1);
  EXPECT_EQ(vlGetLastErrorLen(), 15 + 2);
  EXPECT_EQ(vlListAllocate(connection) & 0xFFFFFFFF, 1);
  EXPECT_EQ(vlGetLastErrorLen(), 2);
}

TEST(Handles, AHandleThatIsNoneIsNotConnected) {
  for (const std::int32_t handle : {-5, 0, 123456}) {
    bool connected = true;
    EXPECT_OK(vlIsConnected(handle, &connected));
    EXPECT_FALSE(connected);
    EXPECT_EQ(LastError(), "");
  }
}

TEST(Calls, EndWhenTheCardDoesNotAnswer) {
  const FakeConnection connection(FakeCard::Answering([](const Request&) { return std::string(); }));
  std::uint32_t timeout = 0;
  EXPECT_EQ(Told(vlGetTimeout(connection, &timeout), timeout), "0 17000");
  ASSERT_OK(vlSetTimeout(connection, 150));
  EXPECT_EQ(Told(vlGetTimeout(connection, &timeout), timeout), "0 150");
  const Stopwatch watch;
  EXPECT_FAILS(vlListExecute(connection, 1), "Response was not received in the given timespan.");
  EXPECT_GE(watch.Milliseconds(), 149);
  EXPECT_LT(watch.Milliseconds(), Prompt);
}

TEST(Calls, EndWhenTheCardStopsReading) {
  const FakeConnection connection([](Peer& peer) {
    if (peer.Handshake()) peer.WaitForEnd();
  });
  // More than both sockets' buffers hold, so that it is stuck in the middle.
  const std::vector<std::uint8_t> bytes(40 << 20);
  vlSetTimeout(connection, 200);
  const Stopwatch watch;
  EXPECT_FAILS(vlSerialPortWrite(connection, 0, bytes.data(), static_cast<std::uint32_t>(bytes.size())),
               "Socket error, unable to send!");
  EXPECT_LT(watch.Milliseconds(), Prompt);
  bool connected = true;
  EXPECT_EQ(Told(vlIsConnected(connection, &connected), connected), "0 0") << "half a frame broke the stream";
}

TEST(Calls, EndAtOnceWhenTheConnectionIsEnded) {
  std::atomic<bool> reached{false};
  FakeCard card(FakeCard::Then([&](Peer&, const Request&) { reached = true; }));  // it reads no more
  using Call = std::function<int(std::int32_t handle, std::int64_t list)>;
  const std::pair<const char*, Call> cases[] = {
      {"waiting for an answer", [](std::int32_t handle, std::int64_t) { return vlListExecute(handle, 1); }},
      {"sending to a card that does not read",
       [](std::int32_t handle, std::int64_t list) {
         std::atomic<int> result = 0;
         Together(8, [&](std::uint32_t) { result = vlListSet(handle, 1, list, false, -1); });
         return result.load();
       }},
      {"waiting for an event",
       [&](std::int32_t handle, std::int64_t) {
         std::int32_t value = 0;
         reached = true;
         return vlListWaitForListDone(handle, &value, 600000);
       }},
  };
  for (const auto& [state, call] : cases) {
    reached = false;
    const std::int32_t handle = vlConnect("127.0.0.1", card.Port());
    const std::int64_t list = vlListAllocate(handle);
    for (int i = 0; i < 200000; ++i) vlListAppendMarkAbs2D(list, i, i);
    std::thread calling([&, call = call, state = state] { EXPECT_EQ(call(handle, list), -1) << state; });
    while (!reached) std::this_thread::yield();
    usleep(20000);  // into the middle of it; earlier or later the outcome is the same
    const AtMost promptly(Prompt, state);
    EXPECT_OK(vlDisconnect(handle));
    calling.join();
  }
}

TEST(Calls, EndAtOnceWhereverTheCardCloses) {
  const std::string whole = Response(3, 12345);
  for (const bool reset : {false, true}) {
    for (std::size_t offset = 0; offset < whole.size(); ++offset) {
      FakeCard card([&](Peer& peer) {
        Request request;
        if (!peer.Handshake() || !peer.Next(request)) return;
        peer.Send(std::string_view(whole).substr(0, offset));
        if (reset) peer.Reset();
      });
      Connection connection(card.Port());
      const Stopwatch watch;
      std::int32_t status = 77;
      EXPECT_EQ(Told(vlListGetListStatus(connection, 1, &status), status), "ConnectionAborted 77") << offset;
      EXPECT_LT(watch.Milliseconds(), Prompt) << offset;
      EXPECT_FAILS(vlListGetListStatus(connection, 1, &status), "Connection not active!");
    }
  }
}

TEST(Calls, RefuseAnswersOfAnotherKindAndGoOn) {
  std::string bytes;
  FakeCard card(FakeCard::Answering([&](const Request& request) {
    return request.Method == "GetListStatus"
               ? Frame(0x01, std::string(1, static_cast<char>(request.Id)) + bytes)
               : Response(request.Id, false);
  }));
  Connection connection(card.Port());
  const std::pair<std::string, const char*> cases[] = {
      {"\xC0", "std::bad_cast"},
      {"\xA1x", "std::bad_cast"},
      {"\xCE\xFF\xFF\xFF\xFF", "std::bad_cast"},
      {"", "Invalid packet!"},
      {"\xCE\x01", "Invalid packet!"},
      {"\xC1", "Invalid packet!"},
      {"\xDD\xFF\xFF\xFF\xFF", "Invalid packet!"},
      {"\xDF\xFF\xFF\xFF\xFF", "Invalid packet!"},
      {std::string(20000, '\xDD') + "\xFF\xFF\xFF\xFF", "Invalid packet!"},
      {std::string(100000, '\x91'), "Invalid packet!"},
  };
  for (const auto& [answer, text] : cases) {
    bytes = answer;
    std::int32_t status = 77;
    EXPECT_THAT(Told(vlListGetListStatus(connection, 1, &status), status),
                AllOf(StartsWith(text), EndsWith(" 77")));
    bool running = true;
    EXPECT_EQ(Told(vlListIsExecutionInProgress(connection, &running), running), "0 0");
  }
}

TEST(Calls, AHeaderThatClaimsMuchCostsNothing) {
  const FakeConnection connection(FakeCard::Then([](Peer& peer, const Request&) {
    peer.Send(std::string("\x94\x01\xF0\xFF\xFF\x7F", 6) + std::string(1000, 'x'));
  }));
  vlSetTimeout(connection, 300);
  const std::size_t before = ResidentBytes();
  EXPECT_EQ(vlListExecute(connection, 1), -1);
  EXPECT_LT(ResidentBytes(), before + (64 << 20)) << "2 GiB were claimed";
}

TEST(Calls, LargeAnswersAreNotManyTimesLargerInMemory) {
  SKIP_UNDER_THREAD_SANITIZER();
  constexpr std::size_t Size = 40 << 20;
  const auto times = [](std::string_view piece, std::size_t size) {
    std::string text;
    for (text.reserve(size); text.size() < size;) text += piece;
    return text;
  };
  const std::string nils = "\xDD\x02\x80" + std::string(2, '\0') + std::string(Size, '\xC0');
  const std::string errors = times("\x93\xA0\xC0", Size) + "\xC0";
  // As many commands without values as a list of that size holds.
  const std::string list =
      std::string("\xDD\x00\x9F\xFF\xFF\xFF", 6) + times(std::string("\x92\x00\xC4\x00", 4), Size);
  const struct {
    unsigned char type;
    const std::string& body;
    bool isKnown;
    const char* text;
  } cases[] = {
      {0x01, nils, true, "Invalid packet! The body claims or holds too many values."},
      {0x81, errors, true, "Invalid packet! The body claims or holds too many values."},
      {0x82, errors, false, "ConnectionAborted"},
      {0x01, list, true, ""},
  };
  for (const auto& one : cases) {
    FakeCard card(FakeCard::Then([&](Peer& peer, const Request& request) {
      peer.Send(Frame(one.type, (one.isKnown ? Packed(request.Id) : std::string()) + one.body));
    }));
    const std::int32_t handle = vlConnect("127.0.0.1", card.Port());
    const std::int64_t local = vlListAllocate(handle);
    vlSetTimeout(handle, 600000);
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    std::vector<std::uint32_t> values(1);
    std::uint32_t count = 0;
    const bool isList = &one.body == &list;
    EXPECT_EQ(isList ? vlListGet(handle, 1, local)
                     : vlLaserGetPowerCalibration(handle, 0, values.data(), 1, &count),
              isList ? 0 : -1);
    EXPECT_EQ(LastError(), one.text);
    EXPECT_EQ(vlListCommandCount(local), isList ? 0x9FFFFE : 0);
    const Stopwatch watch;
    const std::clock_t begin = std::clock();  // of the processor, whatever else it does
    EXPECT_OK(vlDisconnect(handle));
    EXPECT_LT(std::clock() - begin, (Sanitized ? 10 : 0.6) * CLOCKS_PER_SEC);
    EXPECT_LT(watch.Milliseconds(), Prompt);
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    // The card's copies and ours are of the order of the answer.
    EXPECT_TRUE(Sanitized || after.ru_maxrss - before.ru_maxrss < 10 * static_cast<long>(Size >> 10))
        << after.ru_maxrss - before.ru_maxrss << " KiB more, " << one.text;
  }
}

TEST(Calls, LeaveAtOnceWhileAnEarlierOneIsUnanswered) {
  // The first call is answered only after the second has come: with small frames held back until the first is
  // acknowledged, that takes 40 ms and more.
  const FakeConnection connection([](Peer& peer) {
    if (!peer.Handshake()) return;
    for (Request first, second; peer.Next(first) && peer.Next(second);) {
      peer.Send(Response(second.Id, false));
      peer.Send(Response(first.Id, false));
    }
  });
  bool ignored = false;
  constexpr int Rounds = 20;
  double best = 1e9;
  for (int attempt = 0; attempt < 100 && best >= Rounds * 20; ++attempt) {  // others may use the machine, too
    const Stopwatch watch;
    std::thread other([&] {
      for (int i = 0; i < Rounds; ++i) vlListIsExecutionInProgress(connection, &ignored);
    });
    for (int i = 0; i < Rounds; ++i) EXPECT_OK(vlListExecute(connection, 1));
    other.join();
    best = std::min(best, watch.Milliseconds());
  }
  EXPECT_LT(best, Rounds * 20);
}

TEST(Log, HoldsTheVersionsThenTheCalls) {
  FakeCard card(FakeCard::Answering([](const Request& request) {
    return request.Method == "ExecuteList" ? ErrorResponse(request.Id, {"No such\0list\nforged", 19})
                                           : Response(request.Id, true);
  }));
  Connection connection(card.Port());
  const TemporaryDirectory directory;
  const std::string path = directory.Path + "/command.log";
  ASSERT_OK(vlEnableCommandLogging(connection, path.c_str(), -1));
  ASSERT_OK(vlEnableCommandLogging(connection, path.c_str(), -1)) << "a second time replaces it";
  bool running = false;
  vlListIsExecutionInProgress(connection, &running);
  EXPECT_EQ(vlListExecute(connection, 42), -1);
  const std::string dashes(36, '-');
  EXPECT_THAT(LastError(), StartsWith("BeginException" + dashes + "\nNo such\\0list\nforged\nInner"));
  ASSERT_OK(vlDisableCommandLogging(connection));
  vlListExecute(connection, 43);

  std::ifstream file(path);
  std::string line;
  const std::string expected[] = {
      "Logging enabled",
      "Client Version=3.10.3.3013 Firmware Version=1.2.3, Card Serial Number=12345",
      "TX: IsExecutionInProgress( )",
      "RX: IsExecutionInProgress( 1 )",
      "TX: ExecuteList( 42 )",
      "RX: ExecuteList( BeginException" + dashes + R"(\nNo such\\0list\nforged\nInner)",
      "Logging disabled",
  };
  for (const std::string& text : expected) {
    ASSERT_TRUE(std::getline(file, line));
    EXPECT_EQ(line.find(text), 31U) << line;
  }
  EXPECT_FALSE(std::getline(file, line)) << line;
  EXPECT_FAILS(vlEnableCommandLogging(connection, "/no/such/folder/log", -1),
               "Unable to open log file '/no/such/folder/log': No such file or directory");
  EXPECT_FAILS(vlEnableCommandLogging(connection, "/dev/full", -1),
               "Unable to write log file '/dev/full': No space left on device");
  const std::string pipe = directory.Path + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_OK(vlEnableCommandLogging(connection, pipe.c_str(), -1));
  char bytes[100] = "";
  EXPECT_GT(read(reader, bytes, sizeof bytes - 1), 0);
  EXPECT_NE(std::string(bytes).find("\tLogging enabled\n"), std::string::npos) << bytes;
  while (read(reader, bytes, sizeof bytes) > 0) continue;
  // One that is full, or that nobody reads any more, costs lines and nothing else.
  for (int i = 0; i < 1000; ++i) ASSERT_OK(vlListIsExecutionInProgress(connection, &running));
  close(reader);
  EXPECT_OK(vlListIsExecutionInProgress(connection, &running));
  EXPECT_FAILS(vlDisableCommandLogging(connection), "Unable to write log file '" + pipe + "': Broken pipe");
  EXPECT_FAILS(vlEnableCommandLogging(connection, pipe.c_str(), -1),
               "Unable to open log file '" + pipe + "': No such device or address");
  Together(4, [&](std::uint32_t) {
    for (int i = 0; i < 20000; ++i) {  // so often, and so quickly, that they meet
      ASSERT_OK(vlEnableCommandLogging(connection, "/dev/null", -1));
    }
  });
  EXPECT_OK(vlEnableCommandLogging(connection, directory.Path.c_str(), 0));
  EXPECT_TRUE(std::ifstream(directory.Path + "/KELVOrpc").good());
}

// The lines of a recording without their times.
std::vector<std::string> RecordedLines(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("{\"time\":")) line.erase(0, line.find(',') + 1);
    lines.push_back(line);
  }
  return lines;
}

TEST(Recording, HoldsCallsAnswersAndNotifications) {
  FakeCard card(FakeCard::Answering([](const Request& request) {
    return request.Method == "ExecuteList" ? Notification(1, 42) + ErrorResponse(request.Id, "No such list")
                                           : Response(request.Id, true);
  }));
  const TemporaryDirectory directory;
  const std::string path = directory.Path + "/session.jsonl";
  Connection connection(card.Port());
  ASSERT_OK(vlDisableRecording(connection)) << "there is none";
  ASSERT_OK(vlEnableRecording(connection, (directory.Path + "/earlier").c_str()));
  ASSERT_OK(vlEnableRecording(connection, path.c_str())) << "a second time replaces it";
  bool running = false;
  ASSERT_OK(vlListIsExecutionInProgress(connection, &running));
  EXPECT_EQ(vlListExecute(connection, 42), -1);
  ASSERT_OK(vlDisableRecording(connection));
  vlListExecute(connection, 43);

  const std::vector<std::string> lines = RecordedLines(path);
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_THAT(lines[0], AllOf(StartsWith("{\"kelvoSession\":1,\"started\":\"20"),
                              EndsWith(R"("firmware":"1.2.3","serialNumber":"12345"})")));
  const std::string sent = R"("connection":1,"way":"to card","kind":)";
  const std::string received = R"("connection":1,"way":"from card","kind":)";
  EXPECT_THAT(lines[1], AllOf(StartsWith(sent + R"("request","id":)"),
                              EndsWith(R"("method":"IsExecutionInProgress","arguments":[]})")));
  EXPECT_THAT(lines[2], AllOf(StartsWith(received + R"("response","id":)"),
                              EndsWith(R"("method":"IsExecutionInProgress","result":true})")));
  EXPECT_THAT(lines[3], EndsWith(R"("method":"ExecuteList","arguments":[42]})"));
  EXPECT_EQ(lines[4], received + R"("notification","values":[1,42]})");
  EXPECT_THAT(lines[5], EndsWith(R"("method":"ExecuteList","error":["No such list",null,null]})"));
  EXPECT_EQ(RecordedLines(directory.Path + "/earlier").size(), 1U);

  EXPECT_FAILS(vlEnableRecording(connection, "/no/such/folder/s"),
               "Unable to open recording '/no/such/folder/s': No such file or directory");
  EXPECT_FAILS(vlEnableRecording(connection, Device("full").c_str()),
               "Unable to write recording '" + Device("full") + "': No space left on device");
  // A disk that fails later hurts no call, and is told at the end.
  const std::string pipe = directory.Path + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_OK(vlEnableRecording(connection, pipe.c_str()));
  close(reader);
  for (int i = 0; i < 100; ++i) ASSERT_OK(vlListIsExecutionInProgress(connection, &running));
  EXPECT_FAILS(vlDisableRecording(connection), "Unable to write recording '" + pipe + "': Broken pipe");
  // After so many answers the calling thread reads them itself.
  ASSERT_OK(vlEnableRecording(connection, path.c_str()));
  for (int i = 0; i < 200; ++i) ASSERT_OK(vlListIsExecutionInProgress(connection, &running));
  ASSERT_OK(vlDisableRecording(connection));
  EXPECT_EQ(RecordedLines(path).size(), 1U + 2 * 200);
  // Begun and ended while calls run: whatever was recorded is whole.
  Together(4, [&](std::uint32_t thread) {
    bool isRunning = false;
    for (int i = 0; i < 500; ++i) {
      if (thread > 0) {
        ASSERT_OK(vlListIsExecutionInProgress(connection, &isRunning));
      } else {
        ASSERT_OK(vlEnableRecording(connection, path.c_str()));
      }
    }
  });
  vlDisconnect(connection);
  for (const std::string& line : RecordedLines(path)) EXPECT_THAT(line, EndsWith("}"));
  EXPECT_EQ(RecordedLines(path).back(), sent + "\"ended\"}");

  // So does a card's end.
  FakeCard leaving([](Peer& peer) { static_cast<void>(peer.Handshake() && peer.Fill(6)); });
  Connection left(leaving.Port());
  ASSERT_OK(vlEnableRecording(left, path.c_str()));
  vlListExecute(left, 1);
  vlDisableRecording(left);
  EXPECT_EQ(RecordedLines(path).back(), received + "\"ended\"}");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
