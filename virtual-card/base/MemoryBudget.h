// Memory that clients may fill with one kind of thing, all of them together, so that none of them fills all there is.
#pragma once

#include <atomic>
#include <cstddef>
#include <stdexcept>

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class MemoryBudget {
 public:
  explicit MemoryBudget(std::size_t most) : most_(most) {}

  // False, and nothing is taken, when there is not that much left.
  bool Take(std::size_t bytes) noexcept {
    std::size_t used = used_.load(std::memory_order_relaxed);
    do {
      if (bytes > most_ - used) return false;
    } while (!used_.compare_exchange_weak(used, used + bytes, std::memory_order_relaxed));
    return true;
  }
  // From 0 to 1.
  double GetFreeShare() const noexcept {
    return most_ == 0
               ? 0
               : 1 - static_cast<double>(used_.load(std::memory_order_relaxed)) / static_cast<double>(most_);
  }
  void Give(std::size_t bytes) noexcept { used_.fetch_sub(bytes, std::memory_order_relaxed); }

 private:
  const std::size_t most_;
  std::atomic<std::size_t> used_{0};
};

// So many bytes of a budget, which they go back to with the object. One thread at a time.
class MemoryCharge {
 public:
  explicit MemoryCharge(MemoryBudget& budget) : budget_(budget) {}
  // Throws std::runtime_error "The card's memory is full.".
  MemoryCharge(MemoryBudget& budget, std::size_t bytes) : budget_(budget) { Add(bytes); }
  ~MemoryCharge() { budget_.Give(bytes_); }
  MemoryCharge(const MemoryCharge&) = delete;
  MemoryCharge& operator=(const MemoryCharge&) = delete;

  // False, and nothing has changed, when the budget does not have that much. Less there always is.
  bool Resize(std::size_t bytes) noexcept {
    if (bytes > bytes_ && !budget_.Take(bytes - bytes_)) return false;
    if (bytes < bytes_) budget_.Give(bytes_ - bytes);
    bytes_ = bytes;
    return true;
  }
  // Throws as the constructor.
  void Add(std::size_t bytes) {
    if (!Resize(bytes_ + bytes)) throw std::runtime_error("The card's memory is full.");
  }

 private:
  MemoryBudget& budget_;
  std::size_t bytes_ = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
