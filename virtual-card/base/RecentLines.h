// The latest of the lines that were said, for those who ask for them later.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "base/Line.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. Adding takes no memory and does not throw.
class RecentLines {
 public:
  static constexpr std::size_t MostBytes = 65536;

  void Add(const Line& line) noexcept;
  // Whole lines, the oldest first.
  std::string Get();

 private:
  ClientLib::Mutex mutex_;
  std::array<char, MostBytes> bytes_ KELVO_GUARDED_BY(mutex_);  // a ring
  std::size_t end_ KELVO_GUARDED_BY(mutex_) = 0;                // behind the latest byte
  std::size_t size_ KELVO_GUARDED_BY(mutex_) = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
