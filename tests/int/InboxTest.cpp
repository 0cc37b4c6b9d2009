// Who gets which answer.
#include "Helpers.h"
#include "rpc/Inbox.h"

namespace VELTRO::KELVO::Test {
namespace {

using std::chrono::milliseconds;
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

TEST(Inbox, WakesALoneWaiter) {
  for (const bool isDelivered : {true, false}) {
    Inbox inbox;
    const Stopwatch watch;
    std::jthread waking;
    const auto wakeSoon = [&] {
      waking = std::jthread([&] {
        std::this_thread::sleep_for(milliseconds(50));  // it waits by now; if not, it is not less woken
        isDelivered ? inbox.Deliver(Received(Response(1, "x"))) : inbox.Close();
      });
    };
    EXPECT_EQ(Ask(inbox, 1, false, DeadlineAfter(milliseconds(5000)), wakeSoon),
              isDelivered ? "x" : "ConnectionAborted");
    EXPECT_LT(watch.Milliseconds(), 4000);
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

}  // namespace
}  // namespace VELTRO::KELVO::Test
