#include "Measure.h"

#include <algorithm>
#include <barrier>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "Report.h"
#include "Wire.h"

namespace VELTRO::KELVO::Bench {

namespace {

constexpr int kLatencyWarmUp = 300;
constexpr int kLatencyCalls = 4000;
constexpr int kParallelWarmUp = 200;
constexpr std::uint64_t kParallelNs = 400'000'000;
constexpr int kStreamCount = 200'000;
constexpr int kStreamPasses = 5;
constexpr int kNotifyOnceWarmUp = 20;
constexpr int kNotifyOnceCount = 500;
constexpr auto kPatience = std::chrono::seconds(10);

double ToMicroseconds(std::uint64_t nanoseconds) {
  return static_cast<double>(nanoseconds) / 1e3;
}

}  // namespace

double MeasureCallLatency(const std::function<void()>& call) {
  for (int i = 0; i < kLatencyWarmUp; ++i) call();
  std::vector<double> latencies;
  latencies.reserve(kLatencyCalls);
  for (int i = 0; i < kLatencyCalls; ++i) {
    const std::uint64_t begin = NowNs();
    call();
    latencies.push_back(ToMicroseconds(NowNs() - begin));
  }
  return Median(std::move(latencies));
}

double MeasureParallelCalls(RowContext& context, const std::function<void()>& call) {
  struct Caller {
    std::vector<double> latencies;
    std::uint64_t endedAt = 0;
    std::exception_ptr failure;
  };
  std::vector<Caller> callers(kCallingThreads);
  std::atomic<std::uint64_t> beganAt{0};
  std::barrier start(kCallingThreads, [&]() noexcept { beganAt = NowNs(); });

  const auto run = [&](Caller& caller) {
    try {
      caller.latencies.reserve(std::size_t{1} << 16);
      for (int i = 0; i < kParallelWarmUp; ++i) call();
    } catch (...) {
      caller.failure = std::current_exception();
    }
    start.arrive_and_wait();
    if (caller.failure) return;
    try {
      const std::uint64_t deadline = beganAt + kParallelNs;
      std::uint64_t now = NowNs();
      while (now < deadline) {
        const std::uint64_t begin = now;
        call();
        now = NowNs();
        caller.latencies.push_back(ToMicroseconds(now - begin));
      }
      caller.endedAt = now;
    } catch (...) {
      caller.failure = std::current_exception();
    }
  };
  {
    std::vector<std::jthread> threads;
    for (Caller& caller : callers) threads.emplace_back(run, std::ref(caller));
  }

  std::vector<double> all;
  std::uint64_t endedAt = 0;
  for (const Caller& caller : callers) {
    if (caller.failure) std::rethrow_exception(caller.failure);
    all.insert(all.end(), caller.latencies.begin(), caller.latencies.end());
    endedAt = std::max(endedAt, caller.endedAt);
  }
  std::sort(all.begin(), all.end());
  context.Note("p50 of a call", "us", all[all.size() / 2]);
  context.Note("p99.9 of a call", "us", all[all.size() * 999 / 1000]);
  context.Note("longest stall", "us", all.back());
  return static_cast<double>(all.size()) * 1e9 / static_cast<double>(endedAt - beganAt);
}

void ProgressCounter::Arm(int count) {
  const std::lock_guard lock(mutex_);
  finishedAt_ = 0;
  next_ = 0;
  misplaced_ = 0;
  count_ = count;
}

void ProgressCounter::OnProgress(int value) {
  // One receiver at a time, so plain loads and stores do; the atomics only make the hand-over to Arm defined.
  const int expected = next_.load(std::memory_order_relaxed);
  if (value != expected) misplaced_.store(1, std::memory_order_relaxed);
  next_.store(expected + 1, std::memory_order_relaxed);
  if (expected + 1 != count_.load(std::memory_order_relaxed)) return;
  const std::lock_guard lock(mutex_);
  finishedAt_ = NowNs();
  finished_.notify_all();
}

std::uint64_t ProgressCounter::WaitAll() {
  std::unique_lock lock(mutex_);
  if (!finished_.wait_for(lock, kPatience, [&] { return finishedAt_ != 0; })) {
    throw std::runtime_error("only " + std::to_string(next_) + " of " + std::to_string(count_) +
                             " notifications");
  }
  if (misplaced_ != 0) throw std::runtime_error("notifications lost or out of order");
  return finishedAt_;
}

double MeasureNotificationRate(ProgressCounter& counter, const std::function<void(int count)>& startStream) {
  std::uint64_t elapsed = 0;
  for (int pass = 0; pass <= kStreamPasses; ++pass) {
    counter.Arm(kStreamCount);
    const std::uint64_t begin = NowNs();
    startStream(kStreamCount);
    const std::uint64_t end = counter.WaitAll();
    // The first pass warms up both processes; the server also packs the stream in it.
    if (pass > 0) elapsed += end - begin;
  }
  return kStreamPasses * kStreamCount * 1e9 / static_cast<double>(elapsed);
}

void ProgressStopwatch::OnProgress(int value) {
  const std::uint64_t nanoseconds = (NowNs() - static_cast<std::uint64_t>(value)) & kStampMask;
  const std::lock_guard lock(mutex_);
  nanoseconds_ = nanoseconds;
  isTaken_ = true;
  arrived_.notify_all();
}

double ProgressStopwatch::WaitNext() {
  std::unique_lock lock(mutex_);
  if (!arrived_.wait_for(lock, kPatience, [&] { return isTaken_; }))
    throw std::runtime_error("no notification");
  isTaken_ = false;
  return ToMicroseconds(nanoseconds_);
}

double MeasureNotificationLatency(ProgressStopwatch& stopwatch, const std::function<void()>& notifyOnce) {
  std::vector<double> latencies;
  for (int i = 0; i < kNotifyOnceWarmUp + kNotifyOnceCount; ++i) {
    notifyOnce();
    const double latency = stopwatch.WaitNext();
    if (i >= kNotifyOnceWarmUp) latencies.push_back(latency);
  }
  return Median(std::move(latencies));
}

}  // namespace VELTRO::KELVO::Bench
