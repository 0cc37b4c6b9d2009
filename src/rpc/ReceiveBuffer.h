// The bytes that have arrived and are not yet taken, in memory mapped from the system: it costs address space
// until it is touched, and grows with what has arrived, never with what a frame's header promises.
#pragma once

#include <cstddef>
#include <span>

namespace VELTRO::KELVO::ClientLib {

class ReceiveBuffer {
 public:
  // Throws std::bad_alloc.
  explicit ReceiveBuffer(std::size_t capacity);
  ~ReceiveBuffer();
  ReceiveBuffer(const ReceiveBuffer&) = delete;
  ReceiveBuffer& operator=(const ReceiveBuffer&) = delete;

  const unsigned char* Data() const { return memory_ + begin_; }
  std::size_t Size() const { return end_ - begin_; }

  // Room for more bytes, at least one. `wanted` is how many bytes are to be in the buffer in the end: the
  // room is made without moving the bytes again and again, but never much larger than what is there.
  std::span<unsigned char> Room(std::size_t wanted);
  // Says that `count` bytes were written into the room.
  void Add(std::size_t count) { end_ += count; }
  // Drops `count` bytes from the front.
  void Drop(std::size_t count);

 private:
  void Remap(std::size_t capacity);

  const std::size_t firstCapacity_;
  std::size_t capacity_ = 0;
  unsigned char* memory_ = nullptr;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
