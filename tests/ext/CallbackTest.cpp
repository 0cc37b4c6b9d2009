// Callbacks: what they may do, and what others may count on.
#include <barrier>

#include "support/FakeCard.h"

namespace VELTRO::KELVO::Test {
namespace {

// What callbacks, which are plain functions, share with their test.
struct Shared {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  bool release = false;
  int port = 0;
  std::int32_t other = -1;
  std::int64_t list = -1;
  std::vector<std::string> found;

  void Begin() {
    done = release = false;
    found.clear();
  }
  void Finish() {
    const std::lock_guard lock(mutex);
    done = true;
    changed.notify_all();
  }
  bool WaitUntilDone() {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(60), [&] { return done; });
  }
  void Release(const char* what) {
    const std::lock_guard lock(mutex);
    found.push_back(what);
    release = true;
    changed.notify_all();
  }
} shared;

void BlockUntilReleased(std::int32_t, std::int32_t) {
  shared.Finish();
  std::unique_lock lock(shared.mutex);
  shared.changed.wait(lock, [] { return shared.release; });
  shared.found.push_back("returned");
}

// A card that sends one progress event behind each answer.
FakeCard::Script Notifying() {
  return FakeCard::Answering(
      [](const Request& request) { return Response(request.Id, false) + Notification(0x11, 5); });
}

void Check(const char* what, int result, const char* text) {
  const std::string error = LastError();
  if ((result == -1) != (*text != '\0') || error != text)
    shared.found.push_back(std::string(what) + ": " + error);
}

TEST(Callbacks, MayDoAllButWaitForThemselvesAndDisconnect) {
  FakeCard card(Notifying());
  Connection connection(card.Port());
  Connection other(card.Port());
  shared.Begin();
  shared.other = other;
  shared.port = card.Port();
  shared.list = vlListAllocate(connection);
  std::uint32_t id = 0;
  constexpr vlListEventCallback DoAll = [](std::int32_t handle, std::int32_t value) {
    constexpr const char* Own = "A callback must not wait for its own connection.";
    constexpr vlListEventCallback Nothing = [](std::int32_t, std::int32_t) {};
    bool running = false;
    std::int32_t event = 0;
    std::uint32_t another = 0;
    Check("value", value == 5 ? 0 : -2, "");
    Check("append", vlListAppendMarkAbs2D(shared.list, 1, 2), "");
    Check("call", vlListIsExecutionInProgress(handle, &running), Own);
    Check("upload", vlListSet(handle, 1, shared.list, false, -1), Own);
    Check("wait", vlListWaitForListDone(handle, &event, 10), Own);
    Check("other", vlListIsExecutionInProgress(shared.other, &running), "");
    Check("connect", vlConnect("127.0.0.1", shared.port) > 0 ? 0 : -1, "");
    Check("disconnect", vlDisconnect(handle), "A callback must not disconnect.");
    Check("disconnect other", vlDisconnect(shared.other), "A callback must not disconnect.");
    Check("register", vlListRegisterListIdleCallback(handle, Nothing, &another), "");
    Check("unregister", vlListUnRegisterListIdleCallback(handle, another), "");
    shared.Finish();
  };
  ASSERT_OK(vlListRegisterProgressCallback(connection, DoAll, &id));
  EXPECT_EQ(id, 2U);
  EXPECT_OK(vlListExecute(connection, 1));
  EXPECT_TRUE(shared.WaitUntilDone());
  EXPECT_EQ(shared.found, std::vector<std::string>{});
  EXPECT_EQ(vlListCommandCount(shared.list), 1);
}

TEST(Callbacks, KeepADisconnectUntilTheyReturn) {
  std::atomic<bool> asked{false};
  FakeCard card(FakeCard::Answering([&](const Request& request) {
    asked = request.Method == "LaserOn";
    return asked ? "" : Response(request.Id, false) + Notification(0x11, 5);
  }));
  const std::int32_t handle = vlConnect("127.0.0.1", card.Port());
  shared.Begin();
  std::uint32_t id = 0;
  vlListRegisterProgressCallback(handle, &BlockUntilReleased, &id);
  EXPECT_OK(vlListExecute(handle, 1));
  ASSERT_TRUE(shared.WaitUntilDone());
  // A wait and a call end before the callback, which is released by them, does.
  std::thread waiting([&] {
    Together(2, [&](std::uint32_t i) {
      std::int32_t value = 0;
      EXPECT_FAILS(i == 0 ? vlListWaitForListDone(handle, &value, 60000) : vlLaserLaserOn(handle),
                   "ConnectionAborted");
    });
    shared.Release("waits ended");
  });
  while (!asked) std::this_thread::yield();
  const Stopwatch watch;
  EXPECT_OK(vlDisconnect(handle));
  EXPECT_LT(watch.Milliseconds(), 10000) << "no time-out was waited for";
  EXPECT_EQ(shared.found, (std::vector<std::string>{"waits ended", "returned"}));
  waiting.join();
}

TEST(Callbacks, NeitherRunNorBeginOnceTheyAreUnregistered) {
  const FakeConnection connection(Notifying());
  shared.Begin();
  std::uint32_t id = 0;
  vlListRegisterProgressCallback(connection, &BlockUntilReleased, &id);
  EXPECT_OK(vlListExecute(connection, 1));
  ASSERT_TRUE(shared.WaitUntilDone());
  std::thread unregistering([&] {
    EXPECT_OK(vlListUnRegisterProgressCallback(connection, id));
    const std::lock_guard lock(shared.mutex);
    shared.found.push_back("unregistered");
  });
  usleep(50000);  // time for one that does not wait
  shared.Release("released");
  unregistering.join();
  EXPECT_EQ(shared.found, (std::vector<std::string>{"released", "returned", "unregistered"}));

  // However the two meet.
  static std::atomic<bool> registered;
  for (int round = 0; round < 300; ++round) {
    registered = true;
    vlListRegisterProgressCallback(
        connection, [](std::int32_t, std::int32_t) { EXPECT_TRUE(registered); }, &id);
    std::thread notifying([&] { EXPECT_OK(vlListExecute(connection, 1)); });
    usleep(static_cast<useconds_t>(round % 10) * 20);
    EXPECT_OK(vlListUnRegisterProgressCallback(connection, id));
    registered = false;
    notifying.join();
  }
}

TEST(Callbacks, ThatWaitForEachOtherAreToldSo) {
  // Only then: what came of connecting could still be on its way when the callbacks are registered.
  FakeCard card(FakeCard::Answering([](const Request& request) {
    return Response(request.Id, false) + (request.Method == "ExecuteList" ? Notification(0x11, 5) : "");
  }));
  static std::int32_t handles[2];
  static std::uint32_t id;
  static std::atomic<int> refused, answered, ended;
  static std::barrier<>* together;
  static std::int32_t (*wait)(std::int32_t other);
  std::int32_t (*const waits[])(std::int32_t) = {
      [](std::int32_t other) { return vlListExecute(other, 1); },
      [](std::int32_t other) { return vlListUnRegisterProgressCallback(other, id); }};
  const auto meet = [](std::int32_t handle, std::int32_t) {
    static thread_local bool entered = false;
    if (std::exchange(entered, true)) return;  // a later event
    together->arrive_and_wait();
    if (wait(handles[handle == handles[0] ? 1 : 0]) == 0) {
      ++answered;
    } else {
      refused += LastError() == "A callback must not wait for a connection whose callback waits for its own.";
    }
    if (++ended == 2) shared.Finish();
  };
  for (const auto each : waits) {
    Connection one(card.Port()), two(card.Port());
    std::barrier<> both(2);
    together = &both;
    wait = each;
    handles[0] = one;
    handles[1] = two;
    refused = answered = ended = 0;
    for (const std::int32_t handle : handles) vlListRegisterProgressCallback(handle, meet, &id);
    shared.Begin();
    const AtMost promptly(15000);  // a time-out is 17000
    for (const std::int32_t handle : handles) EXPECT_OK(vlListExecute(handle, 1));
    // One that is unregistered before it has begun does not come any more, and the other would wait for it.
    ASSERT_TRUE(shared.WaitUntilDone());
    for (const std::int32_t handle : handles) EXPECT_OK(vlListUnRegisterProgressCallback(handle, id));
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(answered, 1);
  }
}

TEST(Notifications, OfErrorsReachTheirCallbacks) {
  const FakeConnection connection(FakeCard::Then([](Peer& peer, const Request& request) {
    const msgpack::type::nil_t nil;
    peer.Send(FrameOf(0x82, std::make_tuple("Scanner fault", nil, nil)) + Frame(0x02, "\x07") +
              Response(request.Id, false));
  }));
  constexpr vlErrorEventCallback Keep = [](std::int32_t, std::int32_t code, const char* text,
                                           std::uint32_t length) {
    shared.found.push_back(std::to_string(code) + std::string(text, length));
    shared.Finish();
  };
  shared.Begin();
  std::uint32_t id = 0;
  EXPECT_OK(vlListRegisterErrorEventCallback(connection, Keep, &id));
  EXPECT_OK(vlListExecute(connection, 1)) << "a notification that is no array is dropped";
  ASSERT_TRUE(shared.WaitUntilDone());
  ASSERT_EQ(shared.found.size(), 1U);
  EXPECT_THAT(shared.found[0], AllOf(StartsWith("-1BeginException"), HasSubstr("Scanner fault")));
  EXPECT_OK(vlListUnRegisterErrorEventCallback(connection, id));
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
