// List notifications: queues, waits and callbacks.
#include "lists/ListEvents.h"

#include "Helpers.h"
#include "lists/ListAPI.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

using std::chrono::milliseconds;
using enum ListEventKind;
constexpr milliseconds Now{0};
constexpr milliseconds Long{60000};

struct ConnectedEvents : ListEvents {
  ConnectedEvents() { Connected(9); }
};

TEST(ListEvents, ValuesComeInOrderAndByKind) {
  ConnectedEvents events;
  for (const std::int32_t value : {3, 1, 2}) events.AppendProgressEvent(value);
  events.AppendListDoneEvent(-7);
  events.AppendListIdleEvent(8);
  EXPECT_EQ(events.Wait(ListDone, Long), -7);
  for (const std::int32_t value : {3, 1, 2}) EXPECT_EQ(events.Wait(Progress, Now), value);
  EXPECT_EQ(events.Wait(ListIdle, Now), 8);
  for (const auto kind : {Progress, ListIdle, ListDone}) EXPECT_EQ(events.Wait(kind, Now), std::nullopt);
}

TEST(ListEvents, OfTooManyValuesTheOldestGo) {
  ConnectedEvents events;
  const auto count = static_cast<std::int32_t>(ListEvents::MostPending);
  for (std::int32_t value = 0; value < count + 3; ++value) events.AppendProgressEvent(value);
  for (std::int32_t value = 3; value < count + 3; ++value) ASSERT_EQ(events.Wait(Progress, Now), value);
  EXPECT_EQ(events.Wait(Progress, Now), std::nullopt);
}

TEST(ListEvents, AWaitEndsWithAValueOfItsKind) {
  ConnectedEvents events;
  std::optional<std::int32_t> got;
  std::thread waiter([&] { got = events.Wait(ListDone, Long); });
  events.AppendProgressEvent(1);
  events.AppendListDoneEvent(2);
  waiter.join();
  EXPECT_EQ(got, 2);
}

TEST(ListEvents, AWaitEndsAtItsTimeOut) {
  ConnectedEvents events;
  const auto begin = std::chrono::steady_clock::now();
  events.InterruptWait(Progress);  // ends waits that are running, not this one
  EXPECT_EQ(events.Wait(Progress, milliseconds(30)), std::nullopt);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(30));
}

TEST(ListEvents, AnInterruptEndsTheWaitsOfItsKind) {
  ConnectedEvents events;
  std::atomic<bool> progressEnded = false;
  std::optional<std::int32_t> progress = 1;
  std::optional<std::int32_t> done;
  std::thread first([&] {
    progress = events.Wait(Progress, Long);
    progressEnded = true;
  });
  std::thread second([&] { done = events.Wait(ListDone, Long); });
  while (!progressEnded) events.InterruptWait(Progress);  // it may not have begun yet
  first.join();
  EXPECT_EQ(progress, std::nullopt);
  events.AppendListDoneEvent(5);
  second.join();
  EXPECT_EQ(done, 5);
}

TEST(ListEvents, ALostConnectionEndsEveryWait) {
  ListEvents events;
  EXPECT_EQ(Failure([&] { events.Wait(Progress, Long); }), "Connection not active!");
  events.ConnectionLost();
  EXPECT_EQ(Failure([&] { events.Wait(Progress, Long); }), "Connection not active!");
  events.Connected(1);
  std::string text;
  std::thread waiter([&] { text = Failure([&] { events.Wait(ListIdle, Long); }); });
  events.AppendProgressEvent(4);
  events.ConnectionLost();
  waiter.join();
  EXPECT_EQ(text, "ConnectionAborted");
  EXPECT_EQ(events.Wait(Progress, Long), 4);  // what has arrived is still there
  EXPECT_EQ(Failure([&] { events.Wait(Progress, Long); }), "ConnectionAborted");
  events.AppendProgressEvent(5);
  events.Connected(1);
  EXPECT_EQ(events.Wait(Progress, Now), std::nullopt);  // of the earlier connection
}

