// List notifications: values, waits, callbacks; the statistics of a run.
#include "Helpers.h"
#include "lists/ListAPI.h"

namespace VELTRO::KELVO::Test {
namespace {

using std::chrono::milliseconds;
using enum ListEventKind;
constexpr milliseconds Now{0};
constexpr milliseconds Long{60000};

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
  EXPECT_EQ(std::exchange(calls, ""), "49:2 f9:2 ");
  // One that takes out those around it, in the midst of an event.
  events.UnRegisterCallback(ListDone, 2);
  events.RegisterCallback(ListDone, [&](std::int32_t, std::int32_t) {
    for (const std::uint32_t id : {2U, 3U}) events.UnRegisterCallback(ListDone, id);
    enter(ListDone, 'g');
  });
  for (const char* id : {"3", "4"}) EXPECT_EQ(enter(ListDone, *id), id);
  events.OnListDoneReceived(1);
  EXPECT_EQ(calls, "49:1 ");
}

TEST(ListAPI, ForwardsItsLocalOperationsByKind) {
  ConnectedEvents events;
  CallRecorder caller;
  ListAPI lists(caller, events);
  std::string calls;
  const auto tell = [&](std::int32_t, std::int32_t value) { calls += std::to_string(value); };
  EXPECT_EQ(lists.RegisterProgressCallback(tell), 2U);
  EXPECT_EQ(lists.RegisterListIdleCallback(tell), 2U);
  EXPECT_EQ(lists.RegisterListDoneCallback(tell), 2U);
  EXPECT_EQ(lists.RegisterErrorEventCallback(
                [&](std::int32_t, std::int32_t code, const char* text, std::uint32_t length) {
                  calls += std::to_string(code) + std::string(text, length);
                }),
            2U);
  const std::pair<std::function<void()>, const char*> steps[] = {
      {[] {}, "1234hot"},
      {[&] { lists.UnRegisterProgressCallback(2); }, "234hot"},
      {[&] { lists.UnRegisterListDoneCallback(2); }, "24hot"},
      {[&] { lists.UnRegisterErrorEventCallback(2); }, "2"},
      {[&] { lists.UnRegisterListIdleCallback(2); }, ""},
  };
  for (const auto& [step, told] : steps) {
    step();
    events.OnProgressReceived(1), events.OnListIdleReceived(2), events.OnListDoneReceived(3);
    events.OnErrorReceived({4, "hot"});
    EXPECT_EQ(std::exchange(calls, ""), told);
  }
  const std::pair<ListEventKind, void (ListAPI::*)()> interruptions[] = {
      {Progress, &ListAPI::InterruptWaitForProgress},
      {ListIdle, &ListAPI::InterruptWaitForListIdle},
      {ListDone, &ListAPI::InterruptWaitForListDone},
  };
  for (const auto& [kind, interrupt] : interruptions) {
    std::atomic<bool> ended{false};
    const AtMost promptly(30000);
    Together(2, [&, kind = kind, interrupt = interrupt](std::uint32_t i) {
      ended = i == 0 && !lists.Wait(kind, Long);
      while (i == 1 && !ended) (lists.*interrupt)();
    });
  }
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
