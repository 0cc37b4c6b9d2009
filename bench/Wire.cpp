#include "Wire.h"

#include <endian.h>
#include <sys/socket.h>
#include <time.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace VELTRO::KELVO::Bench {

namespace {

constexpr char kMagic = static_cast<char>(0x94);
constexpr std::size_t kLargestBody = std::size_t{16} << 20;

}  // namespace

std::uint64_t NowNs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U + static_cast<std::uint64_t>(now.tv_nsec);
}

void WriteHeader(char* at, FrameType type, std::size_t bodySize) {
  const std::uint32_t length = htole32(static_cast<std::uint32_t>(bodySize));
  at[0] = kMagic;
  at[1] = static_cast<char>(type);
  std::memcpy(at + 2, &length, sizeof(length));
}

void SendAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t sent = ::send(fd, data, size, MSG_NOSIGNAL);
    if (sent < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "send");
    }
    data += sent;
    size -= static_cast<std::size_t>(sent);
  }
}

FrameReader::FrameReader(int fd, std::size_t capacity) : fd_(fd), buffer_(capacity) {}

bool FrameReader::Next(Frame& frame) {
  while (!TryNext(frame)) {
    if (!Fill()) return false;
  }
  return true;
}

bool FrameReader::TryNext(Frame& frame) {
  const std::size_t available = end_ - begin_;
  if (available < kHeaderSize) return false;
  const char* at = buffer_.data() + begin_;
  if (at[0] != kMagic) throw std::runtime_error("stream out of step: no frame start");
  std::uint32_t length = 0;
  std::memcpy(&length, at + 2, sizeof(length));
  const std::size_t bodySize = le32toh(length);
  if (bodySize > kLargestBody) throw std::runtime_error("frame too large");
  if (available < kHeaderSize + bodySize) return false;
  frame = Frame{static_cast<FrameType>(at[1]), at + kHeaderSize, bodySize};
  begin_ += kHeaderSize + bodySize;
  return true;
}

bool FrameReader::Fill() {
  // What is left over is at most one incomplete frame, so moving it is cheap.
  if (begin_ != end_) std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  if (end_ == buffer_.size()) buffer_.resize(buffer_.size() * 2);
  for (;;) {
    const ssize_t received = ::recv(fd_, buffer_.data() + end_, buffer_.size() - end_, 0);
    if (received < 0 && errno == EINTR) continue;
    if (received < 0 && errno != ECONNRESET) throw std::system_error(errno, std::generic_category(), "recv");
    if (received <= 0) return false;
    end_ += static_cast<std::size_t>(received);
    return true;
  }
}

}  // namespace VELTRO::KELVO::Bench
