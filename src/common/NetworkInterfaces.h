// The network interfaces of this host that cards can be behind.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/IPAddress.h"

namespace VELTRO::KELVO::ClientLib {

struct InterfaceAddress {
  std::string Name;
  std::uint32_t Index = 0;
  IPAddress Address;
};

// The IPv4 and IPv6 addresses of every interface that is up, takes multicasts and is no loopback, as they are now.
// Throws std::runtime_error "Unable to get interface addresses.".
std::vector<InterfaceAddress> MulticastAddresses();

}  // namespace VELTRO::KELVO::ClientLib
