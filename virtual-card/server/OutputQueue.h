// What a client's socket has not taken yet.
#pragma once

#include <cstddef>
#include <deque>
#include <span>
#include <vector>

namespace VELTRO::KELVO::VirtualCard {

enum class FrameKind { Answer, Notification };

class OutputQueue {
 public:
  bool IsEmpty() const { return pieces_.empty(); }
  // Bytes that wait, and how many of them are of notifications.
  std::size_t GetSize() const { return size_; }
  std::size_t GetNotificationBytes() const { return notificationBytes_; }
  // What it costs to keep them.
  std::size_t GetMemory() const { return size_ + pieces_.size() * PieceCost; }

  // Throws std::bad_alloc: then a part of the bytes may have been taken.
  void Append(FrameKind kind, std::span<const unsigned char> bytes);
  // The first bytes, of which Drop then takes those that were sent.
  std::span<const unsigned char> Front() const;
  void Drop(std::size_t count);
  void Clear() noexcept;

 private:
  // Small frames of one kind share a piece, and large ones have several: what is sent of them is given back.
  static constexpr std::size_t PieceBytes = 65536;
  static constexpr std::size_t PieceCost = 128;

  struct Piece {
    FrameKind Kind;
    std::vector<unsigned char> Bytes;
  };

  std::deque<Piece> pieces_;
  std::size_t sent_ = 0;  // of the first piece
  std::size_t size_ = 0;
  std::size_t notificationBytes_ = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
