#include "ReferenceRows.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <msgpack.hpp>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <tuple>

#include "Measure.h"
#include "RawClient.h"
#include "Wire.h"

namespace VELTRO::KELVO::Bench {

namespace {

// A name as long as those of the everyday calls; the server answers false to any name it does not know.
constexpr std::string_view kSmallCall = "GetIsScanning";
constexpr int kSmallArgument = 0;

constexpr std::size_t kStreamReceiveCapacity = std::size_t{1} << 20;

template <typename Client>
void CallOnce(Client& client) {
  if (client.Call(kSmallCall, kSmallArgument).get().template as<bool>()) {
    throw std::runtime_error("true instead of false");
  }
}

// Reads notifications on a thread of its own, as a program does that wants nothing but the notifications.
class NotificationLoop {
 public:
  NotificationLoop(std::uint16_t port, ProgressCounter& counter)
      : socket_(port), counter_(counter), thread_([this] { Receive(); }) {}

  ~NotificationLoop() {
    socket_.Shutdown();
    thread_.join();
  }

  void StartStream(int count) { socket_.Send(StackFrame(++lastId_, "StreamNotifications", count)); }

 private:
  void Receive() {
    try {
      FrameReader reader(socket_.Fd(), kStreamReceiveCapacity);
      Frame frame{};
      while (reader.Next(frame)) {
        if (frame.type != FrameType::Notification) continue;
        const msgpack::object_handle event = msgpack::unpack(frame.body, frame.size);
        const msgpack::object& body = event.get();
        if (body.type != msgpack::type::ARRAY || body.via.array.size < 2) throw msgpack::type_error();
        const msgpack::object* arguments = body.via.array.ptr;
        if (arguments[0].as<int>() == kProgressEvent) counter_.OnProgress(arguments[1].as<int>());
      }
    } catch (const std::exception& error) {
      // The counter then stays short, which makes the row fail.
      std::fprintf(stderr, "notification loop: %s\n", error.what());
    }
  }

  RawSocket socket_;
  ProgressCounter& counter_;
  std::uint32_t lastId_ = 0;
  std::thread thread_;
};

}  // namespace

double RunRawCallLatency(RowContext& context) {
  SharedWaitClient client(context.Port());
  return MeasureCallLatency([&] { CallOnce(client); });
}

double RunRawFutexCallLatency(RowContext& context) {
  SemaphoreClient client(context.Port());
  return MeasureCallLatency([&] { CallOnce(client); });
}

double RunRawPingPong(RowContext& context) {
  PingPongClient client(context.Port());
  return MeasureCallLatency([&] { CallOnce(client); });
}

double RunRawParallelCalls(RowContext& context) {
  SlotWaitClient client(context.Port());
  return MeasureParallelCalls(context, [&] { CallOnce(client); });
}

double RunRawNotificationRate(RowContext& context) {
  ProgressCounter counter;
  NotificationLoop loop(context.Port(), counter);
  return MeasureNotificationRate(counter, [&](int count) { loop.StartStream(count); });
}

double RunRawNotificationLatency(RowContext& context) {
  PingPongClient client(context.Port());
  ProgressStopwatch stopwatch;
  return MeasureNotificationLatency(stopwatch, [&] {
    client.Call("NotifyOnce", 0);
    const Frame frame = client.NextNotification();
    const msgpack::object_handle event = msgpack::unpack(frame.body, frame.size);
    const auto [kind, value, stamp] = event.get().as<std::tuple<int, int, std::uint64_t>>();
    stopwatch.OnProgress(value);
    if (kind != kProgressEvent || static_cast<std::uint64_t>(value) != (stamp & kStampMask)) {
      throw std::runtime_error("not the notification asked for");
    }
  });
}

void RegisterReferenceRows(Harness& harness) {
  harness.AddReference(kCallLatency, "us", RunRawCallLatency);
  harness.AddReference(kFutexCallLatency, "us", RunRawFutexCallLatency);
  harness.AddReference(kPingPong, "us", RunRawPingPong);
  harness.AddReference(kParallelCalls, "calls/s", RunRawParallelCalls);
  harness.AddReference(kNotificationRate, "1/s", RunRawNotificationRate);
  harness.AddReference(kNotificationLatency, "us", RunRawNotificationLatency);
}

}  // namespace VELTRO::KELVO::Bench
