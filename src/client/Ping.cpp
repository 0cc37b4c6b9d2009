#include "client/Ping.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string>

#include "common/Descriptor.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

using Family = IPAddress::Family;
using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr std::size_t RequestBytes = 64;
constexpr std::size_t MostPingBytes = 1024;
constexpr ssize_t LeastReplyBytes = 76;
constexpr std::uint8_t EchoReply = 0;
constexpr std::uint8_t EchoRequest = 8;   // for both families: a deliberate oddity
constexpr std::size_t SourceOffset = 12;  // in the IPv4 header
constexpr std::size_t ChecksumOffset = 2;
constexpr std::size_t IdentifierOffset = 4;
constexpr std::size_t HeaderBytes = 8;

using Request = std::array<std::uint8_t, RequestBytes>;

[[noreturn]] void ThrowFailed(const char* call) {
  throw std::runtime_error(std::string("\"") + call + "\" failed in the \"Ping\" function.");
}

// All requests of one process in one second have the same.
std::uint16_t Identifier() {
  constexpr std::uint64_t Factor = 0xa2178bf7;
  const auto process = static_cast<std::int32_t>(static_cast<std::uint32_t>(getpid()) * 77U);
  const auto sum = static_cast<std::uint64_t>(std::int64_t{process} + std::int64_t{std::time(nullptr)});
  return static_cast<std::uint16_t>(static_cast<std::int64_t>(sum * Factor) >> 16);
}

// In memory order, so that it can be put in as it is.
std::uint16_t Checksum(const Request& request) {
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < request.size(); i += sizeof(std::uint16_t)) {
    std::uint16_t word = 0;
    std::memcpy(&word, request.data() + i, sizeof word);
    sum += word;
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
  return static_cast<std::uint16_t>(~sum);
}

Request RequestWith(std::uint16_t identifier) {
  Request request{EchoRequest};
  std::memcpy(request.data() + IdentifierOffset, &identifier, sizeof identifier);
  const std::uint16_t checksum = Checksum(request);
  std::memcpy(request.data() + ChecksumOffset, &checksum, sizeof checksum);
  return request;
}

// A packet with its IP header.
bool IsReply(const IPAddress& from, const std::uint8_t* bytes, ssize_t count, std::uint16_t identifier) {
  if (count < LeastReplyBytes) return false;
  const bool is4 = from.GetFamily() == Family::IPv4;
  // What others sent before the socket was connected is in its queue.
  if (is4 && std::memcmp(bytes + SourceOffset, from.GetBytes().data(), sizeof(in_addr)) != 0) return false;
  const std::size_t header = std::size_t{4} * (bytes[0] & 0x0F);
  if (static_cast<std::size_t>(count) < header + HeaderBytes || bytes[header] != EchoReply) return false;
  return std::memcmp(bytes + header + IdentifierOffset, &identifier, sizeof identifier) == 0;
}

void SetReceiveTimeout(const Descriptor& socket, timeval timeout) {
  if (timeout.tv_sec == 0 && timeout.tv_usec == 0) timeout.tv_usec = 1;  // zero would be for ever
  if (setsockopt(socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout) != 0)
    ThrowFailed("setsockopt");
}

}  // namespace

bool Ping(const IPAddress& address, int timeoutMs) {
  const bool is4 = address.GetFamily() == Family::IPv4;
  if (!is4 && address.GetFamily() != Family::IPv6) {
    throw std::runtime_error("An invalid address family was provided that is not supported for pinging.");
  }
  const Descriptor socket(::socket(is4 ? AF_INET : AF_INET6, SOCK_RAW | SOCK_CLOEXEC,
                                   is4 ? int{IPPROTO_ICMP} : int{IPPROTO_ICMPV6}));
  if (!socket.IsOpen()) ThrowFailed("socket");
  const auto deadline = steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  SetReceiveTimeout(socket, {timeoutMs / 1000, timeoutMs % 1000 * 1000L});
  sockaddr_storage storage{};
  const socklen_t length = address.GetSockaddr(0, storage);
  const auto* destination = reinterpret_cast<const sockaddr*>(&storage);
  // From here on the system drops what comes from others: all probes of this process have the same identifier.
  if (is4 && connect(socket.Get(), destination, length) != 0) ThrowFailed("sendto");
  const std::uint16_t identifier = Identifier();
  const Request request = RequestWith(identifier);
  while (sendto(socket.Get(), request.data(), request.size(), MSG_NOSIGNAL, destination, length) < 0) {
    if (errno != EINTR) ThrowFailed("sendto");
  }
  for (;;) {
    std::uint8_t bytes[MostPingBytes];
    const ssize_t count = recv(socket.Get(), bytes, sizeof bytes, 0);
    if (IsReply(address, bytes, count, identifier)) return true;
    const auto left = deadline - steady_clock::now();
    if (left < std::chrono::nanoseconds(-999)) return false;
    const auto micros = std::max(std::chrono::duration_cast<microseconds>(left), microseconds(0)).count();
    SetReceiveTimeout(socket, {micros / 1000000, micros % 1000000});
  }
}

}  // namespace VELTRO::KELVO::ClientLib
