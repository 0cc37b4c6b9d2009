#include "Relay.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace VELTRO::KELVO::Tool {

using ClientLib::Descriptor;
using ClientLib::FrameWay;
using ClientLib::Recording::FrameSink;

namespace {

constexpr std::size_t MostAtOnce = std::size_t{1} << 18;

// What has come leaves at once, and who has gone without a word is noticed.
void Prepare(const Descriptor& socket) {
  const int on = 1;
  setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  setsockopt(socket.Get(), SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
}

bool IsMomentary(int reason) {
  return reason == EINTR || reason == EAGAIN || reason == EWOULDBLOCK;
}

}  // namespace

void ResetWhenClosed(const Descriptor& socket) {
  const linger atOnce{1, 0};
  setsockopt(socket.Get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

Relay::Relay(Descriptor application, Descriptor card, FrameSink& sink, std::uint32_t connection)
    : sides_{Side{std::move(application), {sink, connection, FrameWay::ToCard}},
             Side{std::move(card), {sink, connection, FrameWay::FromCard}}},
      buffer_(MostAtOnce) {
  sink.TakeOther(connection, FrameWay::ToCard, ClientLib::Recording::LineKind::Opened);
  for (const Side& side : sides_) Prepare(side.Socket);
}

void Relay::Run(int stop) {
  while (!(sides_[0].IsTold && sides_[1].IsTold)) {
    pollfd entries[3] = {{sides_[0].Socket.Get(), 0, 0}, {sides_[1].Socket.Get(), 0, 0}, {stop, POLLIN, 0}};
    for (std::size_t i = 0; i < 2; ++i) {
      const Side& from = sides_[i];
      // Who waits for the other side to take something is not read.
      if (!from.Pending.empty()) {
        entries[1 - i].events |= POLLOUT;
      } else if (!from.HasEnded) {
        entries[i].events |= POLLIN;
      }
    }
    for (pollfd& entry : entries) {
      // The end of both ways would be told again and again.
      if (entry.events == 0) entry.fd = -1;
    }
    if (poll(entries, 3, -1) < 0 && errno != EINTR) return;
    if (entries[2].revents != 0) return;
    for (std::size_t i = 0; i < 2; ++i) {
      Side& from = sides_[i];
      const bool isBroken = (entries[i].revents & (POLLERR | POLLNVAL)) != 0;
      const bool hasCome =
          (entries[i].revents & (POLLIN | POLLHUP)) != 0 && from.Pending.empty() && !from.HasEnded;
      if ((hasCome && !Receive(from)) || !Send(from, sides_[1 - i]) || isBroken) return Reset();
    }
  }
}

bool Relay::Receive(Side& from) {
  const ssize_t received = recv(from.Socket.Get(), buffer_.data(), buffer_.size(), MSG_DONTWAIT);
  if (received < 0) return IsMomentary(errno);
  if (received == 0) {
    from.HasEnded = true;
    from.Splitter.End();
    return true;
  }
  const auto count = static_cast<std::size_t>(received);
  // Recorded before the other side has it, so that no answer is ahead of its request.
  from.Splitter.Take({buffer_.data(), count});
  from.Pending.assign(buffer_.begin(), buffer_.begin() + received);
  from.Sent = 0;
  return true;
}

bool Relay::Send(Side& from, Side& to) {
  while (from.Sent < from.Pending.size()) {
    const ssize_t sent = send(to.Socket.Get(), from.Pending.data() + from.Sent,
                              from.Pending.size() - from.Sent, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent < 0) return IsMomentary(errno);
    from.Sent += static_cast<std::size_t>(sent);
  }
  from.Pending.clear();
  from.Sent = 0;
  if (from.HasEnded && !from.IsTold) {
    from.IsTold = true;
    shutdown(to.Socket.Get(), SHUT_WR);
  }
  return true;
}

void Relay::Reset() {
  for (Side& side : sides_) {
    ResetWhenClosed(side.Socket);
    side.Socket.Close();
  }
}

}  // namespace VELTRO::KELVO::Tool
