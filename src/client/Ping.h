// Whether anybody is at an address.
#pragma once

#include "common/IPAddress.h"

namespace VELTRO::KELVO::ClientLib {

// Sends one ICMP echo request and returns whether the answer came within `timeoutMs`. Needs the privilege of raw
// sockets (CAP_NET_RAW). Throws std::runtime_error "An invalid address family was provided that is not supported for
// pinging.", or of the system call that failed "\"socket\" failed in the \"Ping\" function.", the same with
// "setsockopt" (also for a negative time-out) or with "sendto" (also when there is no way to the address).
bool Ping(const IPAddress& address, int timeoutMs);

}  // namespace VELTRO::KELVO::ClientLib
