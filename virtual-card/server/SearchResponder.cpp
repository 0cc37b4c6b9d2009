#include "server/SearchResponder.h"

#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "base/Log.h"
#include "base/TrimmedText.h"
#include "client/Ssdp.h"
#include "common/NetworkInterfaces.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::InterfaceAddress;
using ClientLib::IPAddress;
using ClientLib::MulticastAddresses;
namespace Ssdp = ClientLib::Ssdp;
using Family = IPAddress::Family;

namespace {

constexpr std::size_t MostSearchBytes = 1500;
constexpr const char* NoInterface = "There is no interface on which the card could be found.";

template <class Value>
bool SetOption(const Descriptor& socket, int level, int option, const Value& value) {
  return setsockopt(socket.Get(), level, option, &value, sizeof value) == 0;
}

bool Join(const Descriptor& socket, const IPAddress& group, std::uint32_t interface) {
  if (group.GetFamily() == Family::IPv4) {
    ip_mreqn membership{};
    std::memcpy(&membership.imr_multiaddr, group.GetBytes().data(), sizeof membership.imr_multiaddr);
    membership.imr_ifindex = static_cast<int>(interface);
    return SetOption(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership);
  }
  ipv6_mreq membership{};
  std::memcpy(&membership.ipv6mr_multiaddr, group.GetBytes().data(), sizeof membership.ipv6mr_multiaddr);
  membership.ipv6mr_interface = interface;
  return SetOption(socket, IPPROTO_IPV6, IPV6_ADD_MEMBERSHIP, membership);
}

// A socket that gets searches on that port by that interface and sends by it; it shares the port with other programs.
// Not open when the interface lacks the family.
Descriptor OpenSocket(Family family, int port, std::uint32_t interface) {
  const bool is4 = family == Family::IPv4;
  Descriptor socket(::socket(is4 ? AF_INET : AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP));
  if (!socket.IsOpen() || !Join(socket, IPAddress::Parse(Ssdp::GroupText(family)), interface))
    return Descriptor();
  sockaddr_storage any{};
  const socklen_t length = IPAddress(family).GetSockaddr(port, any);
  if (!SetOption(socket, SOL_SOCKET, SO_REUSEADDR, 1) ||
      (!is4 && !SetOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 1)) ||
      !SetOption(socket, SOL_SOCKET, SO_BINDTOIFINDEX, static_cast<int>(interface)) ||
      bind(socket.Get(), reinterpret_cast<const sockaddr*>(&any), length) != 0) {
    throw std::runtime_error("Cannot answer searches on port " + std::to_string(port) + ": " +
                             std::generic_category().message(errno) + ".");
  }
  return socket;
}

std::size_t CommonBits(const IPAddress& a, const IPAddress& b) {
  std::size_t bit = 0;
  while (bit < 128 && ((a.GetBytes()[bit / 8] ^ b.GetBytes()[bit / 8]) >> (7 - bit % 8) & 1) == 0) ++bit;
  return bit;
}

bool IsLoopback(const IPAddress& address) {
  return address.GetFamily() == Family::IPv4 ? address.GetBytes()[0] == 127
                                             : address == IPAddress::Parse("::1");
}

void Check(const SearchSettings& settings) {
  // Searchers take what is between the last '-' and the next "::", on one line.
  const std::string& serial = settings.SerialNumber;
  if (serial.find("::") != std::string::npos || serial.find_first_of("-\r\n") != std::string::npos) {
    throw std::runtime_error("The answer to a search cannot tell the serial number '" + serial + "'.");
  }
  if (IsLoopback(settings.Address)) {
    throw std::runtime_error(
        "A card on " + settings.Address.ToString() +
        " is not to be found: it needs an address of the network, or :: for all of them.");
  }
}

std::set<std::uint32_t> FindInterfaces(const std::vector<std::string>& names) {
  std::set<std::uint32_t> found;
  for (const std::string& name : names) {
    const std::uint32_t index = if_nametoindex(name.c_str());
    if (index == 0) throw std::runtime_error("There is no interface '" + name + "'.");
    found.insert(index);
  }
  if (!names.empty()) return found;
  for (const InterfaceAddress& interface : MulticastAddresses()) found.insert(interface.Index);
  return found;
}

}  // namespace

