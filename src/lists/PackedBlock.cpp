#include "lists/PackedBlock.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace VELTRO::KELVO::ClientLib {

PackedBlock::PackedBlock(const PackedBlock& other) noexcept
    : data_(other.data_), size_(other.size_), capacity_(other.capacity_) {
  if (data_ != nullptr) GetHeader()->shares.fetch_add(1, std::memory_order_relaxed);
}

PackedBlock::PackedBlock(PackedBlock&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

PackedBlock& PackedBlock::operator=(PackedBlock other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  std::swap(capacity_, other.capacity_);
  return *this;
}

PackedBlock::~PackedBlock() {
  if (data_ == nullptr) return;
  if (GetHeader()->shares.fetch_sub(1, std::memory_order_acq_rel) == 1) std::free(GetHeader());
}

std::span<unsigned char> PackedBlock::WritableBytes() {
  if (IsShared()) Own(size_);
  return {data_, size_};
}

void PackedBlock::Own(std::size_t size) {
  const std::size_t capacity =
      size <= capacity_ ? capacity_ : std::max({size, capacity_ + capacity_ / 2, std::size_t{240}});
  const bool shared = IsShared();
  void* block = std::realloc(data_ == nullptr || shared ? nullptr : GetHeader(), sizeof(Header) + capacity);
  if (block == nullptr) throw std::bad_alloc();
  auto* bytes = static_cast<unsigned char*>(block) + sizeof(Header);
  if (data_ == nullptr || shared) {
    ::new (block) Header;
    if (shared) {
      const std::size_t kept = size_;
      std::memcpy(bytes, data_, kept);
      Clear();
      size_ = kept;
    }
  }
  data_ = bytes;
  capacity_ = capacity;
}

}  // namespace VELTRO::KELVO::ClientLib
