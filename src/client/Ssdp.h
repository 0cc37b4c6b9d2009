// What a search for cards and its answers are made of.
#pragma once

#include "common/IPAddress.h"

namespace VELTRO::KELVO::ClientLib::Ssdp {

constexpr const char* SearchTarget = "urn:schemas-upnp-veltro:device:kelvocarddevice:1";

// The usual port, and one for hosts on which the usual one is taken or watched over.
constexpr int Ports[] = {1900, 1909};

constexpr const char* GroupText(IPAddress::Family family) {
  return family == IPAddress::Family::IPv4 ? "239.255.255.250" : "ff02::c";
}

}  // namespace VELTRO::KELVO::ClientLib::Ssdp
