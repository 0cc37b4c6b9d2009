#include "client/ClientPing.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <set>
#include <system_error>
#include <thread>

#include "client/CardAddresses.h"
#include "client/Ping.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// The places where one card can be, in the order in which they are probed.
constexpr struct {
  bool isInternal;
  IPAddress (*predict)(std::int32_t, bool);
} Places[] = {{false, &PredictIPv4}, {false, &PredictIPv6}, {true, &PredictIPv4}, {true, &PredictIPv6}};

// All probes of one discovery, which its threads share out among themselves. They are counted, not stored: a range may
// be huge.
class Probes {
 public:
  Probes(std::int32_t first, std::int32_t last, int sweeps, int timeoutMs,
         const ClientPing::SerialReader& readSerial)
      : first_(first),
        perSweep_((static_cast<std::uint64_t>(std::int64_t{last} - first) + 1) * std::size(Places)),
        count_(perSweep_ * static_cast<std::uint64_t>(sweeps)),
        timeoutMs_(timeoutMs),
        readSerial_(readSerial) {}

  std::uint64_t GetPerSweep() const { return perSweep_; }

  // Takes probes until there are no more.
  void Work() {
    for (std::uint64_t probe = 0; (probe = next_++) < count_;) {
      try {
        Probe(probe % perSweep_);
      } catch (...) {
        next_ = count_;  // no further ones
        const MutexLock lock(mutex_);
        if (!failure_) failure_ = std::current_exception();
      }
    }
  }

  std::vector<CardInfo> GetResult() {
    const MutexLock lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
    return {found_.begin(), found_.end()};
  }

 private:
  void Probe(std::uint64_t candidate) {
    const auto serialNumber =
        static_cast<std::int32_t>(first_ + static_cast<std::int64_t>(candidate / std::size(Places)));
    const auto& place = Places[candidate % std::size(Places)];
    const IPAddress address = place.predict(serialNumber, place.isInternal);
    if (!Ping(address, timeoutMs_)) return;
    std::string serial = readSerial_(address);
    if (serial.empty()) return;
    const MutexLock lock(mutex_);
    found_.emplace(address, std::move(serial));
  }

  const std::int64_t first_;
  const std::uint64_t perSweep_;
  const std::uint64_t count_;
  const int timeoutMs_;
  const ClientPing::SerialReader& readSerial_;
  std::atomic<std::uint64_t> next_{0};

  Mutex mutex_;
  std::set<CardInfo> found_ KELVO_GUARDED_BY(mutex_);
  std::exception_ptr failure_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace

std::vector<CardInfo> ClientPing::Discover(int firstSerial, int lastSerial, int sweeps, int timeoutMs,
                                           int maxParallel, const SerialReader& readSerial) {
  if (firstSerial > lastSerial || sweeps <= 0) return {};
  Probes probes(firstSerial, lastSerial, sweeps, timeoutMs, readSerial);
  const std::uint64_t most =
      std::min<std::uint64_t>(static_cast<std::uint64_t>(std::max(maxParallel, 1)), probes.GetPerSweep());
  {
    std::vector<std::jthread> threads;
    try {
      while (threads.size() < most) threads.emplace_back([&probes] { probes.Work(); });
    } catch (const std::system_error&) {
      if (threads.empty()) throw;  // else those that there are do it
    }
  }
  return probes.GetResult();
}

}  // namespace VELTRO::KELVO::ClientLib
