// The connection from the inside: connecting, waiting, reading, ending, each with time-outs of the test's
// own. And who gets which answer.
#include <sched.h>

#include <future>

#include "Helpers.h"
#include "client/ClientAPI.h"
#include "rpc/Inbox.h"
#include "rpc/RpcClient.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {
namespace {

const IPAddress Loopback = IPAddress::Resolve("127.0.0.1");

RpcClientConfiguration Configuration(int port) {
  RpcClientConfiguration configuration;
  configuration.Address = Loopback;
  configuration.Port = port;
  configuration.ReceiveTimeout = std::chrono::minutes(1);
  return configuration;
}

TEST(Adapter, GivesUpConnectingAfterItsTimeout) {
  BlackHole hole;
  ClientAdapter adapter;
  const Stopwatch watch;
  EXPECT_FAILURE(adapter.Connect(Loopback, hole.Port, 200, 1),
                 "Error: Cannot open connection to 127.0.0.1/" + std::to_string(hole.Port) + ".");
  EXPECT_GE(watch.Milliseconds(), 199);
  EXPECT_LT(watch.Milliseconds(), 10000);
}

// On one processor everybody goes ahead of this thread, so a card that speaks first is heard before Connect returns.
TEST(Adapter, KnowsItsHandleWhenTheFirstNotificationComes) {
  std::thread([] {
    cpu_set_t one{};
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
    const sched_param none{};
    EXPECT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(sched_setscheduler(0, SCHED_IDLE | SCHED_RESET_ON_FORK, &none), 0);
    FakeCard card([](Peer& peer) {
      peer.Send(Notification(0x11, 5));
      peer.WaitForEnd();
    });
    ClientAdapter adapter;
    std::promise<int> told;
    adapter.GetListEvents().RegisterCallback(ListEventKind::Progress,
                                             [&](int handle, int) { told.set_value(handle); });
    adapter.Connect(Loopback, card.Port(), 60000, 7);
    auto handle = told.get_future();
    ASSERT_EQ(handle.wait_for(std::chrono::minutes(1)), std::future_status::ready);
    EXPECT_EQ(handle.get(), 7);
    adapter.Disconnect();
  }).join();
}

TEST(Adapter, ADisconnectBeforeTheConnectIsRemembered) {
  BlackHole hole;
  const AtMost promptly(20000);
  RpcClient client(Configuration(hole.Port));
  client.End();
  EXPECT_FAILURE(client.Start(), "Unable to connect to 127.0.0.1:" + std::to_string(hole.Port) + ".");
  ClientAdapter adapter;
  adapter.End();
  EXPECT_FAILURE(adapter.Connect(Loopback, hole.Port, 60000, 1), "ConnectionAborted");
}

TEST(Adapter, RefusesToConnectTwiceAndGoesOn) {
  FakeCard card(FakeCard::Obliging());
  ClientAPI client;
  client.Connect(Loopback, card.Port(), 7);
  EXPECT_EQ(client.GetConnectionId(), 7);
  EXPECT_FAILURE(client.Connect(Loopback, card.Port(), 8),
                 "Cannot connect to 127.0.0.1/" + std::to_string(card.Port()) + ": Already connected.");
  EXPECT_FALSE(client.Call<bool>(UncheckedMethod{"IsExecutionInProgress"}));
  EXPECT_EQ(client.GetConnectionId(), 7);
  client.Disconnect();
  EXPECT_FAILURE(client.Call(UncheckedMethod{"Anything"}), "Connection not active!");
  client.Connect(Loopback, card.Port(), 9);
  EXPECT_FALSE(client.Call<bool>(UncheckedMethod{"IsExecutionInProgress"}))
      << "a new connection of the same adapter";
}

TEST(Client, SaysWhatIsWrong) {
  FakeCard card(FakeCard::Obliging());
  RpcClient client(Configuration(card.Port()));
  EXPECT_FAILURE(client.Call(UncheckedMethod{"Anything"}), "Connection not active!");
  EXPECT_FAILURE(client.EnableLogging("/tmp/never", false, true, 0),
                 "Connection must be enabled to start logging!");
  client.Start();
  EXPECT_FAILURE(client.Start(), "Client is already started!");
  RpcClient refused(Configuration(1));
  EXPECT_FAILURE(refused.Start(), "Unable to connect to 127.0.0.1:1.");
  RpcClientConfiguration nowhere;
  RpcClient lost(nowhere);
  EXPECT_FAILURE(lost.Start(), "\"GetSockaddr\" failed because there was no IPv4 or IPv6 address given.");
  EXPECT_FAILURE(ClientTransport transport(nullptr), "Instance must not be null!");
}

TEST(Client, NumbersItsRequestsAlsoThoseThatFail) {
  std::vector<std::uint32_t> ids;
  FakeCard card([&](Peer& peer) {
    for (Request request; peer.Next(request);) {
      ids.push_back(request.Id);
      peer.Send(Response(request.Id, "text"));
    }
  });
  RpcClient client(Configuration(card.Port()));
  EXPECT_NE(Failure([&] { client.Call(UncheckedMethod{"Refused"}); }), "no failure");
  client.Start();
  client.Call(UncheckedMethod{"A"});
  EXPECT_FAILURE(client.Call<int>(UncheckedMethod{"B"}), "std::bad_cast");
  EXPECT_EQ(client.Call<std::string>(UncheckedMethod{"C"}), "text");
  const auto raw = client.Call<msgpack::object>(UncheckedMethod{"D"});
  EXPECT_EQ(raw.Object.get().as<std::string>(), "text");
  client.Stop();
  EXPECT_EQ(ids, (std::vector<std::uint32_t>{1, 2, 3, 4}));
}

TEST(Client, ReadsFramesHoweverTheyArrive) {
  constexpr int Frames = 3000;
  for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{4096}, std::size_t{1} << 22}) {
    FakeCard card([&](Peer& peer) {
      Request request;
      if (!peer.Next(request)) return;
      std::string all;
      for (int i = 0; i < Frames; ++i) all += Notification(0x11, i);
      all += Response(request.Id, std::string(piece < 4096 ? 10 : 5 << 20, 'x'));
      all += Notification(0x11, Frames);
      for (std::string_view rest = all; !rest.empty(); rest.remove_prefix(std::min(piece, rest.size()))) {
        if (!peer.Send(rest.substr(0, piece))) return;
      }
      peer.Next(request);
      peer.Send(Response(request.Id, true));
    });
    auto configuration = Configuration(card.Port());
    int next = 0;
    configuration.NotificationCallback = [&](const RpcClientEvent& event) {
      next += event.Arguments.front().as<int>() == next;
    };
    RpcClient client(configuration);
    client.Start();
    const auto text = client.Call<std::string>(UncheckedMethod{"Text"});
    EXPECT_EQ(text.find_first_not_of('x'), std::string::npos);
    EXPECT_TRUE(client.Call<bool>(UncheckedMethod{"Last"}));
    EXPECT_EQ(next, Frames + 1) << "in pieces of " << piece;
  }
}