TEST(ListEvents, CallbackIdsAreTwoToSixAndTheSeventhFailsButStays) {
  ConnectedEvents events;
  std::vector<std::string> calls;
  const auto named = [&](std::string name) {
    return [&calls, name](std::int32_t connection, std::int32_t value) {
      calls.push_back(name + std::to_string(connection) + ":" + std::to_string(value));
    };
  };
  const auto full = [&](const char* name) {
    return Failure([&] { events.RegisterCallback(Progress, named(name)); });
  };
  events.OnProgressReceived(0);
  for (const std::uint32_t id : {2U, 3U, 4U, 5U, 6U})
    EXPECT_EQ(events.RegisterCallback(Progress, named("a")), id);
  EXPECT_EQ(full("b"), "Unable to register callback!");
  EXPECT_EQ(full("c"), "Unable to register callback!");
  EXPECT_EQ(events.RegisterCallback(ListDone, named("d")), 2U);  // every kind has its own
  events.OnProgressReceived(1);
  EXPECT_EQ(calls, (std::vector<std::string>{"a9:1", "a9:1", "a9:1", "a9:1", "a9:1", "b9:1"}));
  for (const std::uint32_t id : {2U, 3U, 5U, 6U, 7U, 99U}) events.UnRegisterCallback(Progress, id);
  calls.clear();
  events.OnProgressReceived(2);
  EXPECT_EQ(calls, std::vector<std::string>{"a9:2"});
  for (const std::uint32_t id : {2U, 3U, 5U, 6U})
    EXPECT_EQ(events.RegisterCallback(Progress, named("e")), id);
  EXPECT_EQ(full("f"), "Unable to register callback!");
}

TEST(ListEvents, ACallbackMayRegisterAndUnregister) {
  ConnectedEvents events;
  int later = 0;
  events.RegisterCallback(ListIdle, [&](std::int32_t, std::int32_t) {
    events.UnRegisterCallback(ListIdle, 2);
    events.RegisterCallback(ListIdle, [&](std::int32_t, std::int32_t) { ++later; });
  });
  events.OnListIdleReceived(1);
  EXPECT_EQ(later, 0);
  events.OnListIdleReceived(1);
  EXPECT_EQ(later, 1);
}

TEST(ListEvents, TheLatestErrorIsKeptUntilCleared) {
  ConnectedEvents events;
  std::string heard;
  events.RegisterErrorEventCallback([&](std::int32_t connection, std::int32_t code, const char* text,
                                        std::uint32_t length) {
    heard =
        std::to_string(connection) + " " + std::to_string(code) + " " + text + " " + std::to_string(length);
  });
  const std::function<void()> clearings[] = {[&] { events.ClearError(); },
                                             [&] { events.ClearPendingEvents(); },
                                             [&] { EXPECT_TRUE(events.CheckAndClearError()); }};
  for (const auto& clear : clearings) {
    events.OnErrorReceived({-1, "hot"});
    events.AppendProgressEvent(1);
    clear();
    EXPECT_FALSE(events.CheckAndClearError());
  }
  EXPECT_EQ(heard, "9 -1 hot 3");
  EXPECT_EQ(events.Wait(Progress, Now), 1);  // pending since the second clearing, which took the first
  events.ClearPendingEvents();
  EXPECT_EQ(events.Wait(Progress, Now), std::nullopt);
}

TEST(ListAPI, WaitsUseTheConnectionsTimeOutWhenNoneIsGiven) {
  ConnectedEvents events;
  CallRecorder caller;
  ListAPI api(caller, events);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(api.WaitForListDone(milliseconds(0)), std::nullopt);
  EXPECT_EQ(api.WaitForListDone(), std::nullopt);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(caller.GetTimeout()));
}

TEST(ListExecutionStats, TextAndWire) {
  const std::string body =
      Bytes("95 01 FE CB 3F E0 00 00 00 00 00 00 CB 44 15 AF 1D 78 B5 8C 40 CE 3B 9A CA 00");
  const auto stats = Received(PacketType::Notification, body).Unpack().get().as<ListExecutionStats>();
  EXPECT_EQ(to_string(stats),
            "{ MacroVectors=1, MicroVectors=-2, ComputationTime=0.500000, "
            "ExecutionTime=100000000000000000000.000000, ComputationTimePerMicroVector=1000000000.000000 }");
  EXPECT_EQ((ListExecutionStats{0, 0, -0.0000004, 2.5e-7, 0.9999995}.ToString()),
            "{ MacroVectors=0, MicroVectors=0, ComputationTime=-0.000000, ExecutionTime=0.000000, "
            "ComputationTimePerMicroVector=1.000000 }");
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
