#include "rpc/Packet.h"

#include <new>
#include <utility>

namespace VELTRO::KELVO::ClientLib {

std::uint32_t Packet::BodyLength(const unsigned char* header) {
  const unsigned char* at = header + HeaderLen;
  return static_cast<std::uint32_t>(at[0]) | static_cast<std::uint32_t>(at[1]) << 8 |
         static_cast<std::uint32_t>(at[2]) << 16 | static_cast<std::uint32_t>(at[3]) << 24;
}

Packet::Packet(Packet&& other) noexcept
    : type_(other.type_),
      requestId_(other.requestId_),
      storage_(std::move(other.storage_)),
      length_(std::exchange(other.length_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

Packet& Packet::operator=(Packet&& other) noexcept {
  type_ = other.type_;
  requestId_ = other.requestId_;
  storage_ = std::move(other.storage_);
  length_ = std::exchange(other.length_, 0);
  capacity_ = std::exchange(other.capacity_, 0);
  return *this;
}

void Packet::Reserve(std::size_t capacity) {
  void* grown = std::realloc(storage_.get(), capacity);
  if (grown == nullptr) throw std::bad_alloc();
  static_cast<void>(storage_.release());  // realloc has taken it
  storage_.reset(static_cast<unsigned char*>(grown));
  capacity_ = capacity;
}

}  // namespace VELTRO::KELVO::ClientLib
