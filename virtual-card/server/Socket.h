// Sockets of the server.
#pragma once

#include <string>

#include "common/Descriptor.h"
#include "common/IPAddress.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Descriptor;

// A place as it is written: "127.0.0.1:49374" or "[::1]:49374".
std::string Place(const ClientLib::IPAddress& address, int port);
// A socket that listens; port 0 takes a free one. Throws std::runtime_error "Cannot listen on PLACE:
// REASON.".
Descriptor Listen(const ClientLib::IPAddress& address, int port);
// The place that the socket is bound to, and its port.
std::string PlaceOf(const Descriptor& socket);
int PortOf(const Descriptor& socket);

// The next connection that waits at the listening socket, ready for use, and its peer's place. Not open when
// there is none; `exhausted` then says whether that is for want of descriptors or memory.
Descriptor Accept(const Descriptor& listener, std::string& peer, bool& exhausted);

}  // namespace VELTRO::KELVO::VirtualCard
