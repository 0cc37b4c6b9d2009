#pragma once

#include <cstddef>
#include <cstdint>
#include <msgpack.hpp>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace VELTRO::KELVO::Bench {

enum class FrameType : std::uint8_t {
  Request = 0x00,
  Response = 0x01,
  Notification = 0x02,
  ErrorResponse = 0x81
};

inline constexpr std::size_t kHeaderSize = 6;
inline constexpr int kProgressEvent = 0x11;

// A progress value is a plain int, so a stamp of nanoseconds has to fit 31 bits; it wraps every 2.1 s.
inline constexpr std::uint64_t kStampMask = 0x7FFFFFFF;

std::uint64_t NowNs();

void WriteHeader(char* at, FrameType type, std::size_t bodySize);
void SendAll(int fd, const char* data, std::size_t size);

struct Frame {
  FrameType type;
  const char* body;
  std::size_t size;
};

// Takes whole frames out of one buffer, so that many small frames cost one recv. A frame handed out stays
// valid only until the next call of Fill or Next.
class FrameReader {
 public:
  FrameReader(int fd, std::size_t capacity);

  // Blocks for the next frame; false once the peer has closed.
  bool Next(Frame& frame);
  // Looks only at what has already been received.
  bool TryNext(Frame& frame);
  // One recv of whatever has arrived; false once the peer has closed.
  bool Fill();

 private:
  int fd_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

// Small requests never touch the heap.
class StackFrame {
 public:
  template <typename... Arguments>
  StackFrame(std::uint32_t id, std::string_view method, const Arguments&... arguments) {
    msgpack::packer<StackFrame> packer(*this);
    packer.pack(id);
    packer.pack_str(static_cast<std::uint32_t>(method.size()));
    packer.pack_str_body(method.data(), static_cast<std::uint32_t>(method.size()));
    packer.pack_array(static_cast<std::uint32_t>(sizeof...(arguments)));
    (packer.pack(arguments), ...);
    WriteHeader(data_, FrameType::Request, size_ - kHeaderSize);
  }

  void write(const char* bytes, std::size_t count) {
    if (count > sizeof(data_) - size_) throw std::length_error("request does not fit the stack buffer");
    __builtin_memcpy(data_ + size_, bytes, count);
    size_ += count;
  }

  const char* Data() const { return data_; }
  std::size_t Size() const { return size_; }

 private:
  char data_[512];
  std::size_t size_ = kHeaderSize;
};

}  // namespace VELTRO::KELVO::Bench
