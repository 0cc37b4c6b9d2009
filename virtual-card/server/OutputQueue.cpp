#include "server/OutputQueue.h"

#include <algorithm>

namespace VELTRO::KELVO::VirtualCard {

void OutputQueue::Append(FrameKind kind, std::span<const unsigned char> bytes) {
  while (!bytes.empty()) {
    if (pieces_.empty() || pieces_.back().Kind != kind || pieces_.back().Bytes.size() == PieceBytes) {
      pieces_.push_back({kind, {}});
    }
    auto& piece = pieces_.back().Bytes;
    const auto part = bytes.first(std::min(bytes.size(), PieceBytes - piece.size()));
    piece.insert(piece.end(), part.begin(), part.end());
    size_ += part.size();
    if (kind == FrameKind::Notification) notificationBytes_ += part.size();
    bytes = bytes.subspan(part.size());
  }
}

std::span<const unsigned char> OutputQueue::Front() const {
  return std::span(pieces_.front().Bytes).subspan(sent_);
}

void OutputQueue::Drop(std::size_t count) {
  size_ -= count;
  sent_ += count;
  if (pieces_.front().Kind == FrameKind::Notification) notificationBytes_ -= count;
  if (sent_ < pieces_.front().Bytes.size()) return;
  pieces_.pop_front();
  sent_ = 0;
}

// Not by a new queue: that would take memory.
void OutputQueue::Clear() noexcept {
  pieces_.clear();
  sent_ = size_ = notificationBytes_ = 0;
}

}  // namespace VELTRO::KELVO::VirtualCard
