// Many threads, many connections, many descriptors, processes that fork.
#include <sys/syscall.h>
#include <sys/time.h>

#include "int/CardProcess.h"
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
  Together(Callers, [&](std::uint32_t caller) {
    for (int round = 0; round < Rounds; ++round) {
      const int id = static_cast<int>(caller) * Rounds + round;
      std::int32_t status = -1;
      right += vlListGetListStatus(connection, id, &status) == 0 && status == id * 10;
    }
  });
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
    const AtMost promptly(15000);  // a time-out is 17000
    Together(Callers + 1, [&](std::uint32_t caller) {
      if (caller == Callers) {
        while (started < round % 40) std::this_thread::yield();
        EXPECT_OK(vlDisconnect(handle));
        return;
      }
      for (int result = 0; result == 0; ++started) {
        std::int32_t value = 0;
        result = caller == 0 ? vlListWaitForListDone(handle, &value, -1) : vlListExecute(handle, 1);
        const std::string text = LastError();
        EXPECT_TRUE(result == 0 || (result == -1 && IsAnEnd(text))) << result << " " << text;
      }
    });
  }
}

// As long as it lives, this process and those that it starts may have 4096 descriptors.
struct ManyDescriptors {
  ManyDescriptors() {
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit many{std::min<rlim_t>(before.rlim_max, 4096), before.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &many), 0);
  }
  ~ManyDescriptors() { setrlimit(RLIMIT_NOFILE, &before); }
  rlimit before{};
};

