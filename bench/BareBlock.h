#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Bench {

// Codes and payloads of a mark, one behind the other in a block that grows in place where it can.
class BareBlock {
 public:
  static constexpr std::size_t kMarkBytes = 25;

  BareBlock() = default;
  BareBlock(const BareBlock&) = delete;
  BareBlock& operator=(const BareBlock&) = delete;
  ~BareBlock() { std::free(bytes_); }

  void AppendMark(double x, double y) {
    unsigned char payload[21] = {1, 0, 0, 17, 0x6B};
    std::memcpy(payload + 5, &x, sizeof x);
    std::memcpy(payload + 13, &y, sizeof y);
    const std::int32_t code = ClientLib::CommandCode::MARK_ABS;
    if (size_ + kMarkBytes > capacity_) Grow();
    std::memcpy(bytes_ + size_, &code, sizeof code);
    std::memcpy(bytes_ + size_ + sizeof code, payload, sizeof payload);
    size_ += kMarkBytes;
  }
  std::size_t Count() const { return size_ / kMarkBytes; }

 private:
  void Grow() {
    capacity_ = capacity_ == 0 ? 4096 : capacity_ + capacity_ / 2;
    bytes_ = static_cast<unsigned char*>(std::realloc(bytes_, capacity_));
    if (bytes_ == nullptr) throw std::bad_alloc();
  }

  unsigned char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace VELTRO::KELVO::Bench