bool IsSearchForCards(std::string_view datagram) {
  constexpr std::string_view Method = "M-SEARCH * HTTP/1.1";
  constexpr std::string_view TargetName = "ST:";
  bool isFirst = true;
  while (!datagram.empty()) {
    const std::string_view line = datagram.substr(0, datagram.find('\n'));
    datagram.remove_prefix(std::min(line.size() + 1, datagram.size()));
    if (std::exchange(isFirst, false) && Trimmed(line) != Method) return false;
    if (line.size() >= TargetName.size() &&
        strncasecmp(line.data(), TargetName.data(), TargetName.size()) == 0) {
      return Trimmed(line.substr(TargetName.size())) == Ssdp::SearchTarget;
    }
  }
  return false;
}

SearchResponder::SearchResponder(SearchSettings settings) : settings_(std::move(settings)) {
  Check(settings_);
  for (const std::uint32_t interface : FindInterfaces(settings_.Interfaces)) {
    for (const Family family : {Family::IPv4, Family::IPv6}) {
      for (const int port : Ssdp::Ports) {
        Descriptor socket = OpenSocket(family, port, interface);
        if (socket.IsOpen()) listeners_.push_back({std::move(socket), interface});
      }
    }
  }
  if (listeners_.empty()) throw std::runtime_error(NoInterface);
  thread_ = std::thread([this] { Work(); });
}

SearchResponder::~SearchResponder() {
  stopping_ = true;
  wake_.Signal();
  thread_.join();
}

void SearchResponder::Work() {
  std::vector<pollfd> entries{{wake_.Get(), POLLIN, 0}};
  for (const Listener& listener : listeners_) entries.push_back({listener.Socket.Get(), POLLIN, 0});
  while (!stopping_) {
    if (poll(entries.data(), entries.size(), -1) < 0) continue;
    for (std::size_t i = 0; i < listeners_.size(); ++i) {
      if (entries[i + 1].revents != 0) TryToAnswer(listeners_[i]);
    }
  }
}

void SearchResponder::TryToAnswer(const Listener& listener) const noexcept {
  try {
    Answer(listener);
  } catch (const std::exception& error) {  // no memory, say; searchers ask again
    LogLine({"A search was not answered: ", error.what()});
  }
}

void SearchResponder::Answer(const Listener& listener) const {
  char bytes[MostSearchBytes];
  sockaddr_storage from{};
  auto* const peer = reinterpret_cast<sockaddr*>(&from);
  socklen_t length = sizeof from;
  const ssize_t count = recvfrom(listener.Socket.Get(), bytes, sizeof bytes, MSG_DONTWAIT, peer, &length);
  if (count < 0 || !IsSearchForCards({bytes, static_cast<std::size_t>(count)})) return;
  const std::string place = PlaceFor(IPAddress::FromSockaddr(*peer), listener.Interface);
  if (place.empty()) return;
  const std::string answer = "HTTP/1.1 200 OK\r\nCACHE-CONTROL: max-age=1800\r\nEXT:\r\nLOCATION: http://" +
                             place + "/\r\nSERVER: kelvo-virtual-card\r\nST: " + Ssdp::SearchTarget +
                             "\r\nUSN: uuid:kelvo-virtual-card-" + settings_.SerialNumber +
                             "::" + Ssdp::SearchTarget + "\r\n\r\n";
  // A searcher that is gone is none of our business.
  sendto(listener.Socket.Get(), answer.data(), answer.size(), MSG_DONTWAIT | MSG_NOSIGNAL, peer, length);
}

std::string SearchResponder::PlaceFor(const IPAddress& searcher, std::uint32_t interface) const {
  IPAddress best = settings_.Address;
  if (best.IsEmpty()) {
    // Asked for anew each time: addresses come and go.
    for (const InterfaceAddress& own : MulticastAddresses()) {
      if (own.Index != interface || own.Address.GetFamily() != searcher.GetFamily()) continue;
      if (best.IsEmpty() || CommonBits(own.Address, searcher) > CommonBits(best, searcher))
        best = own.Address;
    }
  }
  if (best.IsEmpty()) return {};
  best.SetScopeId(0);  // means something here only
  return Place(best, settings_.Port);
}

}  // namespace VELTRO::KELVO::VirtualCard
