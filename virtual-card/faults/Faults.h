// The faults that were asked for, and which of them befalls what.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "common/Mutex.h"
#include "faults/Fault.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class Faults {
 public:
  static constexpr std::size_t Most = 100;

  struct Entry {
    std::string Text;      // as it was set
    std::uint64_t Calls;   // that it fitted since then, its chance, count and begin aside
    std::uint64_t Befell;  // how many of these it befell
  };

  // Where the draws of those by chance begin.
  explicit Faults(std::uint64_t seed) : seed_(seed) {}

  // "TARGET[:CONDITION...]:ACTION" sets one, "TARGET:off" ends those of a target, "off" all. Throws std::invalid_argument,
  // which says what is wrong and what is allowed.
  void Set(std::string_view text);
  void Clear();
  // The latest first.
  std::vector<Entry> List();

  // The first thing to ask: while there are none, it is the only one and takes no lock.
  bool AreNone() const noexcept { return !areThere_.load(std::memory_order_relaxed); }
  // The fault that befalls a request, or its answer, of the connection; null for none. Of several that fit the one that
  // was set last goes first.
  std::shared_ptr<const Fault> OfRequest(std::string_view method, std::uint64_t connection);
  std::shared_ptr<const Fault> OfNotification(std::string_view kind, std::uint64_t connection);

 private:
  struct Item {
    std::shared_ptr<const Fault> What;
    std::mt19937_64 Random;
    std::uint64_t Calls = 0;
    std::uint64_t Befell = 0;

    // Counts the call.
    bool Befalls();
  };

  void Add(Fault fault) KELVO_REQUIRES(mutex_);
  std::shared_ptr<const Fault> Choose(std::string_view target, std::string_view all,
                                      std::uint64_t connection);

  const std::uint64_t seed_;
  std::atomic<bool> areThere_{false};
  ClientLib::Mutex mutex_;
  std::list<Item> items_ KELVO_GUARDED_BY(mutex_);  // the latest first
  std::uint64_t number_ KELVO_GUARDED_BY(mutex_) = 0;
  bool isSeedTold_ KELVO_GUARDED_BY(mutex_) = false;
};

}  // namespace VELTRO::KELVO::VirtualCard
