// What outgoing and incoming frames share.
//
// A frame is a header of six bytes (start marker, packet type, body length as 32-bit little-endian) followed
// by as many body bytes. The body is a run of MessagePack objects; no array wraps them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>

namespace VELTRO::KELVO::ClientLib {

// Bit 7 marks an error, bit 1 a notification. What is no notification carries a request id.
enum class PacketType : std::uint8_t {
  Request = 0x00,
  Response = 0x01,
  ErrorResponse = 0x81,
  Notification = 0x02,
  ErrorNotification = 0x82,
};

constexpr bool IsError(PacketType type) {
  return (static_cast<unsigned>(type) & 0x80U) != 0;
}
constexpr bool IsNotification(PacketType type) {
  return (static_cast<unsigned>(type) & 0x02U) != 0;
}

// A whole frame where its bytes lie: its beginning, bytes that somebody else owns, its end. Any may be empty.
using FramePieces = std::array<std::span<const unsigned char>, 3>;

class Packet {
 public:
  static constexpr unsigned char PacketStart = 0x94;
  static constexpr std::size_t HeaderLen = 2;  // the offset of the body length in the header
  static constexpr std::size_t FullHeaderLen = 6;
  static constexpr std::size_t MessageLen = 0;  // belongs to the group; nothing in the frame depends on it

  // The body length that a frame's header claims. `header` has at least FullHeaderLen bytes.
  static std::uint32_t BodyLength(const unsigned char* header);

  explicit Packet(PacketType type) : type_(type) {}
  Packet(Packet&& other) noexcept;
  Packet& operator=(Packet&& other) noexcept;
  virtual ~Packet() = default;

  PacketType GetType() const { return type_; }
  // How many bytes the packet holds.
  std::size_t GetSize() const { return length_; }
  // The request id, if the packet has one.
  std::optional<std::uint32_t> GetRequestId() const { return requestId_; }

 protected:
  struct Free {
    void operator()(unsigned char* bytes) const { std::free(bytes); }  // realloc'ed storage
  };

  // Makes the storage `capacity` bytes, keeping what is in it. Throws std::bad_alloc.
  void Reserve(std::size_t capacity);

  PacketType type_;
  std::optional<std::uint32_t> requestId_;
  std::unique_ptr<unsigned char, Free> storage_;
  std::size_t length_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
