// A second opinion on frames and MessagePack bytes, with nothing in common with the library's way of reading
// them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace VELTRO::KELVO::Fuzz {

// The length of the first object in `bytes`; nothing when it is not all there, is malformed, or nests arrays
// and maps deeper than `depth`.
std::optional<std::size_t> LengthOfObject(std::span<const char> bytes, std::uint32_t depth);

struct RequestId {
  std::uint32_t Value;
  std::size_t Length;
};

// The number of up to 32 bits, in any of its encodings, that `bytes` begins with.
std::optional<RequestId> RequestIdOf(std::span<const char> bytes);

// Start marker, packet type, body length as 32-bit little-endian.
inline constexpr std::size_t HeaderBytes = 6;
inline constexpr unsigned char FrameStart = 0x94;
inline constexpr unsigned char RequestType = 0x00;
inline constexpr unsigned char NotificationBit = 0x02;
inline constexpr unsigned char ErrorBit = 0x80;

// The first frame of `stream` as its header says, or all there is.
std::span<const unsigned char> FirstFrame(std::span<const unsigned char> stream);
// Whether all is there that the frame's header says.
bool IsWhole(std::span<const unsigned char> frame);
// What is behind the header, which must be there.
std::span<const char> BodyOf(std::span<const unsigned char> frame);

}  // namespace VELTRO::KELVO::Fuzz
