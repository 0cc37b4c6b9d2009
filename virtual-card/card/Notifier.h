// What the card tells all its clients unasked.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

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

  // How many there have been.
  std::uint64_t GetCount() const { return count_; }

 private:
  void NotifyEvent(std::int32_t event, std::int32_t value);

  std::atomic<std::uint64_t> count_{0};
};

}  // namespace VELTRO::KELVO::VirtualCard
