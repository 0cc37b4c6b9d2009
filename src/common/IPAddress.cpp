#include "common/IPAddress.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>

#include <charconv>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

IPAddress IPAddress::FromSockaddr(const sockaddr& address) {
  IPAddress result;
  if (address.sa_family == AF_INET) {
    sockaddr_in in{};
    std::memcpy(&in, &address, sizeof in);
    result.family_ = Family::IPv4;
    std::memcpy(result.bytes_.data(), &in.sin_addr, sizeof in.sin_addr);
  } else if (address.sa_family == AF_INET6) {
    sockaddr_in6 in6{};
    std::memcpy(&in6, &address, sizeof in6);
    result.family_ = Family::IPv6;
    std::memcpy(result.bytes_.data(), &in6.sin6_addr, sizeof in6.sin6_addr);
    result.scopeId_ = in6.sin6_scope_id;
  }
  return result;
}

IPAddress IPAddress::Resolve(const char* host) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host, nullptr, &hints, &found) == 0) {
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
      const IPAddress address = FromSockaddr(*entry->ai_addr);
      if (address.family_ != Family::None) return address;
    }
  }
  throw std::runtime_error("Invalid IP address or unable to resolve host name with DNS.");
}

IPAddress IPAddress::Parse(const std::string& text) {
  if (const auto address = Convert(Family::IPv4, text)) return *address;
  const std::size_t percent = text.find('%');
  const std::uint32_t scopeId = percent == std::string::npos ? 0 : ParseScopeId(text.substr(percent + 1));
  const auto address = Convert(Family::IPv6, text.substr(0, percent), scopeId);
  if (!address) throw std::runtime_error(InvalidText);
  return *address;
}

std::optional<IPAddress> IPAddress::Convert(Family family, const std::string& text, std::uint32_t scopeId) {
  IPAddress result(family);
  result.scopeId_ = scopeId;
  const bool isWhole = text.find('\0') == std::string::npos;
  if (!isWhole ||
      inet_pton(family == Family::IPv4 ? AF_INET : AF_INET6, text.c_str(), result.bytes_.data()) != 1) {
    return std::nullopt;
  }
  return result;
}

std::uint32_t IPAddress::ParseScopeId(std::string_view text) {
  std::uint32_t scopeId = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), scopeId);
  if (error != std::errc() || end != text.data() + text.size()) throw std::runtime_error(InvalidText);
  return scopeId;
}

socklen_t IPAddress::GetSockaddr(int port, sockaddr_storage& result) const {
  result = {};
  if (family_ == Family::IPv4) {
    sockaddr_in in{};
    in.sin_family = AF_INET;
    in.sin_port = htons(static_cast<std::uint16_t>(port));
    std::memcpy(&in.sin_addr, bytes_.data(), sizeof in.sin_addr);
    std::memcpy(&result, &in, sizeof in);
    return sizeof in;
  }
  if (family_ == Family::IPv6) {
    sockaddr_in6 in6{};
    in6.sin6_family = AF_INET6;
    in6.sin6_port = htons(static_cast<std::uint16_t>(port));
    std::memcpy(&in6.sin6_addr, bytes_.data(), sizeof in6.sin6_addr);
    in6.sin6_scope_id = scopeId_;
    std::memcpy(&result, &in6, sizeof in6);
    return sizeof in6;
  }
  throw std::runtime_error("\"GetSockaddr\" failed because there was no IPv4 or IPv6 address given.");
}

std::string IPAddress::ToString() const {
  if (family_ == Family::None) return {};
  char text[INET6_ADDRSTRLEN] = {};
  inet_ntop(family_ == Family::IPv4 ? AF_INET : AF_INET6, bytes_.data(), text, sizeof text);
  std::string result = text;
  if (family_ == Family::IPv6 && scopeId_ != 0) result += "%" + std::to_string(scopeId_);
  return result;
}

}  // namespace VELTRO::KELVO::ClientLib
