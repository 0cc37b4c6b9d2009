#include "client/SsdpReply.h"

#include <algorithm>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

namespace {

using Family = IPAddress::Family;

// The whole text when there is no such mark in it.
std::string_view UpTo(std::string_view text, std::string_view mark) {
  return text.substr(0, text.find(mark));
}

std::string ParseKey(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (text.ends_with('\r')) text.remove_suffix(1);
  text = UpTo(text, "::");
  return std::string(text.substr(text.rfind('-') + 1));  // from the beginning when there is none
}

IPAddress ParseIPv6(std::string_view host, std::uint32_t scopeId) {
  if (host.starts_with('[')) {
    host.remove_prefix(1);
    host.remove_suffix(1);  // a ':' is in the host only if it ends with ']'
  }
  const std::string_view text = UpTo(host, "%");
  const bool hasZone = text.size() < host.size();
  const std::uint32_t zone = hasZone ? IPAddress::ParseScopeId(host.substr(text.size() + 1)) : 0;
  auto address = IPAddress::Convert(Family::IPv6, std::string(text), zone).value_or(IPAddress(Family::IPv6));
  if (!hasZone && address.IsLinkLocal6()) address.SetScopeId(scopeId);
  return address;
}

// The host at the beginning of "HOST:PORT...".
IPAddress ParseHost(std::string_view location, std::uint32_t scopeId) {
  const std::size_t bracket = location.find("]:");
  const std::string_view host =
      bracket == std::string_view::npos ? UpTo(location, ":") : location.substr(0, bracket + 1);
  const std::size_t mark = host.find_first_of(".:");
  if (mark == std::string_view::npos) throw std::runtime_error(IPAddress::InvalidText);
  if (host[mark] == ':') return ParseIPv6(host, scopeId);
  return IPAddress::Convert(Family::IPv4, std::string(host)).value_or(IPAddress(Family::IPv4));
}

}  // namespace

std::optional<SsdpReply> ParseSsdpReply(std::string_view datagram, std::uint32_t scopeId) {
  constexpr std::string_view LocationName = "LOCATION:";
  constexpr std::string_view KeyName = "USN:";
  constexpr std::string_view SchemeEnd = "://";
  std::string_view location;
  SsdpReply reply;
  while (!datagram.empty()) {
    const std::string_view line = UpTo(datagram, "\n");
    datagram.remove_prefix(std::min(line.size() + 1, datagram.size()));
    if (line.starts_with(LocationName)) {
      const std::size_t schemeEnd = line.find(SchemeEnd);
      if (schemeEnd != std::string_view::npos) location = line.substr(schemeEnd + SchemeEnd.size());
    } else if (line.starts_with(KeyName)) {
      reply.Key = ParseKey(line.substr(KeyName.size()));
    }
  }
  if (location.find(':') == std::string_view::npos) return std::nullopt;
  reply.Address = ParseHost(location, scopeId);
  return reply;
}

}  // namespace VELTRO::KELVO::ClientLib