TEST(Client, WithoutACallbackDropsNotificationsAndLogsSo) {
  FakeCard card([](Peer& peer) {
    for (Request request; peer.Next(request);) {
      peer.Send(Notification(0x11, 1) + Frame(0x02, "\x07") + Response(request.Id, false));
    }
  });
  auto configuration = Configuration(card.Port());
  configuration.LoggingEnabled = true;
  const TemporaryDirectory directory;
  const std::string folder = directory.Path;
  configuration.LogFile = folder + "/transport.log";
  RpcClient client(configuration);
  client.Start();
  EXPECT_FALSE(client.Call<bool>(UncheckedMethod{"Anything"}));
  // What is logged, and where, stands in the configuration.
  const auto logging = [&] {
    return client.GetConfig().LogFile + (client.GetConfig().LoggingEnabled ? " on" : " off");
  };
  client.EnableLogging(folder, false, true, -1);
  EXPECT_EQ(logging(), folder + "/KELVOrpc on");
  client.DisableLogging();
  EXPECT_EQ(logging(), folder + "/KELVOrpc off");
  EXPECT_NE(Failure([&] { client.EnableLogging("/no/such/folder/log", false, true, -1); }), "no failure");
  EXPECT_EQ(logging(), "/no/such/folder/log off");
  client.Stop();
  const std::string log = ContentOf(configuration.LogFile);
  EXPECT_THAT(log, HasSubstr("\tReceived notification but no callback registered.\n"));
  EXPECT_THAT(log, HasSubstr("\tReceived invalid notification message!\n"));
}

