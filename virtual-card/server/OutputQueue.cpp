#include "server/OutputQueue.h"

namespace VELTRO::KELVO::VirtualCard {

void OutputQueue::Append(FrameKind kind, std::span<const unsigned char> bytes) {
  if (bytes.empty()) return;
  if (pieces_.empty() || pieces_.back().Kind != kind ||
      pieces_.back().Bytes.size() + bytes.size() > PieceBytes) {
    pieces_.push_back({kind, {}});
  }
  auto& piece = pieces_.back().Bytes;
  piece.insert(piece.end(), bytes.begin(), bytes.end());
  size_ += bytes.size();
  if (kind == FrameKind::Notification) notificationBytes_ += bytes.size();
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

}  // namespace VELTRO::KELVO::VirtualCard
