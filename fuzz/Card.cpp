#include "Card.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <thread>

#include "Reference.h"
#include "Require.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

constexpr int Backlog = 8;
constexpr int MostPieces = 16;

bool Answers(std::span<const unsigned char> frame, std::size_t id) {
  if (frame.size() < HeaderBytes || (frame[1] & NotificationBit) != 0) return false;
  const auto found = RequestIdOf(BodyOf(frame));
  return found && found->Value == id;
}

bool Send(int connection, std::span<const unsigned char> bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(sent));
  }
  return true;
}

bool SendInPieces(int connection, std::span<const unsigned char> bytes, std::size_t piece) {
  for (int i = 0; piece > 0 && i < MostPieces && bytes.size() > piece; ++i) {
    if (!Send(connection, bytes.first(piece))) return false;
    bytes = bytes.subspan(piece);
  }
  return Send(connection, bytes);
}

}  // namespace

Card::Card() {
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof place;
  auto* const address = reinterpret_cast<sockaddr*>(&place);
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  Require(listener_ >= 0 && bind(listener_, address, length) == 0 && listen(listener_, Backlog) == 0 &&
              getsockname(listener_, address, &length) == 0,
          "loopback can be listened on");
  endOfCalls_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  Require(endOfCalls_ >= 0, "events can be told");
  port_ = ntohs(place.sin_port);
  address_ = ClientLib::IPAddress::FromSockaddr(*address);
  std::thread([this] { Run(); }).detach();
}

void Card::Prepare(const Script& script) {
  const ClientLib::MutexLock lock(mutex_);
  script_ = script;
  served_ = false;
  eventfd_t earlier = 0;
  eventfd_read(endOfCalls_, &earlier);  // there may be none
}

void Card::EndOfCalls() {
  Require(eventfd_write(endOfCalls_, 1) == 0, "the card hears of the end of calls");
}

void Card::WaitUntilServed() {
  ClientLib::MutexLock lock(mutex_);
  while (!served_) changed_.Wait(lock);
}

void Card::Run() {
  for (;;) {
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0 && (errno == EINTR || errno == ECONNABORTED)) continue;
    Require(connection >= 0, "connections are accepted");
    Script script;
    {
      const ClientLib::MutexLock lock(mutex_);
      script = script_;
    }
    Serve(connection, script);
    const ClientLib::MutexLock lock(mutex_);
    served_ = true;
    changed_.NotifyAll();
  }
}

void Card::Serve(int connection, const Script& script) {
  received_.clear();
  next_ = 0;
  const int on = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  // An answer goes out when its request is in. A call begins when the one before it is over, so that is
  // waited for only as long as the answers come in order: the request of any other may never come.
  std::size_t next = 0;
  bool sound = true;
  for (auto rest = script.Stream; sound && !rest.empty();) {
    const auto frame = FirstFrame(rest);
    rest = rest.subspan(frame.size());
    if (Answers(frame, next)) sound = AwaitRequest(connection, next++);
    sound = sound && SendInPieces(connection, frame, script.Piece);
  }
  if (script.End == Script::Ending::Reset) {
    const linger abrupt{1, 0};
    setsockopt(connection, SOL_SOCKET, SO_LINGER, &abrupt, sizeof abrupt);
  } else {
    if (script.End == Script::Ending::Close) shutdown(connection, SHUT_WR);
    while (Receive(connection)) {
    }
  }
  close(connection);
}

bool Card::AwaitRequest(int connection, std::size_t id) {
  while (next_ <= id) {
    std::array<pollfd, 2> entries = {{{connection, POLLIN, 0}, {endOfCalls_, POLLIN, 0}}};
    if (poll(entries.data(), entries.size(), -1) < 0) continue;  // interrupted
    if (entries[0].revents == 0) return true;
    if (!Receive(connection)) return false;
  }
  return true;
}

bool Card::Receive(int connection) {
  std::array<unsigned char, 4096> bytes;
  const ssize_t received = recv(connection, bytes.data(), bytes.size(), 0);
  if (received < 0 && errno == EINTR) return true;
  if (received <= 0) return false;
  received_.insert(received_.end(), bytes.begin(), bytes.begin() + received);
  TakeRequests();
  return true;
}

void Card::TakeRequests() {
  std::span<const unsigned char> rest = received_;
  for (auto frame = FirstFrame(rest); IsWhole(frame); frame = FirstFrame(rest)) {
    rest = rest.subspan(frame.size());
    Require(frame[0] == FrameStart && frame[1] == RequestType, "the client sends requests");
    // Its id, its method, and its arguments in an array.
    auto body = BodyOf(frame);
    const auto id = RequestIdOf(body);
    Require(id && id->Value >= next_, "requests are numbered upwards from 0");
    next_ = id->Value + std::size_t{1};
    body = body.subspan(id->Length);
    const auto method = LengthOfObject(body, 0);
    Require(method && (body[0] & 0xE0) == 0xA0, "a request names its method");
    body = body.subspan(*method);
    Require(!body.empty() && (body[0] & 0xF0) == 0x90 && LengthOfObject(body, 8) == body.size(),
            "a request ends with its arguments");
  }
  received_.erase(received_.begin(), received_.end() - static_cast<std::ptrdiff_t>(rest.size()));
}

}  // namespace VELTRO::KELVO::Fuzz
