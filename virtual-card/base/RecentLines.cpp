#include "base/RecentLines.h"

#include <algorithm>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

void RecentLines::Add(const Line& line) noexcept {
  const MutexLock lock(mutex_);
  for (const char byte : line.GetText()) {
    bytes_[end_] = byte;
    end_ = (end_ + 1) % MostBytes;
  }
  size_ = std::min(size_ + line.Size, MostBytes);
}

std::string RecentLines::Get() {
  std::string text;
  {
    const MutexLock lock(mutex_);
    text.reserve(size_);
    for (std::size_t i = 0; i < size_; ++i) text += bytes_[(end_ + MostBytes - size_ + i) % MostBytes];
    if (size_ < MostBytes) return text;
  }
  return text.erase(0, text.find('\n') + 1);  // that of which the beginning has gone
}

}  // namespace VELTRO::KELVO::VirtualCard
