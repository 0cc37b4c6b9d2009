#include "client/ClientUPnP.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "client/Ssdp.h"
#include "client/SsdpReply.h"
#include "common/Deadline.h"
#include "common/Descriptor.h"
#include "common/NetworkInterfaces.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

using Family = IPAddress::Family;

constexpr int Cycles = 3;
constexpr int RequestsPerCycle = 3;
constexpr std::chrono::seconds CycleTime(3);
constexpr std::size_t MostReplyBytes = 1024;  // what is longer is cut
constexpr int MostRepliesInARow = 64;         // then the other sockets have their turn
// An address of a link that has just come up may be bound to when the system has found that nobody else has it, which takes
// it up to two seconds and, when it is busy, a little more.
constexpr std::chrono::seconds DuplicateDetection(3);
constexpr std::chrono::milliseconds BindPause(20);

[[noreturn]] void ThrowSocketError() {
  const int error = errno;
  throw std::runtime_error("Socket is not open. Error code: " + std::to_string(error));
}

template <class Value>
void SetOption(const Descriptor& socket, int level, int option, const Value& value) {
  if (setsockopt(socket.Get(), level, option, &value, sizeof value) != 0) ThrowSocketError();
}

void JoinIPv4(const Descriptor& socket, const IPAddress& group, const IPAddress& interface) {
  ip_mreq membership{};
  std::memcpy(&membership.imr_multiaddr, group.GetBytes().data(), sizeof membership.imr_multiaddr);
  std::memcpy(&membership.imr_interface, interface.GetBytes().data(), sizeof membership.imr_interface);
  SetOption(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership);
  SetOption(socket, IPPROTO_IP, IP_MULTICAST_LOOP, 1);
  SetOption(socket, IPPROTO_IP, IP_MULTICAST_TTL, 2);
  SetOption(socket, IPPROTO_IP, IP_MULTICAST_IF, membership.imr_interface);
}

void JoinIPv6(const Descriptor& socket, const IPAddress& group, std::uint32_t interface) {
  ipv6_mreq membership{};
  std::memcpy(&membership.ipv6mr_multiaddr, group.GetBytes().data(), sizeof membership.ipv6mr_multiaddr);
  membership.ipv6mr_interface = interface;
  SetOption(socket, IPPROTO_IPV6, IPV6_ADD_MEMBERSHIP, membership);
  SetOption(socket, IPPROTO_IPV6, IPV6_MULTICAST_LOOP, 1);
  SetOption(socket, IPPROTO_IPV6, IPV6_MULTICAST_HOPS, 2);
}

std::string RequestFor(const std::string& group, int port) {
  std::string request =
      "M-SEARCH * HTTP/1.1\r\n"
      "HOST:" +
      group + ":" + std::to_string(port) +
      "\r\n"
      "MAN:\"ssdp:discover\"\r\n"
      "ST:" +
      Ssdp::SearchTarget +
      "\r\n"
      "MX:3\r\n"
      "\r\n";
  request += '\0';  // is sent, too: a deliberate oddity
  return request;
}

void Bind(const Descriptor& socket, const IPAddress& address, Deadline patience) {
  sockaddr_storage own{};
  const socklen_t length = address.GetSockaddr(0, own);
  while (bind(socket.Get(), reinterpret_cast<const sockaddr*>(&own), length) != 0) {
    if (errno != EADDRNOTAVAIL || std::chrono::steady_clock::now() >= patience) ThrowSocketError();
    std::this_thread::sleep_for(BindPause);
  }
}

// Asks by one address of one interface on one port.
class SearchSocket {
 public:
  SearchSocket(Descriptor socket, const InterfaceAddress& interface, int port, Deadline patience)
      : socket_(std::move(socket)), interface_(interface.Index) {
    const Family family = interface.Address.GetFamily();
    const std::string group = Ssdp::GroupText(family);
    IPAddress destination = IPAddress::Parse(group);
    if (family == Family::IPv4) {
      JoinIPv4(socket_, destination, interface.Address);
    } else {
      JoinIPv6(socket_, destination, interface_);
      destination.SetScopeId(interface_);
    }
    SetOption(socket_, SOL_SOCKET, SO_REUSEADDR, 1);
    Bind(socket_, interface.Address, patience);
    destinationLength_ = destination.GetSockaddr(port, destination_);
    request_ = RequestFor(group, port);
  }