// After a few calls in a row callers read their answers themselves, and what comes with them.
TEST(Client, CallersLeaveNothingUnreadAndRunNoCallback) {
  FakeCard card([](Peer& peer) {
    int told = 0;
    std::string half, kept;
    for (Request request; peer.Next(request);) {
      std::string answer = Response(request.Id, request.Method);
      if (request.Method == "First") {
        kept = answer;
        continue;
      }
      if (request.Method == "Behind") {
        answer = Notification(0x11, told + 1) + Notification(0x11, told + 2) + answer;
        told += 2;
      }
      if (request.Method == "Ahead") answer += Notification(0x11, ++told);
      answer = std::exchange(half, "") + answer + std::exchange(kept, "");
      if (request.Method == "Half") {
        half = answer.substr(3);
        answer.resize(3);
      }
      peer.Send(answer);
    }
  });
  auto configuration = Configuration(card.Port());
  std::atomic<int> told{0};
  std::thread::id receiver;
  configuration.NotificationCallback = [&](const RpcClientEvent& event) {
    if (told == 0) receiver = std::this_thread::get_id();
    const bool isNext = event.Arguments.front().as<int>() == told + 1;
    if (isNext && std::this_thread::get_id() == receiver) ++told;
  };
  RpcClient client(configuration);
  client.Start();
  const auto call = [&](const char* method) { return client.Call<std::string>(UncheckedMethod{method}); };
  const auto callAFew = [&] {
    for (int i = 0; i < 10; ++i) EXPECT_EQ(call("Plain"), "Plain");
  };
  double shortest = 1e9;
  for (int round = 0; round < 40; ++round) {
    callAFew();
    EXPECT_EQ(call("Behind"), "Behind");
    EXPECT_EQ(told, 3 * round + 2) << "callbacks that have run when the call returns";
    callAFew();
    EXPECT_EQ(call("Ahead"), "Ahead");
    for (const Stopwatch watch; told < 3 * round + 3 && watch.Milliseconds() < 60000;)
      std::this_thread::yield();
    ASSERT_EQ(told, 3 * round + 3) << "what came behind the answer waits for nobody";
    callAFew();
    // Whoever reads first hands the others their answers, and what is left to the receive thread.
    auto first = std::async(std::launch::async, call, "First");
    while (first.wait_for(std::chrono::microseconds(100)) != std::future_status::ready) call("Plain");
    EXPECT_EQ(first.get(), "First");
    callAFew();
    client.SetReceiveTimeout(std::chrono::milliseconds(2));
    const Stopwatch watch;
    EXPECT_EQ(Failure([&] { call("Half"); }), "Response was not received in the given timespan.");
    shortest = std::min<double>(shortest, watch.Milliseconds());
    client.SetReceiveTimeout(std::chrono::minutes(1));
  }
  EXPECT_LT(shortest, 1000) << "a wait ends with its time-out, however long a read may last";
  EXPECT_NE(receiver, std::this_thread::get_id());
}

// The socket of this process that is connected to the port.
int SocketTo(int port) {
  for (int socket = 3; socket < 1024; ++socket) {
    sockaddr_in place{};
    socklen_t length = sizeof place;
    const bool isConnected = getpeername(socket, reinterpret_cast<sockaddr*>(&place), &length) == 0;
    if (isConnected && place.sin_family == AF_INET &&
        place.sin_port == htons(static_cast<std::uint16_t>(port)))
      return socket;
  }
  return -1;
}

