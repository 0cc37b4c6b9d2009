#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <vector>

#include "Harness.h"

// What a row measures, written once and used by the reference and by the library alike: only the call itself
// is given by the row. Connecting and warming up stay outside the measured time.

namespace VELTRO::KELVO::Bench {

inline constexpr int kCallingThreads = 8;

// Median round trip in microseconds of calls one after the other.
double MeasureCallLatency(const std::function<void()>& call);

// Calls per second of kCallingThreads threads at once; notes the tail of the latencies.
double MeasureParallelCalls(RowContext& context, const std::function<void()>& call);

// Counts the values 0, 1, 2, ... of a stream and insists on each of them, in order.
class ProgressCounter {
 public:
  void Arm(int count);
  // To be called for each progress notification, from whichever thread receives.
  void OnProgress(int value);
  // The time at which the last value came in; throws if the stream is incomplete or out of order.
  std::uint64_t WaitAll();

 private:
  std::atomic<int> count_{0};
  std::atomic<int> next_{0};
  std::atomic<int> misplaced_{0};
  std::mutex mutex_;
  std::condition_variable finished_;
  std::uint64_t finishedAt_ = 0;
};

// Progress notifications per second, from the request that starts the stream to the last value. The request
// is "StreamNotifications" with the count as its first argument.
double MeasureNotificationRate(ProgressCounter& counter, const std::function<void(int count)>& startStream);

// Tells how long ago the server stamped the value of a progress notification.
class ProgressStopwatch {
 public:
  // To be called first thing for each progress notification, from whichever thread receives.
  void OnProgress(int value);
  // Microseconds of the next notification; throws if none comes.
  double WaitNext();

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  bool isTaken_ = false;
  std::uint64_t nanoseconds_ = 0;
};

// Median microseconds from the server's stamp to OnProgress. The request is "NotifyOnce"; its arguments
// do not matter.
double MeasureNotificationLatency(ProgressStopwatch& stopwatch, const std::function<void()>& notifyOnce);

}  // namespace VELTRO::KELVO::Bench
