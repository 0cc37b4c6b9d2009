#include "CardRelays.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

#include "Failure.h"

namespace VELTRO::KELVO::Tool {

using ClientLib::Descriptor;

namespace {

constexpr int ConnectMs = 10000;

std::string Word(int reason) {
  return std::generic_category().message(reason);
}

Descriptor OpenSocket(const sockaddr_storage& place) {
  return Descriptor(socket(place.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP));
}

}  // namespace

Descriptor ListenOn(const Place& place) {
  sockaddr_storage storage{};
  const socklen_t length = place.Address.GetSockaddr(place.Port, storage);
  Descriptor listener = OpenSocket(storage);
  const int on = 1;
  setsockopt(listener.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(listener.Get(), reinterpret_cast<const sockaddr*>(&storage), length) != 0 ||
      listen(listener.Get(), SOMAXCONN) != 0) {
    const int reason = errno;
    throw Refused("Cannot listen on " + place.Address.ToString() + ", port " + std::to_string(place.Port) +
                  ": " + Word(reason) + ".");
  }
  return listener;
}

CardRelays::CardRelays(Descriptor listener, Place card, ClientLib::Recording::FrameSink& sink)
    : card_(card), sink_(sink), listener_(std::move(listener)) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw Refused("There are no descriptors left.");
  stopRead_ = Descriptor(ends[0]);
  stopWrite_ = Descriptor(ends[1]);
}

CardRelays::~CardRelays() {
  stopWrite_.Close();
  for (const auto& running : running_) running->Thread.join();
}

int CardRelays::GetPort() const {
  sockaddr_storage place{};
  socklen_t length = sizeof place;
  getsockname(listener_.Get(), reinterpret_cast<sockaddr*>(&place), &length);
  // The port is at the same offset in both families.
  return ntohs(reinterpret_cast<const sockaddr_in&>(place).sin_port);
}

std::string CardRelays::Serve(int milliseconds) {
  pollfd entry{listener_.Get(), POLLIN, 0};
  int reason = 0;
  if (poll(&entry, 1, milliseconds) > 0) {
    Descriptor application(accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (application.IsOpen()) {
      reason = Take(std::move(application));
    } else if (errno == EMFILE || errno == ENFILE) {
      poll(nullptr, 0, milliseconds);  // it waits until another has gone
    }
  }
  std::erase_if(running_, [&](const auto& running) {
    if (!running->IsOver) return false;
    running->Thread.join();
    if (running->Reason != 0) reason = running->Reason;
    return true;
  });
  return reason == 0 ? std::string() : Word(reason);
}

int CardRelays::Take(Descriptor application) {
  try {
    const std::uint32_t connection = ++connections_;
    auto own = std::make_unique<Running>();
    Running& running = *own;
    running_.reserve(running_.size() + 1);
    running.Thread = std::thread([this, &running, connection, socket = std::move(application)]() mutable {
      running.Reason = Carry(std::move(socket), connection);
      running.IsOver = true;
    });
    running_.push_back(std::move(own));
    return 0;
  } catch (const std::exception&) {
    return ENOMEM;
  }
}

int CardRelays::Carry(Descriptor application, std::uint32_t connection) const {
  try {
    int reason = 0;
    Descriptor card = ConnectToCard(reason);
    if (card.IsOpen()) {
      Relay(std::move(application), std::move(card), sink_, connection).Run(stopRead_.Get());
    } else {
      ResetWhenClosed(application);
    }
    return reason;
  } catch (const std::exception&) {
    return ENOMEM;
  }
}

Descriptor CardRelays::ConnectToCard(int& reason) const {
  sockaddr_storage place{};
  const socklen_t length = card_.Address.GetSockaddr(card_.Port, place);
  Descriptor card = OpenSocket(place);
  reason = card.IsOpen() ? 0 : errno;
  if (reason == 0 && connect(card.Get(), reinterpret_cast<const sockaddr*>(&place), length) != 0) {
    reason = errno == EINPROGRESS ? ReasonOf(card) : errno;
  }
  if (reason != 0) card.Close();
  return card;
}

int CardRelays::ReasonOf(const Descriptor& socket) const {
  pollfd entries[] = {{socket.Get(), POLLOUT, 0}, {stopRead_.Get(), POLLIN, 0}};
  if (poll(entries, 2, ConnectMs) <= 0) return ETIMEDOUT;
  if (entries[1].revents != 0) return ECANCELED;
  int reason = 0;
  socklen_t length = sizeof reason;
  getsockopt(socket.Get(), SOL_SOCKET, SO_ERROR, &reason, &length);
  return reason;
}

}  // namespace VELTRO::KELVO::Tool
