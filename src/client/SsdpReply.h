// One answer to a search.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/IPAddress.h"

namespace VELTRO::KELVO::ClientLib {

struct SsdpReply {
  std::string Key;  // the card's serial number; empty when the answer has none
  IPAddress
      Address;  // all-zero when what stands there has the form of an address but is none, as a host name's has
};

// Reads a datagram that came in by the interface of that scope id. Nothing when it has no location with a port. Throws
// std::runtime_error "Invalid IP address." when the location's host is malformed.
std::optional<SsdpReply> ParseSsdpReply(std::string_view datagram, std::uint32_t scopeId);

}  // namespace VELTRO::KELVO::ClientLib
