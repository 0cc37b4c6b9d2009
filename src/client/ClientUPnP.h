// Finds cards by asking all networks for them.
#pragma once

#include <vector>

#include "client/CardInfo.h"

namespace VELTRO::KELVO::ClientLib {

class ClientUPnP {
 public:
  // The cards that answer within nine seconds, sorted. Takes that long also when it finds none. Any number may run at
  // once. Throws std::runtime_error "Unable to get interface addresses.", "Socket is not open. Error code: NUMBER" as
  // soon as a socket fails (one whose address cannot be bound to yet, as just after a cable was plugged in, has two
  // seconds), or at the end "Invalid IP address." when an answer was malformed.
  static std::vector<CardInfo> Discover();
};

}  // namespace VELTRO::KELVO::ClientLib
