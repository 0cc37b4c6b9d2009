// Many threads, many connections, many descriptors, processes that fork.
#include <sys/syscall.h>
#include <sys/time.h>

#include "support/FakeCard.h"

// A forked child lacks the other threads of its parent, and a leak check takes what they own for lost.
static bool isForkedChild = false;
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off() {
  return isForkedChild;
}

namespace VELTRO::KELVO::Test {
namespace {

std::int32_t FirstArgument(const Request& request) {
  return request.Arguments.get().via.array.ptr[0].as<std::int32_t>();
}

// The texts that a call may end with when its connection is ended under it.
bool IsAnEnd(const std::string& text) {
  static const std::set<std::string> ends = {"ConnectionAborted", "Connection not active!",
                                             "Socket error, unable to send!",
                                             "There is no connection corresponding to this handle."};
  return ends.contains(text);
}

TEST(Threads, EachGetsItsOwnAnswer) {
  constexpr int Callers = 16;
  constexpr int Rounds = 100;
  const FakeConnection connection([](Peer& peer) {
    std::mt19937 random(1);
    if (!peer.Handshake()) return;
    for (;;) {
      std::vector<Request> requests(Callers);
      for (Request& request : requests) {
        if (!peer.Next(request)) return;
      }
      std::shuffle(requests.begin(), requests.end(), random);
      std::string all;
      for (const Request& request : requests) all += Response(request.Id, FirstArgument(request) * 10);
      peer.Send(all);
    }
  });
  std::atomic<int> right{0};
  std::vector<std::thread> callers;
  for (int caller = 0; caller < Callers; ++caller) {
    callers.emplace_back([&, caller] {
      for (int round = 0; round < Rounds; ++round) {
        const int id = caller * Rounds + round;
        std::int32_t status = -1;
        right += vlListGetListStatus(connection, id, &status) == 0 && status == id * 10;
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(right, Callers * Rounds);
}

TEST(Threads, DisconnectWhileEightCall) {
  constexpr int Callers = 8;
  constexpr int Rounds = 1000;
  FakeCard card(FakeCard::Obliging());
  for (int round = 0; round < Rounds; ++round) {
    const std::int32_t handle = vlConnect("127.0.0.1", card.Port());
    ASSERT_GT(handle, 0) << LastError();
    std::atomic<int> started{0};
    std::vector<std::thread> callers;
    for (int caller = 0; caller < Callers; ++caller) {
      callers.emplace_back([&, caller] {
        for (;;) {
          std::int32_t value = 0;
          const int result =
              caller == 0 ? vlListWaitForListDone(handle, &value, -1) : vlListExecute(handle, caller);
          ++started;
          if (result == 0) continue;
          const std::string text = LastError();
          EXPECT_TRUE(result == -1 && IsAnEnd(text)) << result << " " << text;
          break;
        }
      });
    }
    while (started < round % 40) std::this_thread::yield();
    const Stopwatch watch;
    EXPECT_OK(vlDisconnect(handle));
    for (std::thread& caller : callers) caller.join();
    EXPECT_LT(watch.Milliseconds(), 5000);
  }
}

TEST(Resources, ElevenHundredDescriptorsAreNoneTooMany) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlim_t before = limit.rlim_cur;
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  std::vector<int> opened;
  while (opened.size() < 1100) opened.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
  ASSERT_GT(opened.back(), 1024);
  {
    const FakeConnection connection;
    bool running = true;
    EXPECT_OK(vlListIsExecutionInProgress(connection, &running));
    EXPECT_FALSE(running);
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      const int descriptor = std::stoi(entry.path().filename());
      if (descriptor <= opened.back() || fcntl(descriptor, F_GETFD) < 0) continue;
      EXPECT_TRUE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC) << descriptor;
    }
  }
  for (const int descriptor : opened) close(descriptor);
  limit.rlim_cur = before;
  setrlimit(RLIMIT_NOFILE, &limit);
}

TEST(Resources, SignalsInterruptNothing) {
  struct sigaction action {};
  struct sigaction earlier {};
  action.sa_handler = [](int) {};  // without SA_RESTART: system calls return EINTR
  sigaction(SIGALRM, &action, &earlier);
  const itimerval often{{0, 500}, {0, 500}};
  const itimerval never{};
  {
    FakeCard card(FakeCard::Obliging());
    setitimer(ITIMER_REAL, &often, nullptr);
    Connection connection(card.Port());
    const std::int64_t list = vlListAllocate(connection);
    for (int i = 0; i < 100000; ++i) vlListAppendMarkAbs2D(list, i, i);
    for (int i = 0; i < 20; ++i) {
      EXPECT_OK(vlListSet(connection, 1, list, false, -1));
      // The timer's are for whoever runs; these are also for those that wait, as the receive thread does.
      for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        syscall(SYS_tgkill, getpid(), std::stoi(thread.path().filename()), SIGALRM);
      }
    }
    setitimer(ITIMER_REAL, &never, nullptr);
  }
  sigaction(SIGALRM, &earlier, nullptr);
}

TEST(ResourcesDeathTest, TheExitOfAChildLeavesTheConnectionsToItsParent) {
  const FakeConnection connection;
  EXPECT_EXIT((isForkedChild = true, std::exit(0)), testing::ExitedWithCode(0), "");
  bool running = true;
  EXPECT_OK(vlListIsExecutionInProgress(connection, &running));
}

TEST(ResourcesDeathTest, AChildMayExitWhateverItsParentWasDoing) {
  const FakeConnection connection;
  std::atomic<bool> over{false};
  // As good as always one of them has the table of handles locked.
  std::vector<std::jthread> busy;
  for (int i = 0; i < 2; ++i) {
    busy.emplace_back([&] {
      for (bool up = false; !over;) vlIsConnected(connection, &up);
    });
  }
  for (int round = 0; round < 40; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      isForkedChild = true;
      alarm(10);  // ends it if it hangs
      const bool refused =
          vlDisconnect(connection) == -1 && LastError() == "The connection belongs to another process.";
      std::exit(refused ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      ADD_FAILURE() << "round " << round << ": status " << status;
      break;
    }
  }
  over = true;
  bool running = true;
  EXPECT_OK(vlListIsExecutionInProgress(connection, &running));
}

TEST(Waits, TellValueNothingAndFailureApart) {
  FakeCard card(FakeCard::Answering([](const Request& request) {
    const std::int32_t id = FirstArgument(request);
    return Notification(0x11, 10) + Notification(0x11, 20) + Notification(0x02, id) + Notification(0x01, id) +
           Response(request.Id, false);
  }));
  Connection connection(card.Port());
  std::int32_t value = 77;
  EXPECT_EQ(vlListWaitForProgress(connection, &value, 20), 1);
  EXPECT_EQ(LastError(), "");
  EXPECT_EQ(value, 77);
  ASSERT_OK(vlListExecute(connection, 9));
  EXPECT_OK(vlListWaitForProgress(connection, &value, -1));
  EXPECT_EQ(value, 10);
  EXPECT_OK(vlListWaitForListDone(connection, &value, 0));
  EXPECT_EQ(value, 9);
  EXPECT_OK(vlListClearPendingEvents(connection));
  EXPECT_EQ(vlListWaitForListIdle(connection, &value, 0), 1);
  std::thread interrupter([&] {
    usleep(20000);
    vlListInterruptWaitForListIdle(connection);
  });
  EXPECT_EQ(vlListWaitForListIdle(connection, &value, 10000), 1) << "interrupted";
  interrupter.join();
}

TEST(Waits, FailAtOnceWhenTheConnectionIsLost) {
  const FakeConnection connection([](Peer& peer) {
    Request request;
    if (!peer.Handshake() || !peer.Next(request)) return;
    peer.Send(Response(request.Id, false) + Notification(0x02, 3));
    usleep(50000);
  });
  ASSERT_OK(vlListExecute(connection, 3));
  const Stopwatch watch;
  std::int32_t value = 0;
  EXPECT_FAILS(vlListWaitForListIdle(connection, &value, 10000), "ConnectionAborted");
  EXPECT_OK(vlListWaitForListDone(connection, &value, 10000)) << "what has come is not lost";
  EXPECT_EQ(vlListWaitForListDone(connection, &value, 10000), -1);
  EXPECT_LT(watch.Milliseconds(), 2000);
}

TEST(Notifications, ThatMakeNoSenseEndTheConnectionWithALine) {
  const struct {
    std::string frame;
    const char* text;
  } cases[] = {
      {Notification(0x33, 1), "RpcEventType::_from_integral: invalid argument"},
      {FrameOf(0x02, std::make_tuple(0x11)), "Could not process event!"},
      {FrameOf(0x02, std::make_tuple(0x02, "text")), "Could not process event!"},
      {Notification(-4, 1),
       "Invalid notification response. It contains neither result nor error nor progress."},
      {FrameOf(0x02, std::vector<int>{}), "Received message too short."},
      {FrameOf(0x02, std::make_tuple("text")), "std::bad_cast"},
      {Frame(0x02, "\xDD\xFF\xFF\xFF\xFF"), "Invalid packet!"},
      {Frame(0x01, "\xC0"), "Invalid packet!"},
      {"\x93\x01", "Invalid packet!"},
  };
  for (const auto& one : cases) {
    FakeCard card([&](Peer& peer) {
      Request request;
      if (!peer.Handshake() || !peer.Next(request)) return;
      peer.Send(one.frame);
      peer.WaitForEnd();
    });
    Connection connection(card.Port());
    testing::internal::CaptureStdout();
    EXPECT_FAILS(vlListExecute(connection, 1), "ConnectionAborted") << one.text;
    vlDisconnect(connection);
    const std::string line = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(line.starts_with("Exception occurred when trying to receive: " + std::string(one.text)))
        << line;
    EXPECT_TRUE(line.ends_with("\n"));
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
