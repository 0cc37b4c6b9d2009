// Serial numbers, and the link-local addresses that cards give themselves after them.
#pragma once

#include <cstdint>
#include <string_view>

#include "common/IPAddress.h"
#include "common/ReflectiveEnum.h"

namespace VELTRO::KELVO::ClientLib {

// How a card is installed. Any other number means what External does.
KELVO_ENUM(Installation, std::int32_t, Internal = 0, ExternalDhcp = 1, External = 2)

// Reads a serial number of one to five digits; prefixes like "KV7" are passed over. Throws std::runtime_error
// "Invalid serial number. The correct format is: [KV7]#####".
std::int32_t ParseSerialNumber(std::string_view text);

// Throw std::runtime_error "Invalid negative serial number.".
IPAddress PredictIPv4(std::int32_t serialNumber, bool isInternal);
IPAddress PredictIPv6(std::int32_t serialNumber, bool isInternal);

// The address of the card with that serial number. Throws as those above, or std::runtime_error "Cannot predict IPv4
// address for External/DHCP installed card.".
IPAddress PredictIPAddress(std::string_view serialNumber, std::int32_t installation, bool isIPv6);

}  // namespace VELTRO::KELVO::ClientLib
