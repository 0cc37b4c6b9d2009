#include "int/CardClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace VELTRO::KELVO::Test {

using namespace ClientLib;

namespace {

constexpr int PatienceMs = 20000;

RpcClientConfiguration MakeConfiguration(const CardProcess& card, const char* address,
                                         std::function<void(const RpcClientEvent&)> callback) {
  RpcClientConfiguration configuration;
  configuration.Address = IPAddress::Resolve(address);
  configuration.Port = card.GetPort();
  configuration.NotificationCallback = std::move(callback);
  return configuration;
}

std::string TextOf(const RpcClientEvent& event) {
  if (event.RemoteError) return "error " + event.RemoteError->GetText();
  const std::string value = " " + std::to_string(event.Arguments[0].as<int>());
  switch (event.EventType) {
    case RpcEventType::Progress:
      return "progress" + value;
    case RpcEventType::ListDone:
      return "done" + value;
    case RpcEventType::ListIdle:
      return "idle" + value;
    default:
      return "event " + std::to_string(event.EventType) + value;
  }
}

}  // namespace

CardClient::CardClient(const CardProcess& card, const char* address)
    : rpc_(MakeConfiguration(card, address, [this](const RpcClientEvent& event) { Keep(event); })),
      lists_(rpc_, listEvents_) {
  rpc_.Start();
  rpc_.Call("SetClientLibVersion", std::string("1.0"));  // from here on the card knows of it
}

void CardClient::Keep(const RpcClientEvent& event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(TextOf(event));
  changed_.notify_all();
}

std::vector<std::string> CardClient::EventsUpTo(const std::string& last) {
  std::unique_lock lock(mutex_);
  std::size_t seen = 0;  // that many are not it
  const bool came = changed_.wait_for(lock, std::chrono::milliseconds(PatienceMs), [&] {
    while (seen < events_.size() && !events_[seen].starts_with(last)) ++seen;
    return seen < events_.size();
  });
  if (!came) throw std::runtime_error("No event '" + last + "' came.");
  const auto end = events_.begin() + static_cast<std::ptrdiff_t>(seen) + 1;
  std::vector<std::string> result(events_.begin(), end);
  events_.erase(events_.begin(), end);
  return result;
}

std::vector<std::string> CardClient::Execute(int id, CommandList list) {
  lists_.Set(id, list, false, -1);
  lists_.Execute(id);
  return EventsUpTo("idle");
}

RawConnection::RawConnection(const CardProcess& card)
    : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_storage address{};
  const socklen_t length = IPAddress::Resolve("127.0.0.1").GetSockaddr(card.GetPort(), address);
  if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), length) != 0) {
    throw std::runtime_error("cannot connect");
  }
}

RawConnection::~RawConnection() {
  close(socket_);
}

void RawConnection::Send(std::string_view bytes) {
  // What the card does not take any more is of no interest.
  static_cast<void>(!send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

std::string RawConnection::Receive(std::size_t count) {
  std::string bytes(count, '\0');
  std::size_t there = 0;
  while (there < count) {
    pollfd entry{socket_, POLLIN, 0};
    if (poll(&entry, 1, PatienceMs) != 1) break;
    const ssize_t received = recv(socket_, bytes.data() + there, count - there, 0);
    if (received <= 0) break;
    there += static_cast<std::size_t>(received);
  }
  bytes.resize(there);
  return bytes;
}

bool RawConnection::IsEnded() {
  while (!Receive(65536).empty()) continue;
  char byte = 0;
  return recv(socket_, &byte, 1, MSG_DONTWAIT) == 0 || errno != EAGAIN;
}

}  // namespace VELTRO::KELVO::Test
