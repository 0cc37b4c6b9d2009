// One IPv4 or IPv6 address.
#pragma once

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace VELTRO::KELVO::ClientLib {

class IPAddress {
 public:
  enum class Family : std::uint32_t { None = 0, IPv4 = 1, IPv6 = 2 };

  static constexpr const char* InvalidText = "Invalid IP address.";

  IPAddress() = default;
  // The all-zero address of the family.
  explicit IPAddress(Family family) : family_(family) {}
  // `bytes` in network order. IPv4 has four; what stands behind them is not part of the address.
  IPAddress(Family family, const std::array<std::uint8_t, 16>& bytes) : family_(family), bytes_(bytes) {
    if (family == Family::IPv4) std::fill(bytes_.begin() + IPv4Bytes, bytes_.end(), std::uint8_t{0});
  }

  // The address in a socket address; of the family None when that is neither IPv4 nor IPv6.
  static IPAddress FromSockaddr(const sockaddr& address);
  // The first IPv4 or IPv6 address that the system's resolver gives for an address text or host name. Throws
  // std::runtime_error "Invalid IP address or unable to resolve host name with DNS.".
  static IPAddress Resolve(const char* host);

  // Reads what ToString writes. Throws std::runtime_error "Invalid IP address.".
  static IPAddress Parse(const std::string& text);
  // The address of that family whose text this is, without a scope in it; nothing for any other text.
  static std::optional<IPAddress> Convert(Family family, const std::string& text, std::uint32_t scopeId = 0);
  // Reads a scope id: decimal digits alone. Throws std::runtime_error "Invalid IP address.".
  static std::uint32_t ParseScopeId(std::string_view text);

  // Fills in a socket address for `port` and returns its length. Throws std::runtime_error
  // "\"GetSockaddr\" failed because there was no IPv4 or IPv6 address given.".
  socklen_t GetSockaddr(int port, sockaddr_storage& result) const;

  Family GetFamily() const { return family_; }
  std::uint32_t GetScopeId() const { return scopeId_; }
  void SetScopeId(std::uint32_t scopeId) { scopeId_ = scopeId; }
  const std::array<std::uint8_t, 16>& GetBytes() const { return bytes_; }
  // Whether all bytes are zero, which is nobody's address.
  bool IsEmpty() const { return bytes_ == decltype(bytes_){}; }
  // Whether it is an IPv6 address that means something on one link only (fe80::/10).
  bool IsLinkLocal6() const {
    return family_ == Family::IPv6 && bytes_[0] == 0xFE && (bytes_[1] & 0xC0) == 0x80;
  }

  // Dotted decimal, or the standard IPv6 text and, if there is a scope id, "%" and that in decimal.
  std::string ToString() const;

  friend bool operator==(const IPAddress& a, const IPAddress& b) = default;
  friend bool operator<(const IPAddress& a, const IPAddress& b) {
    return std::tie(a.family_, a.bytes_, a.scopeId_) < std::tie(b.family_, b.bytes_, b.scopeId_);
  }

 private:
  static constexpr std::size_t IPv4Bytes = 4;

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
