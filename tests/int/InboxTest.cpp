// Who gets which answer.
#include "rpc/Inbox.h"

#include <algorithm>
#include <atomic>
#include <barrier>
#include <numeric>
#include <random>

#include "Helpers.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

using std::chrono::milliseconds;
constexpr const char* TimedOut = "Response was not received in the given timespan.";

InputPacket Answer(std::uint32_t id, const std::string& text) {
  OutputPacket packet = OutputPacket::AllocateResponse(Received(OutputPacket::AllocateRequest(id).Close()));
  msgpack::packer(packet).pack(text);
  return Received(packet.Close());
}

std::string TextIn(InputPacket packet) {
  return packet.Unpack().get().as<std::string>();
}

// What a ticket for `id` yields within `timeout`.
std::string Wait(Inbox& inbox, std::uint32_t id, bool takeKept, milliseconds timeout = milliseconds(0)) {
  std::string text;
  const std::string failure = Failure([&] {
    Inbox::Ticket ticket(inbox, id, takeKept);
    text = TextIn(ticket.Wait(DeadlineAfter(timeout)));
  });
  return text.empty() ? failure : text;
}

TEST(Inbox, EveryThreadGetsItsOwnAnswerInWhateverOrder) {
  constexpr std::uint32_t callers = 16;
  constexpr std::uint32_t rounds = 100;
  Inbox inbox;
  std::barrier asked(callers + 1);
  std::atomic<int> wrong = 0;
  Together(callers + 1, [&](std::uint32_t caller) {
    std::mt19937 random(1);
    std::vector<std::uint32_t> order(callers);
    std::iota(order.begin(), order.end(), 0U);
    for (std::uint32_t round = 0; round < rounds; ++round) {
      if (caller < callers) {
        const std::uint32_t id = round * callers + caller;
        Inbox::Ticket ticket(inbox, id, false);
        asked.arrive_and_wait();
        if (TextIn(ticket.Wait(DeadlineAfter(milliseconds(20000)))) != std::to_string(id)) ++wrong;
      } else {
        std::shuffle(order.begin(), order.end(), random);
        asked.arrive_and_wait();
        for (const std::uint32_t who : order) {
          inbox.Deliver(Answer(round * callers + who, std::to_string(round * callers + who)));
        }
      }
    }
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(inbox.GetUnclaimedCount(), 0U);
}

TEST(Inbox, LateAnswersAreKeptForWhoAsksForThem) {
  Inbox inbox;
  inbox.Deliver(Answer(5, "late"));
  EXPECT_EQ(Wait(inbox, 6, true), TimedOut);
  EXPECT_EQ(Wait(inbox, 5, true), "late");
  EXPECT_EQ(Wait(inbox, 5, true), TimedOut);  // taken
  inbox.Deliver(Answer(5, "older"));
  inbox.Deliver(Answer(5, "newer"));
  EXPECT_EQ(inbox.GetUnclaimedCount(), 1U);
  EXPECT_EQ(Wait(inbox, 5, true), "newer");
  inbox.Deliver(Answer(5, "of another age"));
  EXPECT_EQ(Wait(inbox, 5, false), TimedOut);  // a new request of the same number
  EXPECT_EQ(inbox.GetUnclaimedCount(), 0U);
}

TEST(Inbox, OfTooManyLateAnswersTheOldestGo) {
  Inbox inbox;
  for (std::uint32_t id = 0; id < Inbox::MostUnclaimed; ++id) inbox.Deliver(Answer(id, "x"));
  inbox.Deliver(Answer(0, "x again"));  // now the newest
  inbox.Deliver(Answer(1000, "y"));
  EXPECT_EQ(inbox.GetUnclaimedCount(), Inbox::MostUnclaimed);
  EXPECT_EQ(Wait(inbox, 1, true), TimedOut);
  EXPECT_EQ(Wait(inbox, 2, true), "x");
  EXPECT_EQ(Wait(inbox, 0, true), "x again");
  EXPECT_EQ(Wait(inbox, 1000, true), "y");
  // Large ones count by their bytes.
  Inbox large;
  const std::string megabyte(1 << 20, 'm');
  for (std::uint32_t id = 0; id < 6; ++id) large.Deliver(Answer(id, megabyte));
  EXPECT_EQ(large.GetUnclaimedCount(), 3U);
  EXPECT_EQ(Wait(large, 2, true), TimedOut);
  EXPECT_EQ(Wait(large, 3, true), megabyte);
}

TEST(Inbox, AWaitEndsAtItsDeadline) {
  Inbox inbox;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Wait(inbox, 1, false, milliseconds(30)), TimedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(30));
}

TEST(Inbox, ClosingEndsEveryWaitNowAndToCome) {
  constexpr std::uint32_t callers = 8;
  Inbox inbox;
  std::barrier asked(callers + 1);
  std::atomic<std::uint32_t> aborted = 0;
  Together(callers + 1, [&](std::uint32_t caller) {
    if (caller == callers) {
      asked.arrive_and_wait();
      inbox.Close();
      return;
    }
    Inbox::Ticket ticket(inbox, caller, false);
    asked.arrive_and_wait();
    if (Failure([&] { ticket.Wait(DeadlineAfter(milliseconds(60000))); }) == "ConnectionAborted") ++aborted;
  });
  EXPECT_EQ(aborted, callers);
  EXPECT_EQ(Wait(inbox, 9, false, milliseconds(60000)), "ConnectionAborted");
  inbox.Deliver(Answer(9, "x"));
  inbox.Open();  // forgets it
  EXPECT_EQ(Wait(inbox, 9, true), TimedOut);
}

TEST(Inbox, ATicketNobodyWaitedForLeavesTheNextWaitAlone) {
  const std::function<void(Inbox&)> meanwhiles[] = {
      [](Inbox&) {},
      [](Inbox& inbox) { inbox.Deliver(Answer(1, "x")); },
      [](Inbox& inbox) { inbox.Close(); },
  };
  for (const auto& meanwhile : meanwhiles) {
    Inbox inbox;
    inbox.Deliver(Answer(0, "kept"));
    { const Inbox::Ticket keptForIt(inbox, 0, true); }
    {
      const Inbox::Ticket dropped(inbox, 1, false);
      meanwhile(inbox);
    }
    inbox.Open();
    EXPECT_EQ(Wait(inbox, 2, false, milliseconds(5)), TimedOut);
    Inbox::Ticket next(inbox, 3, false);
    inbox.Deliver(Answer(3, "next"));
    EXPECT_EQ(TextIn(next.Wait(DeadlineAfter(milliseconds(1000)))), "next");
  }
}

TEST(Inbox, AnAnswerThatRacesWithTheTimeOutIsEitherTakenOrKept) {
  constexpr std::uint32_t waiters = 4;
  constexpr std::uint32_t rounds = 60;  // in all no more than are kept
  const auto microseconds = [](auto number) { return std::chrono::microseconds(number); };
  for (unsigned seed = 0; seed < 20; ++seed) {
    Inbox inbox;
    std::atomic<std::uint32_t> asked[waiters] = {};  // the number of the latest question
    std::atomic<std::uint32_t> timedOut = 0;
    std::atomic<int> wrong = 0;
    Together(2 * waiters, [&](std::uint32_t party) {
      std::mt19937 random(seed * 100 + party);
      auto& latest = asked[party / 2];
      for (std::uint32_t round = 1; round <= rounds; ++round) {
        const std::uint32_t id = party / 2 * 1000 + round;
        if (party % 2 == 0) {
          Inbox::Ticket ticket(inbox, id, true);
          latest = round;
          latest.notify_one();
          std::string text;
          const auto deadline = std::chrono::steady_clock::now() + microseconds(random() % 100);
          const std::string failure = Failure([&] { text = TextIn(ticket.Wait(deadline)); });
          if (failure == TimedOut) {
            ++timedOut;
          } else if (text != std::to_string(id)) {
            ++wrong;
          }
        } else {
          for (std::uint32_t seen = latest; seen < round; seen = latest) latest.wait(seen);
          const auto when = std::chrono::steady_clock::now() + microseconds(random() % 60);
          while (std::chrono::steady_clock::now() < when) std::this_thread::yield();
          inbox.Deliver(Answer(id, std::to_string(id)));
        }
      }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(inbox.GetUnclaimedCount(), timedOut);
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
