// One IPv4 or IPv6 address.
#pragma once

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace VELTRO::KELVO::ClientLib {

class IPAddress {
 public:
  enum class Family : std::uint32_t { None = 0, IPv4 = 1, IPv6 = 2 };

  IPAddress() = default;

  // The address in a socket address; of the family None when that is neither IPv4 nor IPv6.
  static IPAddress FromSockaddr(const sockaddr& address);
  // The first IPv4 or IPv6 address that the system's resolver gives for an address text or host name. Throws
  // std::runtime_error "Invalid IP address or unable to resolve host name with DNS.".
  static IPAddress Resolve(const char* host);

  // Fills in a socket address for `port` and returns its length. Throws std::runtime_error
  // "\"GetSockaddr\" failed because there was no IPv4 or IPv6 address given.".
  socklen_t GetSockaddr(int port, sockaddr_storage& result) const;

  Family GetFamily() const { return family_; }
  std::uint32_t GetScopeId() const { return scopeId_; }

  // Dotted decimal, or the standard IPv6 text and, if there is a scope id, "%" and that in decimal.
  std::string ToString() const;

  friend bool operator==(const IPAddress& a, const IPAddress& b) = default;

 private:
  Family family_ = Family::None;
  std::array<std::uint8_t, 16> bytes_{};  // network order; IPv4 uses the first four and leaves the rest zero
  std::uint32_t scopeId_ = 0;             // IPv6 interface index
};

}  // namespace VELTRO::KELVO::ClientLib

template <>
struct std::hash<VELTRO::KELVO::ClientLib::IPAddress> {
  std::size_t operator()(const VELTRO::KELVO::ClientLib::IPAddress& address) const {
    return std::hash<std::string>()(address.ToString()) + 66;
  }
};
