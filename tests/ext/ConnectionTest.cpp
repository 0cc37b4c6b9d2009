// Connections through the exported functions, against a card that misbehaves on purpose.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>

#include "support/FakeCard.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {
namespace {

constexpr double Prompt = 2000;  // milliseconds; time-outs that would show are far longer

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
  FakeCard refusing([](Peer& peer) {
    Request request;
    if (peer.Next(request)) peer.Send(ErrorResponse(request.Id, "Library too old"));
    peer.WaitForEnd();
  });
  FakeCard leaving([](Peer&) {});
  FakeCard babbling([](Peer& peer) {
    peer.Send("HTTP/1.1 200 OK\r\n\r\n");
    peer.WaitForEnd();
  });
  FakeCard mistyping([](Peer& peer) {
    Request request;
    while (peer.Next(request)) peer.Send(Response(request.Id, 7));
  });
  const struct {
    const char* host;
    int port;
    const char* text;
  } cases[] = {
      {"no.such.host.invalid", 1, "Invalid IP address or unable to resolve host name with DNS."},
      {"", 1, "Invalid IP address or unable to resolve host name with DNS."},
      {nullptr, 1, "A null pointer was passed for 'host'."},
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
    const Stopwatch watch;
    EXPECT_EQ(vlConnect(host, port), -1);
    EXPECT_NE(LastError().find(text), std::string::npos) << text;
    EXPECT_EQ(LastError(), "") << "reading it clears it";
    EXPECT_LT(watch.Milliseconds(), Prompt) << text;
  }
}

TEST(Handles, RiseAndAreNotUsedAgain) {
  FakeCard card(FakeCard::Obliging());
  const std::int32_t first = vlConnect("127.0.0.1", card.Port());
  EXPECT_EQ(vlDisconnect(first), 0);
  const std::int32_t second = vlConnect("localhost", card.Port());
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(vlConnect("no.such.host.invalid", card.Port()), -1);
  EXPECT_EQ(vlConnect("127.0.0.1", 1), -1) << "uses up a handle";
  const std::int32_t third = vlConnect("127.0.0.1", card.Port());
  EXPECT_EQ(third, second + 2);
  EXPECT_EQ(vlDisconnect(second) + vlDisconnect(third), 0);
  EXPECT_EQ(vlDisconnect(second), -1);
  EXPECT_EQ(LastError(), "There is no connection corresponding to this handle.");
}

TEST(Handles, AHandleThatIsNoneIsNotConnected) {
  for (const std::int32_t handle : {-5, 0, 123456}) {
    bool connected = true;
    EXPECT_EQ(vlIsConnected(handle, &connected), 0);
    EXPECT_FALSE(connected);
    EXPECT_EQ(LastError(), "");
  }
  EXPECT_EQ(vlIsConnected(1, nullptr), -1);
}

TEST(Calls, EndWhenTheCardDoesNotAnswer) {
  FakeCard card(FakeCard::Answering([](const Request&) { return std::string(); }));
  Connection connection(card.Port());
  std::uint32_t timeout = 0;
  EXPECT_EQ(vlGetTimeout(connection, &timeout), 0);
  EXPECT_EQ(timeout, 17000U);
  ASSERT_EQ(vlSetTimeout(connection, 150), 0);
  EXPECT_EQ(vlGetTimeout(connection, &timeout), 0);
  EXPECT_EQ(timeout, 150U);
  const Stopwatch watch;
  EXPECT_EQ(vlListExecute(connection, 1), -1);
  EXPECT_EQ(LastError(), "Response was not received in the given timespan.");
  EXPECT_GE(watch.Milliseconds(), 149);
  EXPECT_LT(watch.Milliseconds(), Prompt);
}

