#include "rpc/ReceiveBuffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace VELTRO::KELVO::ClientLib {

ReceiveBuffer::ReceiveBuffer(std::size_t capacity) : firstCapacity_(std::max<std::size_t>(capacity, 4096)) {
  void* memory = mmap(nullptr, firstCapacity_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  memory_ = static_cast<unsigned char*>(memory);
  capacity_ = firstCapacity_;
}

ReceiveBuffer::~ReceiveBuffer() {
  munmap(memory_, capacity_);
}

void ReceiveBuffer::Remap(std::size_t capacity) {
  void* memory = mremap(memory_, capacity_, capacity, MREMAP_MAYMOVE);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  memory_ = static_cast<unsigned char*>(memory);
  capacity_ = capacity;
}

std::span<unsigned char> ReceiveBuffer::Room(std::size_t wanted) {
  if (begin_ > 0 && (end_ == capacity_ || begin_ + wanted > capacity_)) {
    std::memmove(memory_, memory_ + begin_, Size());
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == capacity_) Remap(capacity_ * 2);
  return {memory_ + end_, capacity_ - end_};
}

void ReceiveBuffer::Drop(std::size_t count) {
  begin_ += count;
  if (begin_ < end_) return;
  // Empty: begin again with the pages that have been touched already, and give back what one large frame
  // needed.
  begin_ = end_ = 0;
  if (capacity_ > firstCapacity_) Remap(firstCapacity_);
}

}  // namespace VELTRO::KELVO::ClientLib