// Reads end after some seconds with nothing; made short, so that many do while everybody waits.
TEST(Client, OutlastsReadsThatEndWithNothing) {
  constexpr auto ManyReads = std::chrono::milliseconds(300);
  FakeCard card([&](Peer& peer) {
    for (Request request; peer.Next(request);) {
      if (request.Method == "Late") std::this_thread::sleep_for(ManyReads);
      peer.Send(Response(request.Id, request.Method));
      if (request.Method != "Told") continue;
      std::this_thread::sleep_for(ManyReads);
      peer.Send(Notification(0x11, 1));
    }
  });
  auto configuration = Configuration(card.Port());
  std::promise<void> told;
  configuration.NotificationCallback = [&](const RpcClientEvent&) { told.set_value(); };
  RpcClient client(configuration);
  client.Start();
  const timeval shortly{0, 10000};
  ASSERT_EQ(setsockopt(SocketTo(card.Port()), SOL_SOCKET, SO_RCVTIMEO, &shortly, sizeof shortly), 0);
  const auto call = [&](const char* method) { return client.Call<std::string>(UncheckedMethod{method}); };
  // The receive thread waits, and then callers do.
  EXPECT_EQ(call("Told"), "Told");
  EXPECT_EQ(told.get_future().wait_for(std::chrono::minutes(1)), std::future_status::ready);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(call("Plain"), "Plain");
  EXPECT_EQ(call("Late"), "Late");
}

TEST(Transport, KeepsALateAnswerForWhoeverAsks) {
  FakeCard card([](Peer& peer) {
    Request late;
    Request next;
    if (!peer.Next(late) || !peer.Next(next)) return;
    peer.Send(Response(late.Id, 41) + Response(next.Id, 42));
    peer.WaitForEnd();
  });
  struct Settings : Context {
    const RpcClientConfiguration& GetConfig() const override { return configuration; }
    RpcClientConfiguration configuration;
  } context;
  context.configuration = Configuration(card.Port());
  ClientTransport transport(&context);
  ASSERT_TRUE(transport.Run());
  const auto request = [](std::uint32_t id) { return FrameOf(0x00, id, "Method", std::vector<int>{}); };
  const auto exchange = [&](std::uint32_t id, int timeout) {
    const std::string frame = request(id);
    return transport.Exchange(id, {{{reinterpret_cast<const unsigned char*>(frame.data()), frame.size()}}},
                              std::chrono::milliseconds(timeout));
  };
  EXPECT_FAILURE(exchange(5, 20), "Response was not received in the given timespan.");
  EXPECT_EQ(exchange(6, 60000).Unpack().get().as<int>(), 42);
  EXPECT_EQ(transport.Read(5, std::chrono::milliseconds(0)).Unpack().get().as<int>(), 41);
  EXPECT_FAILURE(transport.Read(5, std::chrono::milliseconds(0)),
                 "Response was not received in the given timespan.");
  transport.StopRunning();
  EXPECT_FAILURE(transport.checkActive(), "ConnectionAborted");
}

using std::chrono::milliseconds;
constexpr milliseconds Now{0};
constexpr milliseconds Long{60000};
constexpr const char* TimedOut = "Response was not received in the given timespan.";

Inbox::Arrival Arrived(const std::string& frame) {
  return Inbox::Arrival(Unsigned(frame));
}

// What a ticket for `id` yields until `deadline`.
std::string Ask(
    Inbox& inbox, std::uint32_t id, bool takeKept, Deadline deadline = DeadlineAfter(Now),
    const std::function<void()>& asked = [] {}) {
  std::string text;
  const std::string failure = Failure([&] {
    Inbox::Ticket ticket(inbox, id, takeKept);
    asked();
    text = ticket.Wait(deadline).Unpack().get().as<std::string>();
  });
  return text.empty() ? failure : text;
}

