// What comes to the card from outside while lists run: its input ports, the start input, the word to resume.
#pragma once

#include <cstdint>
#include <map>

#include "common/Mutex.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class RunInputs {
 public:
  // `waits` is woken by every change.
  explicit RunInputs(AbortSignal& waits) : waits_(waits) {}

  void Set(std::int32_t port, std::uint32_t bits);
  std::uint32_t Get(std::int32_t port);  // 0 until it is set

  // Each is kept until the run takes it, so that a moment too early is not too early; but not beyond the run.
  void Start();
  void Resume();
  bool TakeStart();
  bool TakeResume();
  void BeginRun();

 private:
  AbortSignal& waits_;
  ClientLib::Mutex mutex_;
  std::map<std::int32_t, std::uint32_t> ports_ KELVO_GUARDED_BY(mutex_);
  bool start_ KELVO_GUARDED_BY(mutex_) = false;
  bool resume_ KELVO_GUARDED_BY(mutex_) = false;
};

}  // namespace VELTRO::KELVO::VirtualCard
