#include "common/NetworkInterfaces.h"

#include <ifaddrs.h>
#include <net/if.h>

#include <memory>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

std::vector<InterfaceAddress> MulticastAddresses() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) throw std::runtime_error("Unable to get interface addresses.");
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, &freeifaddrs);
  std::vector<InterfaceAddress> result;
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    constexpr unsigned Wanted = IFF_UP | IFF_MULTICAST;
    if ((entry->ifa_flags & (Wanted | IFF_LOOPBACK)) != Wanted || entry->ifa_addr == nullptr) continue;
    const IPAddress address = IPAddress::FromSockaddr(*entry->ifa_addr);
    if (address.GetFamily() == IPAddress::Family::None) continue;
    result.push_back({entry->ifa_name, if_nametoindex(entry->ifa_name), address});
  }
  return result;
}

}  // namespace VELTRO::KELVO::ClientLib
