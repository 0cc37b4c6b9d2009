// What an application sees of the faults that a virtual card was asked for: the table of docs/virtual-card.md.
#include "int/CardProcess.h"
#include "support/Calls.h"

namespace VELTRO::KELVO::Test {
namespace {

constexpr const char* Unanswered = "Response was not received in the given timespan.";
constexpr const char* Broken = "ConnectionAborted";

// What it says to the line `fault`; connections that it ends may be told of ahead of that.
std::string Answered(CardProcess& card) {
  std::string line;
  do line = card.ReadLine();
  while (line.find(" disconnected: ") != std::string::npos);
  return line;
}

// Once the fault has befallen a call: who does not wait for the answer may be faster than the card.
std::string AnsweredOnceItBefell(CardProcess& card) {
  std::string line;
  for (const Stopwatch watch; watch.Milliseconds() < 20000; usleep(1000)) {
    card.Say("fault");
    line = Answered(card);
    if (line.find("befell 0 ") == std::string::npos) break;
  }
  return line;
}

TEST(Faults, AreSeenByTheCallThatTheyBefall) {
  const struct {
    const char* fault;
    std::string outcome;  // of the call
    bool lives = true;    // the connection, behind it
    double least = 0;     // milliseconds that the call takes
  } cases[] = {
      {"error=Out of memory", "Out of memory"},
      {"direction=answer:error=Out of memory", "Out of memory"},
      {"delay=100ms", "0", true, 100},
      {"direction=answer:delay=100ms", "0", true, 100},
      {"delay=4s", Unanswered, true, 150},
      {"direction=answer:delay=4s", Unanswered, true, 150},
      {"drop", Broken, false},
      {"direction=answer:drop", Broken, false},
      {"silent", Unanswered, true, 150},
      {"direction=answer:silent", Unanswered, true, 150},
      {"garbage", Broken, false},
      {"truncate", Broken, false},
      {"reorder=100ms", "0", true, 100},
      {"slow=100B/s", "0", true, 70},
      {"slow=2B/s", Unanswered, true, 150},
      {"direction=request:slow=20B/s", Unanswered, true, 150},
  };
  CardProcess card;
  for (const auto& one : cases) {
    const Connection connection(card.GetPort());
    const std::int64_t list = vlListAllocate(connection);
    ASSERT_OK(vlSetTimeout(connection, one.outcome == Unanswered ? 150 : 60000));
    ASSERT_OK(vlListAppendProgress(list, 1));
    card.Say(std::string("fault SetList:") + one.fault + "\nfault");
    EXPECT_THAT(Answered(card), HasSubstr("befell 0 of 0"));
    const Stopwatch watch;
    EXPECT_EQ(Outcome(vlListSet(connection, 1, list, false, -1)), one.outcome) << one.fault;
    EXPECT_GE(watch.Milliseconds(), one.least) << one.fault;
    EXPECT_THAT(AnsweredOnceItBefell(card), HasSubstr("befell 1 of 1")) << one.fault;
    card.Say("fault off\nfault");
    EXPECT_THAT(Answered(card), HasSubstr("There are no faults."));
    vlSetTimeout(connection, 60000);
    EXPECT_EQ(Outcome(vlListSet(connection, 1, list, false, -1)), one.lives ? "0" : "Connection not active!")
        << one.fault;
  }
}

TEST(Faults, OfTheFirstCallsMakeConnectingFail) {
  const std::pair<const char*, const char*> cases[] = {
      {"SetClientLibVersion:error=Library too old", "Library too old"},
      {"GetCardSerialNumber:drop", Broken},
      {"*:from=2:garbage", Broken},
  };
  for (const auto& [fault, text] : cases) {
    const CardProcess card({"--fault", fault});
    EXPECT_EQ(Outcome(vlConnect("127.0.0.1", card.GetPort())), text) << fault;
  }
}

TEST(Faults, OfNotificationsAreSeenByWhoWaitsForThem) {
  const std::pair<const char*, const char*> cases[] = {
      {"silent", "1"},      {"drop", Broken},   {"garbage", Broken},
      {"truncate", Broken}, {"error=Hot", "1"}, {"delay=50ms", "0"},
  };
  for (const auto& [fault, outcome] : cases) {
    CardProcess card({"--fault", std::string("ListIdle:") + fault});
    const Connection connection(card.GetPort());
    const std::int64_t list = vlListAllocate(connection);
    // The run ends once its start is answered, and when the wait has begun; but also earlier is right.
    ASSERT_OK(vlListAppendWaitForSignal(list, "go", -1));
    ASSERT_OK(vlListAppendSleep(list, 300000));
    ASSERT_OK(vlListSet(connection, 1, list, false, -1));
    ASSERT_OK(vlListExecute(connection, 1));
    card.Say("signal go");
    std::int32_t id = 0;
    const bool comesNothing = std::string_view(outcome) == "1";
    EXPECT_EQ(Outcome(vlListWaitForListIdle(connection, &id, comesNothing ? 1000 : 30000)), outcome) << fault;
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
