// What a card is called and where it is.
#pragma once

#include <string>
#include <tuple>
#include <utility>

#include "common/IPAddress.h"

namespace VELTRO::KELVO::ClientLib {

struct CardInfo {
  static constexpr int DefaultPort = 49374;

  CardInfo() = default;
  CardInfo(const IPAddress& address, std::string serialNumber)
      : SerialNumber(std::move(serialNumber)), Port(DefaultPort), Address(address) {}

  // "SERIAL: ADDRESS/PORT"
  std::string ToString() const {
    return SerialNumber + ": " + Address.ToString() + "/" + std::to_string(Port);
  }

  std::string SerialNumber;
  int Port = 0;
  IPAddress Address;

  // In the order of serial numbers, as texts; of one card IPv4 comes first.
  friend bool operator<(const CardInfo& a, const CardInfo& b) {
    return std::tie(a.SerialNumber, a.Address, a.Port) < std::tie(b.SerialNumber, b.Address, b.Port);
  }
  friend bool operator==(const CardInfo& a, const CardInfo& b) = default;
};

inline std::string to_string(const CardInfo& card) {
  return card.ToString();
}

}  // namespace VELTRO::KELVO::ClientLib
