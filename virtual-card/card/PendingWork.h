// What is done when something has happened on the card, or at its time: answers that clients wait for, ends of pulses.
#pragma once

#include <cstddef>
#include <functional>
#include <thread>
#include <unordered_map>
#include <vector>

#include "common/Mutex.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::VirtualCard {

// A thread of its own looks again at all of it whenever `changes` are told. Any thread may call anything at any time, but
// none from an attempt.
class PendingWork {
 public:
  using TimePoint = ClientLib::CondVar::TimePoint;
  // Does what there is to be done if it can be done by now; `isOver` says that it is the last attempt. Returns whether it
  // is done. Calls nothing that waits, and throws nothing.
  using Attempt = std::function<bool(bool isOver)>;

  static constexpr std::size_t MostOfAnOwner = 1024, MostOfAll = 65536;

  explicit PendingWork(Simulation::AbortSignal& changes);
  ~PendingWork();
  PendingWork(const PendingWork&) = delete;
  PendingWork& operator=(const PendingWork&) = delete;

  // Attempts it at once, and again at every change, until it is done or the deadline has come. Throws std::runtime_error
  // "Too much is waited for." when as much of the owner's, or of all
  // together, waits already.
  void Add(const void* owner, TimePoint deadline, Attempt attempt);
  // Forgets what waits of the owner's; none of it is attempted any more.
  void Drop(const void* owner);

 private:
  struct Item {
    TimePoint Deadline;
    Attempt Try;
  };

  void Work();
  // Attempts all that waits; returns when to do so at the latest.
  TimePoint AttemptAll() KELVO_REQUIRES(mutex_);

  Simulation::AbortSignal& changes_;
  ClientLib::Mutex mutex_;
  bool stopping_ KELVO_GUARDED_BY(mutex_) = false;
  std::unordered_map<const void*, std::vector<Item>> items_ KELVO_GUARDED_BY(mutex_);
  std::size_t count_ KELVO_GUARDED_BY(mutex_) = 0;
  TimePoint next_ KELVO_GUARDED_BY(mutex_);  // until when the thread waits
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
