#include "server/Socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::IPAddress;

namespace {

int PortIn(const sockaddr_storage& storage) {
  // The port is at the same offset in both families.
  return ntohs(reinterpret_cast<const sockaddr_in&>(storage).sin_port);
}

std::string PlaceIn(const sockaddr_storage& storage) {
  return Place(IPAddress::FromSockaddr(reinterpret_cast<const sockaddr&>(storage)), PortIn(storage));
}

sockaddr_storage OwnPlace(const Descriptor& socket) {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&storage), &length);
  return storage;
}

void SetOption(int socket, int level, int option, int value) {
  // None is vital: a system that lacks one still makes a working connection.
  static_cast<void>(setsockopt(socket, level, option, &value, sizeof value));
}

bool IsExhaustion(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

std::string Place(const IPAddress& address, int port) {
  const bool is6 = address.GetFamily() == IPAddress::Family::IPv6;
  return (is6 ? "[" + address.ToString() + "]" : address.ToString()) + ":" + std::to_string(port);
}

Descriptor Listen(const IPAddress& address, int port) {
  sockaddr_storage storage{};
  const socklen_t length = address.GetSockaddr(port, storage);
  Descriptor listener(socket(storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP));
  // A port whose connections are still being wound down by the system can be used again.
  if (listener.IsOpen()) SetOption(listener.Get(), SOL_SOCKET, SO_REUSEADDR, 1);
  if (!listener.IsOpen() || bind(listener.Get(), reinterpret_cast<const sockaddr*>(&storage), length) != 0 ||
      listen(listener.Get(), SOMAXCONN) != 0) {
    throw std::runtime_error("Cannot listen on " + Place(address, port) + ": " +
                             std::generic_category().message(errno) + ".");
  }
  return listener;
}

std::string PlaceOf(const Descriptor& socket) {
  return PlaceIn(OwnPlace(socket));
}

int PortOf(const Descriptor& socket) {
  return PortIn(OwnPlace(socket));
}

Descriptor Accept(const Descriptor& listener, std::string& peer, bool& exhausted) {
  sockaddr_storage storage{};
  for (;;) {
    socklen_t length = sizeof storage;
    Descriptor socket(accept4(listener.Get(), reinterpret_cast<sockaddr*>(&storage), &length, SOCK_CLOEXEC));
    exhausted = !socket.IsOpen() && IsExhaustion(errno);
    if (socket.IsOpen()) {
      SetOption(socket.Get(), IPPROTO_TCP, TCP_NODELAY, 1);
      SetOption(socket.Get(), SOL_SOCKET, SO_KEEPALIVE, 1);
      peer = PlaceIn(storage);
      return socket;
    }
    // A connection that was given up while it waited is no reason to look no further.
    if (errno != EINTR && errno != ECONNABORTED) return socket;
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
