// Who gets which answer, and which notification.
#include <atomic>
#include <random>
#include <thread>

#include "Helpers.h"
#include "lists/ListAPI.h"
#include "rpc/Inbox.h"

namespace VELTRO::KELVO::Test {
namespace {

using std::chrono::milliseconds;
using enum ListEventKind;
constexpr milliseconds Now{0};
constexpr milliseconds Long{60000};
constexpr const char* TimedOut = "Response was not received in the given timespan.";

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
  inbox.Deliver(Received(Response(5, "older")));
  inbox.Deliver(Received(Response(5, "newer")));
  EXPECT_EQ(Ask(inbox, 6, true), TimedOut);
  EXPECT_EQ(Ask(inbox, 5, true), "newer");
  EXPECT_EQ(Ask(inbox, 5, true), TimedOut);  // taken
  inbox.Deliver(Received(Response(5, "of another age")));
  EXPECT_EQ(Ask(inbox, 5, false), TimedOut);  // a new request of the same number
  EXPECT_EQ(inbox.GetUnclaimedCount(), 0U);
  for (std::uint32_t id = 0; id < Inbox::MostUnclaimed; ++id) inbox.Deliver(Received(Response(id, "x")));
  inbox.Deliver(Received(Response(0, "x again")));  // now the newest
  inbox.Deliver(Received(Response(1000, "y")));
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
  for (std::uint32_t id = 0; id < 6; ++id) inbox.Deliver(Received(Response(id, megabyte)));
  EXPECT_EQ(inbox.GetUnclaimedCount(), 3U);
  EXPECT_EQ(Ask(inbox, 2, true), TimedOut);
  EXPECT_EQ(Ask(inbox, 3, true), megabyte);
}

TEST(Inbox, ATicketNobodyWaitedForLeavesTheNextWaitAlone) {
  for (const int meanwhile : {0, 1, 2}) {
    Inbox inbox;
    inbox.Deliver(Received(Response(0, "kept")));
    { const Inbox::Ticket keptForIt(inbox, 0, true); }
    {
      const Inbox::Ticket dropped(inbox, 1, false);
      if (meanwhile == 1) inbox.Deliver(Received(Response(1, "x")));
      if (meanwhile == 2) inbox.Close();
    }
    inbox.Open();
    EXPECT_EQ(Ask(inbox, 2, false, DeadlineAfter(milliseconds(5))), TimedOut);
    const auto deliver = [&] { inbox.Deliver(Received(Response(3, "next"))); };
    EXPECT_EQ(Ask(inbox, 3, false, DeadlineAfter(Long), deliver), "next");
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
          inbox.Deliver(Received(Response(id, std::to_string(id))));
        }
      }
    });
    EXPECT_EQ(inbox.GetUnclaimedCount(), timedOut);
  }
}

struct ConnectedEvents : ListEvents {
  ConnectedEvents() { Connected(9); }
};

TEST(ListEvents, ValuesComeInOrderByKindAndTheOldestOfTooManyGo) {
  ConnectedEvents events;
  const auto count = static_cast<std::int32_t>(ListEvents::MostPending);
  for (std::int32_t value = 0; value < count + 3; ++value) events.AppendProgressEvent(value ^ 1);
  events.AppendListDoneEvent(-7);
  events.AppendListIdleEvent(8);
  EXPECT_EQ(events.Wait(ListDone, Long), -7);
  for (std::int32_t value = 3; value < count + 3; ++value) ASSERT_EQ(events.Wait(Progress, Now), value ^ 1);
  EXPECT_EQ(events.Wait(ListIdle, Now), 8);
  for (const auto kind : {Progress, ListIdle, ListDone}) EXPECT_EQ(events.Wait(kind, Now), std::nullopt);
  events.AppendProgressEvent(5);
  events.Connected(1);
  EXPECT_EQ(events.Wait(Progress, Now), std::nullopt);  // of the earlier connection
}

TEST(ListEvents, WaitsTakeTheConnectionsTimeOutAndNoEarlierInterrupt) {
  ConnectedEvents events;
  CallRecorder caller;
  events.InterruptWait(ListDone);
  const Stopwatch watch;
  EXPECT_EQ(ListAPI(caller, events).WaitForListDone(), std::nullopt);
  EXPECT_GE(watch.Milliseconds(), caller.GetTimeout());
}

TEST(ListEvents, CallbackIdsAreTwoToSixAndTheSeventhFailsButStays) {
  ConnectedEvents events;
  std::string calls;
  const auto enter = [&](ListEventKind kind, char name) {
    std::string id;
    const std::string failure = Failure([&] {
      id = std::to_string(events.RegisterCallback(kind, [&, name](std::int32_t link, std::int32_t value) {
        calls += name + std::to_string(link) + ":" + std::to_string(value) + " ";
      }));
    });
    return id.empty() ? failure : id;
  };
  constexpr const char* full = "Unable to register callback!";
  for (const char* id : {"2", "3", "4", "5", "6", full, full}) EXPECT_EQ(enter(Progress, *id), id);
  EXPECT_EQ(enter(ListDone, 'd'), "2");  // every kind has its own
  events.OnProgressReceived(1);
  EXPECT_EQ(std::exchange(calls, ""), "29:1 39:1 49:1 59:1 69:1 U9:1 ");
  for (const std::uint32_t id : {2U, 3U, 5U, 6U, 7U, 99U}) events.UnRegisterCallback(Progress, id);
  events.OnProgressReceived(2);
  EXPECT_EQ(calls, "49:2 ");
  for (const char* id : {"2", "3", "5", "6", full}) EXPECT_EQ(enter(Progress, 'e'), id);
  // One that takes itself out and puts another in its place.
  events.RegisterCallback(ListIdle, [&](std::int32_t, std::int32_t) {
    events.UnRegisterCallback(ListIdle, 2);
    enter(ListIdle, 'f');
  });
  for (const std::int32_t value : {1, 2}) events.OnListIdleReceived(value);
  EXPECT_EQ(calls, "49:2 f9:2 ");
}

TEST(ListEvents, TheLatestErrorIsKeptUntilCleared) {
  ConnectedEvents events;
  for (const int way : {0, 1, 2}) {
    events.AppendProgressEvent(way);
    events.OnErrorReceived({-1, "hot"});
    if (way == 0) events.ClearError();
    if (way == 1) events.ClearPendingEvents();
    EXPECT_EQ(events.CheckAndClearError(), way == 2);
    EXPECT_FALSE(events.CheckAndClearError());
  }
  EXPECT_EQ(events.Wait(Progress, Now), 2);  // clearing all has taken those before
}

TEST(ListExecutionStats, TextAndWire) {
  const auto stats = Unpacked<ListExecutionStats>(
      Bytes("95 01 FE CB 3F E0 00 00 00 00 00 00 CB 44 15 AF 1D 78 B5 8C 40 CE 3B 9A CA 00"));
  EXPECT_EQ(to_string(stats),
            "{ MacroVectors=1, MicroVectors=-2, ComputationTime=0.500000, "
            "ExecutionTime=100000000000000000000.000000, ComputationTimePerMicroVector=1000000000.000000 }");
  EXPECT_EQ((ListExecutionStats{0, 0, -0.0000004, 2.5e-7, 0.9999995}.ToString()),
            "{ MacroVectors=0, MicroVectors=0, ComputationTime=-0.000000, ExecutionTime=0.000000, "
            "ComputationTimePerMicroVector=1.000000 }");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