TEST(Calls, EndWhenTheCardStopsReading) {
  FakeCard card([](Peer& peer) {
    if (peer.Handshake()) peer.WaitForEnd();
  });
  Connection connection(card.Port());
  const std::int64_t list = vlListAllocate(connection);
  for (int i = 0; i < 400000; ++i) vlListAppendMarkAbs2D(list, i, i);
  vlSetTimeout(connection, 200);
  std::string text;
  const Stopwatch watch;
  // Pieces go out until the sockets' buffers are full; then one is stuck.
  for (int i = 0; i < 20 && text != "Socket error, unable to send!" && text != "Connection not active!";
       ++i) {
    ASSERT_EQ(vlListSet(connection, 1, list, false, -1), -1);
    text = LastError();
  }
  EXPECT_EQ(text, "Socket error, unable to send!");
  EXPECT_LT(watch.Milliseconds(), 20 * 200 + Prompt);
  bool connected = true;
  EXPECT_EQ(vlIsConnected(connection, &connected), 0);
  EXPECT_FALSE(connected) << "half a frame has broken the stream";
}

TEST(Calls, EndAtOnceWhenTheConnectionIsEnded) {
  std::atomic<bool> reached{false};
  FakeCard card([&](Peer& peer) {
    Request request;
    if (!peer.Handshake() || !peer.Next(request)) return;
    reached = true;  // and never answers, nor reads on
    peer.WaitForEnd();
  });
  const struct {
    const char* state;
    std::function<int(std::int32_t handle, std::int64_t list)> call;
  } cases[] = {
      {"waiting for an answer", [](std::int32_t handle, std::int64_t) { return vlListExecute(handle, 1); }},
      {"sending to a card that does not read",
       [](std::int32_t handle, std::int64_t list) {
         std::atomic<int> result = 0;
         std::vector<std::thread> uploads;
         for (int i = 0; i < 8; ++i)
           uploads.emplace_back([&] { result = vlListSet(handle, 1, list, false, -1); });
         for (std::thread& upload : uploads) upload.join();
         return result.load();
       }},
      {"waiting for an event",
       [&](std::int32_t handle, std::int64_t) {
         std::int32_t value = 0;
         reached = true;
         return vlListWaitForListDone(handle, &value, 600000);
       }},
  };
  for (const auto& one : cases) {
    reached = false;
    const std::int32_t handle = vlConnect("127.0.0.1", card.Port());
    const std::int64_t list = vlListAllocate(handle);
    for (int i = 0; i < 200000; ++i) vlListAppendMarkAbs2D(list, i, i);
    std::thread calling([&] { EXPECT_EQ(one.call(handle, list), -1) << one.state; });
    while (!reached) std::this_thread::yield();
    usleep(20000);  // into the middle of it; earlier or later the outcome is the same
    const Stopwatch watch;
    EXPECT_EQ(vlDisconnect(handle), 0);
    calling.join();
    EXPECT_LT(watch.Milliseconds(), Prompt) << one.state;
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
      EXPECT_EQ(vlListGetListStatus(connection, 1, &status), -1) << offset;
      EXPECT_EQ(LastError(), "ConnectionAborted") << offset;
      EXPECT_EQ(status, 77);
      EXPECT_LT(watch.Milliseconds(), Prompt) << offset;
      EXPECT_EQ(vlListGetListStatus(connection, 1, &status), -1);
      EXPECT_EQ(LastError(), "Connection not active!");
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
  const std::string nested = std::string(20000, '\xDD') + "\xFF\xFF\xFF\xFF";
  const struct {
    std::string bytes;
    const char* text;
  } cases[] = {
      {"\xC0", "std::bad_cast"},
      {"\xA1x", "std::bad_cast"},
      {"\xCE\xFF\xFF\xFF\xFF", "std::bad_cast"},
      {"", "Invalid packet!"},
      {"\xCE\x01", "Invalid packet!"},
      {"\xC1", "Invalid packet!"},
      {"\xDD\xFF\xFF\xFF\xFF", "Invalid packet!"},
      {"\xDF\xFF\xFF\xFF\xFF", "Invalid packet!"},
      {nested, "Invalid packet!"},
      {std::string(100000, '\x91'), "Invalid packet!"},
  };
  for (const auto& one : cases) {
    bytes = one.bytes;
    std::int32_t status = 77;
    EXPECT_EQ(vlListGetListStatus(connection, 1, &status), -1);
    EXPECT_NE(LastError().find(one.text), std::string::npos) << one.text;
    EXPECT_EQ(status, 77);
    bool running = true;
    EXPECT_EQ(vlListIsExecutionInProgress(connection, &running), 0) << LastError();
    EXPECT_FALSE(running);
  }
}

TEST(Calls, AHeaderThatClaimsMuchCostsNothing) {
  FakeCard card([](Peer& peer) {
    Request request;
    if (!peer.Handshake() || !peer.Next(request)) return;
    peer.Send(std::string("\x94\x01\xF0\xFF\xFF\x7F", 6) + std::string(1000, 'x'));
    peer.WaitForEnd();
  });
  Connection connection(card.Port());
  vlSetTimeout(connection, 300);
  const std::size_t before = ResidentBytes();
  EXPECT_EQ(vlListExecute(connection, 1), -1);
  EXPECT_LT(ResidentBytes(), before + (1 << 20));
}

TEST(Calls, LeaveAtOnceWhileAnEarlierOneIsUnanswered) {
  // The first call is answered only after the second has come: with small frames held back until the first is
  // acknowledged, that takes 40 ms and more.
  FakeCard card([](Peer& peer) {
    if (!peer.Handshake()) return;
    Request first;
    Request second;
    while (peer.Next(first) && peer.Next(second)) {
      peer.Send(Response(second.Id, false));
      peer.Send(Response(first.Id, false));
    }
  });
  Connection connection(card.Port());
  bool ignored = false;
  constexpr int Rounds = 20;
  const Stopwatch watch;
  std::thread other([&] {
    for (int i = 0; i < Rounds; ++i) vlListIsExecutionInProgress(connection, &ignored);
  });
  for (int i = 0; i < Rounds; ++i) EXPECT_EQ(vlListExecute(connection, 1), 0);
  other.join();
  EXPECT_LT(watch.Milliseconds(), Rounds * 20);
}

TEST(Log, HoldsTheVersionsThenTheCalls) {
  FakeCard card(FakeCard::Answering([](const Request& request) {
    return request.Method == "ExecuteList" ? ErrorResponse(request.Id, "No such list")
                                           : Response(request.Id, true);
  }));
  Connection connection(card.Port());
  const std::string path = testing::TempDir() + "kelvo-command.log";
  ASSERT_EQ(vlEnableCommandLogging(connection, path.c_str(), -1), 0) << LastError();
  ASSERT_EQ(vlEnableCommandLogging(connection, path.c_str(), -1), 0) << "a second time replaces it";
  bool running = false;
  vlListIsExecutionInProgress(connection, &running);
  vlListExecute(connection, 42);
  ASSERT_EQ(vlDisableCommandLogging(connection), 0);
  vlListExecute(connection, 43);

  std::ifstream file(path);
  std::string line;
  const char* expected[] = {
      "Logging enabled",
      "Client Version=3.10.3.3013 Firmware Version=1.2.3, Card Serial Number=12345",
      "TX: IsExecutionInProgress( )",
      "RX: IsExecutionInProgress( 1 )",
      "TX: ExecuteList( 42 )",
      "RX: ExecuteList( BeginException------------------------------------",
      "No such list",
  };
  for (const char* text : expected) {
    ASSERT_TRUE(std::getline(file, line));
    EXPECT_TRUE(line.ends_with(text)) << line;
  }
  std::string last;
  while (std::getline(file, line)) last = line;
  EXPECT_TRUE(last.ends_with("\tLogging disabled")) << last;
  EXPECT_EQ(vlEnableCommandLogging(connection, "/no/such/folder/log", -1), -1);
  EXPECT_EQ(LastError(), "Unable to open log file '/no/such/folder/log': No such file or directory");
  EXPECT_EQ(vlEnableCommandLogging(connection, testing::TempDir().c_str(), 0), 0);
  EXPECT_TRUE(std::ifstream(testing::TempDir() + "/KELVOrpc").good());
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
