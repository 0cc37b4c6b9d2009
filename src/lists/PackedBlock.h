// A growing run of bytes in one block. Copies share the block until one of them changes it.
#pragma once

#include <atomic>
#include <cstddef>
#include <span>

namespace VELTRO::KELVO::ClientLib {

// Grows in place where the system can, so that a large one costs its bytes and no copy; large blocks come
// from the system as untouched pages, so that the room ahead costs nothing. One thread at a time per
// PackedBlock; blocks that share their bytes may be used by different threads.
class PackedBlock {
 public:
  PackedBlock() = default;
  PackedBlock(const PackedBlock& other) noexcept;
  PackedBlock(PackedBlock&& other) noexcept;
  PackedBlock& operator=(PackedBlock other) noexcept;
  ~PackedBlock();

  std::size_t Size() const { return size_; }
  std::span<const unsigned char> Bytes() const { return {data_, size_}; }
  // Bytes that may be overwritten in place.
  std::span<unsigned char> WritableBytes();

  // Makes `count` more bytes, not initialised, and returns where they stand. Throws std::bad_alloc.
  unsigned char* Extend(std::size_t count) {
    if (data_ == nullptr || count > capacity_ - size_ || IsShared()) Own(size_ + count);
    unsigned char* at = data_ + size_;
    size_ += count;
    return at;
  }
  // Makes room for `size` bytes in all, so that up to there it need not grow. Throws std::bad_alloc.
  void Reserve(std::size_t size) {
    if (size > capacity_) Own(size);
  }
  // Cuts back to `size` bytes.
  void Truncate(std::size_t size) { size_ = size; }
  void Clear() { *this = PackedBlock(); }

 private:
  struct alignas(16) Header {
    std::atomic<std::size_t> shares{1};
  };

  Header* GetHeader() const { return reinterpret_cast<Header*>(data_) - 1; }
  bool IsShared() const {
    return data_ != nullptr && GetHeader()->shares.load(std::memory_order_acquire) != 1;
  }
  // Makes the block this object's own, with room for `size` bytes.
  void Own(std::size_t size);

  unsigned char* data_ = nullptr;  // behind the block's header
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
