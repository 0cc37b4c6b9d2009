// What a captured packet brings of a TCP connection.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>

namespace VELTRO::KELVO::Tool {

struct Endpoint {
  std::array<std::uint8_t, 16> Address{};  // of IPv4 the first four
  std::uint16_t Port = 0;

  friend auto operator<=>(const Endpoint&, const Endpoint&) = default;
};

struct TcpSegment {
  Endpoint From, To;
  std::uint32_t Sequence = 0, Acknowledged = 0;
  bool IsSyn = false, IsAck = false, IsFin = false, IsReset = false;
  std::span<const unsigned char> Bytes;
  std::size_t CutBytes = 0;  // behind these, which the capture did not keep
};

enum class PacketKind { Tcp, Fragment, Other };

// Whether packets of that link type (DLT_...) are understood.
bool IsKnownLink(int linkType);
// Takes a packet apart of which `packet` was captured. The segment's bytes stay where they are.
PacketKind ReadSegment(int linkType, std::span<const unsigned char> packet, std::size_t wholeSize,
                       TcpSegment& segment);

}  // namespace VELTRO::KELVO::Tool
