#include "card/PendingWork.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;
using std::chrono::steady_clock;

namespace {

constexpr std::chrono::hours LongestWait{1};

}  // namespace

PendingWork::PendingWork(Simulation::AbortSignal& changes) : changes_(changes), thread_([this] { Work(); }) {}

PendingWork::~PendingWork() {
  {
    const MutexLock lock(mutex_);
    stopping_ = true;
  }
  changes_.Wake();
  thread_.join();
}

void PendingWork::Add(const void* owner, TimePoint deadline, Attempt attempt) {
  bool isNext = false;
  {
    // The thread attempts nothing meanwhile, so it does not miss for this one what changes after the first attempt.
    const MutexLock lock(mutex_);
    const auto there = items_.find(owner);
    const std::size_t own = there == items_.end() ? 0 : there->second.size();
    if (own >= MostOfAnOwner || count_ >= MostOfAll) {
      throw std::runtime_error("Too much is waited for.");
    }
    if (attempt(deadline <= steady_clock::now())) return;
    items_[owner].push_back({deadline, std::move(attempt)});
    ++count_;
    isNext = deadline < next_;
  }
  if (isNext) changes_.Wake();
}

void PendingWork::Drop(const void* owner) {
  const MutexLock lock(mutex_);
  const auto there = items_.find(owner);
  if (there == items_.end()) return;
  count_ -= there->second.size();
  items_.erase(there);
}

void PendingWork::Work() {
  for (;;) {
    const std::uint64_t wakes = changes_.GetWakes();
    TimePoint next;
    {
      const MutexLock lock(mutex_);
      if (stopping_) return;
      next = next_ = AttemptAll();
    }
    changes_.WaitUntil(next, wakes);
  }
}

PendingWork::TimePoint PendingWork::AttemptAll() {
  const TimePoint now = steady_clock::now();
  TimePoint next = now + LongestWait;
  for (auto entry = items_.begin(); entry != items_.end();) {
    auto& items = entry->second;
    count_ -= std::erase_if(items, [now](Item& item) { return item.Try(item.Deadline <= now); });
    for (const Item& item : items) next = std::min(next, item.Deadline);
    entry = items.empty() ? items_.erase(entry) : std::next(entry);
  }
  return next;
}

}  // namespace VELTRO::KELVO::VirtualCard