TEST(Resources, ElevenHundredIdleConnectionsTakeLittleAndAreNoneTooMany) {
  const ManyDescriptors many;
  const CardProcess card({"--connections", "1100"});
  const std::size_t descriptors = OpenDescriptors(), before = ResidentBytes();
  {
    std::list<Connection> connections;
    while (connections.size() < 1100) ASSERT_GT(connections.emplace_back(card.GetPort()), 0) << LastError();
    const std::size_t taken = ResidentBytes() - before;
    std::printf("1100 idle connections: %zu KiB\n", taken >> 10);
    EXPECT_TRUE(Sanitized || taken < (70 << 20)) << taken;
    EXPECT_OK(vlListAbortExecution(connections.back()));
    const int last = dup(STDIN_FILENO);
    close(last);
    for (int descriptor = 1000; descriptor < last; ++descriptor)
      EXPECT_TRUE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC) << descriptor;
    EXPECT_GT(last, 1024);
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST(Resources, AThousandConnectionsOneAfterTheOtherLeaveNothing) {
  const CardProcess card;
  const auto cycle = [&](int times) {
    for (int i = 0; i < times; ++i) {
      const Connection connection(card.GetPort());
      ASSERT_OK(vlListAppendMarkAbs2D(vlListAllocate(connection), 1, 2));
    }
  };
  cycle(200);
  const std::size_t descriptors = OpenDescriptors(), threads = Threads(), bytes = ResidentBytes();
  cycle(1000);
  const auto more = static_cast<std::int64_t>(ResidentBytes() - bytes);
  std::printf("after 1000 connections: %jd KiB more\n", std::intmax_t{more >> 10});
  EXPECT_TRUE(Sanitized || more < (512 << 10)) << more;
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(Threads(), threads);
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
  const TemporaryDirectory directory;
  ASSERT_OK(vlEnableRecording(connection, (directory.Path + "/session").c_str()));
  std::atomic<bool> over{false};
  // As good as always one of them has the table of handles locked.
  std::vector<std::jthread> busy;
  for (int i = 0; i < 2; ++i) {
    busy.emplace_back([&] {
      for (bool up = false; !over;) vlIsConnected(connection, &up);
    });
  }
  for (int round = 0; round < (Sanitized ? 15 : 40); ++round) {
    const pid_t child = fork();
    if (child == 0) {
      isForkedChild = true;
      alarm(60);  // ends it if it hangs
      int taken = 0;
      for (const auto call : {vlDisconnect, vlDisableRecording}) {
        const bool isRefused = call(connection) == -1;
        taken += isRefused && LastError() == "The connection belongs to another process." ? 0 : 1;
      }
      std::exit(taken);
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

// Set in a program that is in no call any more and so can end anywhere.
std::atomic<bool> isInNoCall{false};

// A program that has an endless list running, whose progress it hears by `callback`, and then does `end`.
void ExpectProgramEnds(int port, vlListEventCallback callback, void (*end)()) {
  const auto program = [&] {
    isForkedChild = true;
    alarm(60);  // ends it if it hangs
    const std::int32_t handle = vlConnect("127.0.0.1", port);
    const std::int64_t list = vlListAllocate(handle);
    std::uint32_t id = 0;
    EXPECT_OK(vlListRegisterProgressCallback(handle, callback, &id));
    EXPECT_OK(vlListAppendSleep(list, 20000));
    EXPECT_OK(vlListAppendProgress(list, 7));
    EXPECT_OK(vlListAppendBranchAbs(list, 0));
    EXPECT_OK(vlListSet(handle, 1, list, false, -1));
    EXPECT_OK(vlListExecute(handle, 1));
    isInNoCall = true;
    end();
  };
  EXPECT_EXIT(program(), testing::ExitedWithCode(0), "");
}

TEST(ResourcesDeathTest, AProgramMayEndWhateverItsConnectionsDo) {
  constexpr vlListEventCallback Ignore = [](std::int32_t, std::int32_t) {};
  constexpr vlListEventCallback Exit = [](std::int32_t, std::int32_t) {
    if (isInNoCall) std::exit(0);
  };
  static std::atomic<bool> isStuck{false};
  constexpr vlListEventCallback Stick = [](std::int32_t, std::int32_t) {
    while (isInNoCall) {
      isStuck = true;
      pause();
    }
  };
  constexpr auto ReturnFromMain = [] { std::exit(0); };
  constexpr auto Wait = [] { pause(); };
  constexpr auto ReturnOnceStuck = [] {
    while (!isStuck) std::this_thread::yield();
    std::exit(0);
  };
  for (int round = 0; round < (Sanitized ? 3 : 10); ++round) {
    ExpectProgramEnds(CardProcess().GetPort(), Ignore, ReturnFromMain);
    ExpectProgramEnds(CardProcess().GetPort(), Exit, Wait);
    ExpectProgramEnds(CardProcess().GetPort(), Stick, ReturnOnceStuck);
  }
}

TEST(Waits, TellValueNothingAndFailureApart) {
  FakeCard card(FakeCard::Answering([](const Request& request) {
    const std::int32_t id = FirstArgument(request);
    return Notification(0x11, 10) + Notification(0x11, 20) + Notification(0x02, id) + Notification(0x01, id) +
           Response(request.Id, false);
  }));
  Connection connection(card.Port());
  std::int32_t value = 77;
  EXPECT_EQ(Told(vlListWaitForProgress(connection, &value, 20), value), "1 77");
  ASSERT_OK(vlListExecute(connection, 9));
  EXPECT_EQ(Told(vlListWaitForProgress(connection, &value, -1), value), "0 10");
  EXPECT_EQ(Told(vlListWaitForListDone(connection, &value, 0), value), "0 9");
  EXPECT_OK(vlListClearPendingEvents(connection));
  EXPECT_EQ(vlListWaitForListIdle(connection, &value, 0), 1);
}

TEST(Waits, AreInterruptedByKind) {
  const FakeConnection connection;
  const std::pair<decltype(&vlListWaitForProgress), decltype(&vlListInterruptWaitForProgress)> kinds[] = {
      {vlListWaitForProgress, vlListInterruptWaitForProgress},
      {vlListWaitForListDone, vlListInterruptWaitForListDone},
      {vlListWaitForListIdle, vlListInterruptWaitForListIdle}};
  for (const auto& [wait, interrupt] : kinds) {
    std::atomic<bool> ended{false};
    const AtMost promptly(20000);
    Together(2, [&, wait = wait, interrupt = interrupt](std::uint32_t i) {
      std::int32_t value = 0;
      ended = i == 0 && wait(connection, &value, 60000) == 1;
      while (i == 1 && !ended) interrupt(connection);
    });
    EXPECT_TRUE(ended) << &wait - &kinds[0].first;
  }
}

std::string told;

template <char kind>
void Tell(std::int32_t, std::int32_t value) {
  told += kind + std::to_string(value) + " ";
}

TEST(Notifications, ReachTheCallbacksOfTheirKind) {
  const FakeConnection connection(FakeCard::Answering([](const Request& request) {
    return Notification(0x11, 10) + Notification(0x02, 20) + Notification(0x01, 30) +
           Response(request.Id, false);
  }));
  std::uint32_t progress = 0, done = 0, idle = 0;
  EXPECT_OK(vlListRegisterProgressCallback(connection, Tell<'p'>, &progress));
  EXPECT_OK(vlListRegisterListDoneCallback(connection, Tell<'d'>, &done));
  EXPECT_OK(vlListRegisterListIdleCallback(connection, Tell<'i'>, &idle));
  EXPECT_OK(vlListExecute(connection, 1));
  EXPECT_EQ(std::exchange(told, ""), "p10 d20 i30 ");
  for (const auto& [unregister, id, left] :
       {std::tuple(&vlListUnRegisterProgressCallback, progress, "d20 i30 "),
        {&vlListUnRegisterListDoneCallback, done, "i30 "},
        {&vlListUnRegisterListIdleCallback, idle, ""}}) {
    EXPECT_OK(unregister(connection, id));
    EXPECT_OK(vlListExecute(connection, 1));
    EXPECT_EQ(std::exchange(told, ""), left);
  }
}

TEST(Waits, FailAtOnceWhenTheConnectionIsLost) {
  const FakeConnection connection([](Peer& peer) {
    Request request;
    if (!peer.Handshake() || !peer.Next(request)) return;
    peer.Send(Response(request.Id, false) + Notification(0x02, 3));
    usleep(50000);
  });
  ASSERT_OK(vlListExecute(connection, 3));
  const AtMost promptly(20000);
  std::int32_t value = 0;
  EXPECT_FAILS(vlListWaitForListIdle(connection, &value, 60000), "ConnectionAborted");
  EXPECT_OK(vlListWaitForListDone(connection, &value, 60000)) << "what has come is not lost";
  EXPECT_EQ(vlListWaitForListDone(connection, &value, 60000), -1);
}

TEST(Notifications, ThatMakeNoSenseEndTheConnectionWithALine) {
  const std::pair<std::string, const char*> cases[] = {
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
  for (const auto& [frame, text] : cases) {
    const FakeConnection connection(
        FakeCard::Then([&, &bytes = frame](Peer& peer, const Request&) { peer.Send(bytes); }));
    testing::internal::CaptureStdout();
    EXPECT_FAILS(vlListExecute(connection, 1), "ConnectionAborted") << text;
    vlDisconnect(connection);
    EXPECT_THAT(
        testing::internal::GetCapturedStdout(),
        AllOf(StartsWith("Exception occurred when trying to receive: " + std::string(text)), EndsWith("\n")));
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