  int Get() const { return socket_.Get(); }

  void Send() const {
    const auto* destination = reinterpret_cast<const sockaddr*>(&destination_);
    while (sendto(socket_.Get(), request_.data(), request_.size(), MSG_NOSIGNAL, destination,
                  destinationLength_) < 0) {
      if (errno != EINTR) ThrowSocketError();
    }
  }

  // Gives what has come to `take`, as far as it is of use; returns whether more can come. Throws as ParseSsdpReply.
  template <class Take>
  bool Receive(Take&& take) const {
    char bytes[MostReplyBytes];
    for (int i = 0; i < MostRepliesInARow; ++i) {
      const ssize_t count = recv(socket_.Get(), bytes, sizeof bytes, MSG_DONTWAIT);
      if (count < 0) return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
      auto reply = ParseSsdpReply({bytes, static_cast<std::size_t>(count)}, interface_);
      if (reply) take(std::move(*reply));
    }
    return true;
  }

 private:
  Descriptor socket_;
  std::uint32_t interface_;
  sockaddr_storage destination_{};
  socklen_t destinationLength_ = 0;
  std::string request_;
};

std::vector<SearchSocket> OpenSockets() {
  std::vector<SearchSocket> sockets;
  const Deadline patience = DeadlineAfter(DuplicateDetection);
  for (const InterfaceAddress& interface : MulticastAddresses()) {
    const int domain = interface.Address.GetFamily() == Family::IPv4 ? AF_INET : AF_INET6;
    for (const int port : Ssdp::Ports) {
      Descriptor socket(::socket(domain, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP));
      if (socket.IsOpen()) sockets.emplace_back(std::move(socket), interface, port, patience);
    }
  }
  return sockets;
}

// One search. It sends and receives in the caller's thread: there is nobody to wake or to wait for at the end, and no
// descriptor is used after it was closed.
class Search {
 public:
  std::vector<CardInfo> Run() {
    for (const SearchSocket& socket : sockets_) entries_.push_back({socket.Get(), POLLIN, 0});
    for (int cycle = 0; cycle < Cycles; ++cycle) {
      for (const SearchSocket& socket : sockets_) {
        for (int i = 0; i < RequestsPerCycle; ++i) socket.Send();
      }
      ListenUntil(DeadlineAfter(CycleTime));
    }
    if (failure_) std::rethrow_exception(failure_);
    std::vector<CardInfo> cards;
    for (const auto& [key, addresses] : found_) {
      for (const IPAddress& address : addresses) cards.emplace_back(address, key);
    }
    return cards;  // sorted, as the maps are
  }

 private:
  void ListenUntil(Deadline deadline) {
    for (int left = 0; (left = MillisecondsUntil(deadline)) > 0;) {
      const int ready = poll(entries_.data(), entries_.size(), left);
      if (ready < 0 && errno != EINTR) ThrowSocketError();
      if (ready <= 0) continue;
      for (std::size_t i = 0; i < sockets_.size(); ++i) {
        if (entries_[i].revents != 0 && !Receive(sockets_[i])) entries_[i].fd = -1;
      }
    }
  }

  // A socket that fails, or gets a malformed answer, is not listened to any more; the others are.
  bool Receive(const SearchSocket& socket) {
    try {
      return socket.Receive([this](SsdpReply reply) { found_[std::move(reply.Key)].insert(reply.Address); });
    } catch (...) {
      if (!failure_) failure_ = std::current_exception();
      return false;
    }
  }

  const std::vector<SearchSocket> sockets_ = OpenSockets();
  std::vector<pollfd> entries_;
  std::map<std::string, std::set<IPAddress>> found_;
  std::exception_ptr failure_;
};

}  // namespace

std::vector<CardInfo> ClientUPnP::Discover() {
  return Search().Run();
}

}  // namespace VELTRO::KELVO::ClientLib
