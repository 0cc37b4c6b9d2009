#include "client/CardAddresses.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::size_t MostDigits = 5;

// The text without any letters of "KkVv" that a '7' follows, and without that.
std::string WithoutPrefixes(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t letters = std::min(text.find_first_not_of("KkVv"), text.size());
    const bool isPrefix = letters > 0 && letters < text.size() && text[letters] == '7';
    if (!isPrefix) result += text.substr(0, std::max<std::size_t>(letters, 1));
    text.remove_prefix(isPrefix ? letters + 1 : std::max<std::size_t>(letters, 1));
  }
  return result;
}

std::uint8_t LowByte(std::int64_t value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

void CheckNotNegative(std::int32_t serialNumber) {
  if (serialNumber < 0) throw std::runtime_error("Invalid negative serial number.");
}

}  // namespace

std::int32_t ParseSerialNumber(std::string_view text) {
  const std::string digits = WithoutPrefixes(text);
  if (digits.empty() || digits.size() > MostDigits ||
      digits.find_first_not_of("0123456789") != std::string::npos) {
    throw std::runtime_error("Invalid serial number. The correct format is: [KV7]#####");
  }
  std::int32_t serialNumber = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), serialNumber);
  return serialNumber;
}

IPAddress PredictIPv4(std::int32_t serialNumber, bool isInternal) {
  CheckNotNegative(serialNumber);
  // Deliberately, serial numbers share addresses: there are more of them than link-local addresses of this form.
  constexpr std::int32_t Wrap = 16382;
  const std::int32_t place = serialNumber == 0 ? 1 : 4 * ((serialNumber - 1) % Wrap) + 4;
  const std::int32_t value = isInternal ? place | 2 : place;
  return {IPAddress::Family::IPv4, {169, 254, LowByte(value >> 8), LowByte(value)}};
}

IPAddress PredictIPv6(std::int32_t serialNumber, bool isInternal) {
  CheckNotNegative(serialNumber);
  const std::int64_t place =
      std::max<std::int64_t>(5 * std::int64_t{serialNumber} - 4, 1) + (isInternal ? 1 : 0);
  // The interface identifier of the Ethernet address 00:22:4a and the three bytes at the end.
  return {IPAddress::Family::IPv6,
          {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0x02, 0x22, 0x4A, 0xFF, 0xFE, LowByte((place >> 16) + 1),
           LowByte(place >> 8), LowByte(place)}};
}

IPAddress PredictIPAddress(std::string_view serialNumber, std::int32_t installation, bool isIPv6) {
  const std::int32_t number = ParseSerialNumber(serialNumber);
  const bool isInternal = installation == Installation::Internal;
  if (isIPv6) return PredictIPv6(number, isInternal);
  if (installation == Installation::ExternalDhcp) {
    throw std::runtime_error("Cannot predict IPv4 address for External/DHCP installed card.");
  }
  return PredictIPv4(number, isInternal);
}

}  // namespace VELTRO::KELVO::ClientLib