TEST(Inbox, LateAnswersAreKeptForWhoAsksForThemAndReplaced) {
  Inbox inbox;
  inbox.Deliver(Arrived(Response(5, "older")));
  inbox.Deliver(Arrived(Response(5, "newer")));
  EXPECT_EQ(Ask(inbox, 6, true), TimedOut);
  EXPECT_EQ(Ask(inbox, 5, true), "newer");
  EXPECT_EQ(Ask(inbox, 5, true), TimedOut);  // taken
  inbox.Deliver(Arrived(Response(5, "of another age")));
  EXPECT_EQ(Ask(inbox, 5, false), TimedOut);  // a new request of the same number
  EXPECT_EQ(inbox.GetUnclaimedCount(), 0U);
  for (std::uint32_t id = 0; id < Inbox::MostUnclaimed; ++id) inbox.Deliver(Arrived(Response(id, "x")));
  inbox.Deliver(Arrived(Response(0, "x again")));  // now the newest
  inbox.Deliver(Arrived(Response(1000, "y")));
  EXPECT_EQ(inbox.GetUnclaimedCount(), Inbox::MostUnclaimed);
  EXPECT_EQ(Ask(inbox, 1, true), TimedOut);
  EXPECT_EQ(Ask(inbox, 2, true), "x");
  EXPECT_EQ(Ask(inbox, 0, true), "x again");
  EXPECT_EQ(Ask(inbox, 1000, true), "y");
  inbox.Close();
  EXPECT_EQ(Ask(inbox, 9, false, DeadlineAfter(Long)), "ConnectionAborted");
  inbox.Open();  // forgets what was kept
  EXPECT_EQ(Ask(inbox, 3, true), TimedOut);
  const std::string megabyte(1 << 20, 'm');  // large ones count by their bytes
  for (std::uint32_t id = 0; id < 6; ++id) inbox.Deliver(Arrived(Response(id, megabyte)));
  EXPECT_EQ(inbox.GetUnclaimedCount(), 3U);
  EXPECT_EQ(Ask(inbox, 2, true), TimedOut);
  EXPECT_EQ(Ask(inbox, 3, true), megabyte);
}

TEST(Inbox, ATicketNobodyWaitedForLeavesTheNextWaitAlone) {
  for (const int meanwhile : {0, 1, 2}) {
    Inbox inbox;
    inbox.Deliver(Arrived(Response(0, "kept")));
    { const Inbox::Ticket keptForIt(inbox, 0, true); }
    {
      const Inbox::Ticket dropped(inbox, 1, false);
      if (meanwhile == 1) inbox.Deliver(Arrived(Response(1, "x")));
      if (meanwhile == 2) inbox.Close();
    }
    inbox.Open();
    EXPECT_EQ(Ask(inbox, 2, false, DeadlineAfter(milliseconds(5))), TimedOut);
    const auto deliver = [&] { inbox.Deliver(Arrived(Response(3, "next"))); };
    EXPECT_EQ(Ask(inbox, 3, false, DeadlineAfter(Long), deliver), "next");
  }
}

TEST(Inbox, WakesALoneWaiter) {
  for (const bool isDelivered : {true, false}) {
    Inbox inbox;
    const AtMost promptly(30000);
    std::jthread waking;
    const auto wakeSoon = [&] {
      waking = std::jthread([&] {
        std::this_thread::sleep_for(milliseconds(50));  // it waits by now; if not, it is not less woken
        isDelivered ? static_cast<void>(inbox.Deliver(Arrived(Response(1, "x")))) : inbox.Close();
      });
    };
    EXPECT_EQ(Ask(inbox, 1, false, DeadlineAfter(Long), wakeSoon), isDelivered ? "x" : "ConnectionAborted");
  }
}

TEST(Inbox, AnAnswerThatRacesWithTheTimeOutIsEitherTakenOrKept) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    Inbox inbox;
    std::atomic<std::uint32_t> asked[4] = {};  // the number of the latest question
    std::atomic<std::uint32_t> timedOut = 0;
    Together(8, [&](std::uint32_t party) {
      std::mt19937 random(seed * 100 + party);
      const auto soon = [&](unsigned most) {
        return std::chrono::steady_clock::now() + std::chrono::microseconds(random() % most);
      };
      auto& latest = asked[party / 2];
      for (std::uint32_t round = 1; round <= 60; ++round) {  // in all no more than are kept
        const std::uint32_t id = party / 2 * 1000 + round;
        if (party % 2 == 0) {
          const std::string text = Ask(inbox, id, true, soon(100), [&] {
            latest = round;
            latest.notify_one();
          });
          timedOut += text == TimedOut;
          EXPECT_TRUE(text == TimedOut || text == std::to_string(id)) << text;
        } else {
          for (std::uint32_t seen = latest; seen < round; seen = latest) latest.wait(seen);
          const auto when = soon(60);
          while (std::chrono::steady_clock::now() < when) std::this_thread::yield();
          inbox.Deliver(Arrived(Response(id, std::to_string(id))));
        }
      }
    });
    EXPECT_EQ(inbox.GetUnclaimedCount(), timedOut);
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
