#include "LibraryRows.h"

#include <stdexcept>

#include "Measure.h"
#include "ReferenceRows.h"
#include "client/ClientAPI.h"

namespace VELTRO::KELVO::Bench {

namespace {

using ClientLib::ClientAPI;
using ClientLib::IPAddress;
using ClientLib::ListEventKind;
using ClientLib::UncheckedMethod;

// A connection as an application has it: with its handshake, list events and time-out.
class Client {
 public:
  explicit Client(std::uint16_t port) { client_.Connect(IPAddress::Resolve("127.0.0.1"), port, 1); }

  // The same call that the reference makes.
  void SmallCall() {
    if (client_.Call<bool>(UncheckedMethod{"GetIsScanning"}, 0))
      throw std::runtime_error("true instead of false");
  }

  void Request(const char* method, int argument) { client_.Call(UncheckedMethod{method}, argument); }

  // From here on `receiver` gets every progress value, as a registered callback gets it.
  template <class Receiver>
  void SendProgressTo(Receiver& receiver) {
    client_.GetListEvents().RegisterCallback(
        ListEventKind::Progress,
        [&receiver](std::int32_t, std::int32_t value) { receiver.OnProgress(value); });
  }

 private:
  ClientAPI client_;
};

double ParallelCalls(RowContext& context) {
  Client client(context.Port());
  return MeasureParallelCalls(context, [&] { client.SmallCall(); });
}

double NotificationRate(RowContext& context) {
  ProgressCounter counter;
  Client client(context.Port());
  client.SendProgressTo(counter);
  return MeasureNotificationRate(counter, [&](int count) { client.Request("StreamNotifications", count); });
}

double NotificationLatency(RowContext& context) {
  ProgressStopwatch stopwatch;
  Client client(context.Port());
  client.SendProgressTo(stopwatch);
  return MeasureNotificationLatency(stopwatch, [&] { client.Request("NotifyOnce", 0); });
}

}  // namespace

double RunLibraryCallLatency(RowContext& context) {
  Client client(context.Port());
  return MeasureCallLatency([&] { client.SmallCall(); });
}

void RegisterLibraryRows(Harness& harness) {
  harness.AddLibraryRow("call latency, library", kCallLatency, AtMost(1.15), RunLibraryCallLatency);
  harness.AddLibraryRow("call latency beside a futex, library", kFutexCallLatency, AtMost(1.12),
                        RunLibraryCallLatency);
  harness.AddLibraryRow("calls from 8 threads, library", kParallelCalls, AtLeast(1.0), ParallelCalls);
  harness.AddLibraryRow("notification rate, library", kNotificationRate, AtLeast(0.9), NotificationRate);
  harness.AddLibraryRow("notification latency, library", kNotificationLatency, AtMost(1.15),
                        NotificationLatency);
}

}  // namespace VELTRO::KELVO::Bench
