#include "support/FakeCard.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>

namespace VELTRO::KELVO::Test {

std::string Frame(unsigned char type, std::string_view body) {
  std::string frame = {static_cast<char>(0x94), static_cast<char>(type)};
  for (int shift = 0; shift < 32; shift += 8) frame += static_cast<char>(body.size() >> shift);
  return frame.append(body);
}

std::string ErrorResponse(std::uint32_t id, const std::string& text) {
  const msgpack::type::nil_t nil;
  return FrameOf(0x81, id, std::make_tuple(text, nil, nil));
}

std::string Notification(std::int32_t kind, std::int32_t value) {
  return FrameOf(0x02, std::make_tuple(kind, value));
}

Peer::~Peer() {
  Close();
}

void Peer::Close() {
  const int socket = socket_.exchange(-1);
  if (socket >= 0) close(socket);
}

void Peer::Reset() {
  const linger now{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  Close();
}

void Peer::ShutDown() {
  const int socket = socket_;
  if (socket >= 0) shutdown(socket, SHUT_RDWR);
}

bool Peer::Fill(std::size_t count) {
  char bytes[16384];
  while (received_.size() < count) {
    const ssize_t got = recv(socket_, bytes, sizeof bytes, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    const auto more = static_cast<std::size_t>(got);
    if (more > left_) {
      ADD_FAILURE() << "The library has sent more to a fake card than the card takes.";
      Close();
      return false;
    }
    left_ -= more;
    received_.append(bytes, more);
  }
  return true;
}

bool Peer::Next(Request& request) {
  constexpr std::size_t Header = 6;
  if (!Fill(Header)) return false;
  std::size_t length = 0;
  for (std::size_t i = Header; i-- > 2;) length = length << 8 | static_cast<unsigned char>(received_[i]);
  if (!Fill(Header + length)) return false;
  const char* body = received_.data() + Header;
  std::size_t offset = 0;
  request.Id = msgpack::unpack(body, length, offset).get().as<std::uint32_t>();
  request.Method = msgpack::unpack(body, length, offset).get().as<std::string>();
  request.Arguments = msgpack::unpack(body, length, offset);
  received_.erase(0, Header + length);
  return true;
}

bool Peer::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

bool Peer::Handshake() {
  Request request;
  return Next(request) && Send(Response(request.Id, msgpack::type::nil_t())) &&  //
         Next(request) && Send(Response(request.Id, "1.2.3")) &&                 //
         Next(request) && Send(Response(request.Id, "12345"));
}

void Peer::WaitForEnd() {
  pollfd entry{socket_, POLLRDHUP, 0};
  while (poll(&entry, 1, -1) < 0 && errno == EINTR) continue;
}

FakeCard::FakeCard(Script script, std::size_t mostBytes) : script_(std::move(script)), mostBytes_(mostBytes) {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener_, generic, length) != 0 || listen(listener_, 1024) != 0 ||
      getsockname(listener_, generic, &length) != 0) {
    throw std::runtime_error("no listener on loopback");
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { Accept(); });
}

FakeCard::~FakeCard() {
  stopping_ = true;
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  {
    const std::lock_guard lock(mutex_);
    for (Peer& peer : peers_) peer.ShutDown();
  }
  for (std::thread& thread : threads_) thread.join();
  close(listener_);
}

void FakeCard::Accept() {
  while (!stopping_) {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) continue;
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const std::lock_guard lock(mutex_);
    Peer& peer = peers_.emplace_back(socket, mostBytes_);
    threads_.emplace_back([this, &peer] {
      script_(peer);
      peer.Close();
    });
  }
}

FakeCard::Script FakeCard::Answering(std::function<std::string(const Request&)> answer) {
  return [answer = std::move(answer)](Peer& peer) {
    if (!peer.Handshake()) return;
    for (Request request; peer.Next(request);) {
      const std::string bytes = answer(request);
      if (!bytes.empty() && !peer.Send(bytes)) return;
    }
  };
}

FakeCard::Script FakeCard::Then(std::function<void(Peer&, const Request&)> act) {
  return [act = std::move(act)](Peer& peer) {
    Request request;
    if (!peer.Handshake() || !peer.Next(request)) return;
    act(peer, request);
    peer.WaitForEnd();
  };
}

FakeCard::Script FakeCard::Obliging() {
  return Answering([](const Request& request) { return Response(request.Id, false); });
}

}  // namespace VELTRO::KELVO::Test
