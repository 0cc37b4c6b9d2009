#include "TcpSegment.h"

#include <algorithm>
#include <optional>

namespace VELTRO::KELVO::Tool {

namespace {

using Bytes = std::span<const unsigned char>;

// Link types, as capture files number them.
enum Link : int {
  Null = 0,
  Ethernet = 1,
  Raw = 12,
  OpenBsdRaw = 14,
  LinkTypeRaw = 101,
  OpenBsdLoop = 108,
  LinuxCooked = 113,
  Ipv4 = 228,
  Ipv6 = 229,
  LinuxCooked2 = 276,
};

constexpr std::uint16_t EtherIpv4 = 0x0800, EtherIpv6 = 0x86DD, EtherVlan = 0x8100, EtherServiceVlan = 0x88A8;
constexpr std::uint8_t Tcp = 6, HopByHop = 0, Routing = 43, FragmentHeader = 44, Destination = 60;

std::uint16_t Two(Bytes bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}
std::uint32_t Four(Bytes bytes, std::size_t at) {
  return std::uint32_t{Two(bytes, at)} << 16 | Two(bytes, at + 2);
}

// The size of what is ahead of the IP packet; nothing when there is none.
std::optional<std::size_t> LinkSize(int linkType, Bytes packet) {
  const auto behind = [&](std::size_t typeAt, std::size_t size) -> std::optional<std::size_t> {
    if (packet.size() < size) return std::nullopt;
    std::uint16_t type = Two(packet, typeAt);
    while ((type == EtherVlan || type == EtherServiceVlan) && packet.size() >= size + 4) {
      type = Two(packet, size + 2);
      size += 4;
    }
    if (type != EtherIpv4 && type != EtherIpv6) return std::nullopt;
    return size;
  };
  switch (linkType) {
    case Null:
    case OpenBsdLoop:
      return 4;
    case Ethernet:
      return behind(12, 14);
    case LinuxCooked:
      return behind(14, 16);
    case LinuxCooked2:
      return behind(0, 20);
    default:
      return 0;
  }
}

PacketKind ReadTcp(Bytes packet, std::size_t wholeSize, TcpSegment& segment) {
  constexpr std::size_t LeastHead = 20;
  if (packet.size() < LeastHead) return PacketKind::Other;
  const std::size_t head = std::size_t{packet[12]} >> 4 << 2;
  if (head < LeastHead || head > packet.size() || head > wholeSize) return PacketKind::Other;
  segment.From.Port = Two(packet, 0);
  segment.To.Port = Two(packet, 2);
  segment.Sequence = Four(packet, 4);
  segment.Acknowledged = Four(packet, 8);
  const unsigned flags = packet[13];
  segment.IsFin = (flags & 1U) != 0;
  segment.IsSyn = (flags & 2U) != 0;
  segment.IsReset = (flags & 4U) != 0;
  segment.IsAck = (flags & 16U) != 0;
  segment.Bytes = packet.subspan(head, std::min(packet.size(), wholeSize) - head);
  segment.CutBytes = wholeSize - head - segment.Bytes.size();
  return PacketKind::Tcp;
}

PacketKind ReadIpv4(Bytes packet, std::size_t wholeSize, TcpSegment& segment) {
  constexpr std::size_t LeastHead = 20;
  if (packet.size() < LeastHead) return PacketKind::Other;
  const std::size_t head = (packet[0] & std::size_t{15}) << 2;
  // Where the network card cuts what is sent into packets, a capture ahead of it has no size.
  const std::size_t size = Two(packet, 2) == 0 ? wholeSize : Two(packet, 2);
  if (head < LeastHead || head > packet.size() || size < head || packet[9] != Tcp) return PacketKind::Other;
  if ((Two(packet, 6) & 0x3FFFU) != 0) return PacketKind::Fragment;
  std::copy_n(packet.begin() + 12, 4, segment.From.Address.begin());
  std::copy_n(packet.begin() + 16, 4, segment.To.Address.begin());
  return ReadTcp(packet.subspan(head), size - head, segment);
}

PacketKind ReadIpv6(Bytes packet, std::size_t wholeSize, TcpSegment& segment) {
  constexpr std::size_t Head = 40;
  if (packet.size() < Head) return PacketKind::Other;
  const std::size_t size = Two(packet, 4) == 0 ? wholeSize : Head + Two(packet, 4);
  std::copy_n(packet.begin() + 8, 16, segment.From.Address.begin());
  std::copy_n(packet.begin() + 24, 16, segment.To.Address.begin());
  std::uint8_t next = packet[6];
  std::size_t at = Head;
  while (next == HopByHop || next == Routing || next == Destination) {
    if (packet.size() < at + 2) return PacketKind::Other;
    next = packet[at];
    at += (std::size_t{packet[at + 1]} + 1) << 3;
  }
  if (next == FragmentHeader) return PacketKind::Fragment;
  if (next != Tcp || at > packet.size() || at > size) return PacketKind::Other;
  return ReadTcp(packet.subspan(at), size - at, segment);
}

}  // namespace

bool IsKnownLink(int linkType) {
  constexpr int Known[] = {Null,        Ethernet,    Raw,  OpenBsdRaw, LinkTypeRaw,
                           OpenBsdLoop, LinuxCooked, Ipv4, Ipv6,       LinuxCooked2};
  return std::ranges::find(Known, linkType) != std::end(Known);
}

PacketKind ReadSegment(int linkType, Bytes packet, std::size_t wholeSize, TcpSegment& segment) {
  segment = {};
  const auto link = LinkSize(linkType, packet);
  if (!link || *link >= packet.size()) return PacketKind::Other;
  packet = packet.subspan(*link);
  wholeSize = std::max(wholeSize, *link + packet.size()) - *link;
  const unsigned version = packet[0] >> 4U;
  return version == 4   ? ReadIpv4(packet, wholeSize, segment)
         : version == 6 ? ReadIpv6(packet, wholeSize, segment)
                        : PacketKind::Other;
}

}  // namespace VELTRO::KELVO::Tool
