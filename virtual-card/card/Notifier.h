// What the card tells all its clients unasked.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/Activity.h"

namespace VELTRO::KELVO::VirtualCard {

// Takes whole frames for every client that is connected. Never waits for any of them.
class Notifier {
 public:
  virtual ~Notifier() = default;
  virtual void Notify(std::span<const unsigned char> frame) = 0;

  void NotifyProgress(std::int32_t value);
  void NotifyListDone(std::int32_t listId);
  void NotifyListIdle(std::int32_t listId);
  void NotifyError(const std::string& text);

  // Shows it what is told from now on. Before there is anything to tell.
  void ShowTo(Activity& activity) { activity_ = &activity; }

  // How many there have been.
  std::uint64_t GetCount() const { return count_; }

 private:
  void NotifyEvent(std::string_view name, std::int32_t event, std::int32_t value);
  bool IsShown() const { return activity_ != nullptr && activity_->IsWatched(); }

  Activity* activity_ = nullptr;
  std::atomic<std::uint64_t> count_{0};
};

}  // namespace VELTRO::KELVO::VirtualCard
