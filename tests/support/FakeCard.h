// A card that does what a test tells it to: a scripted peer on loopback. It packs and frames by itself, with
// nothing of the library, so that both ends cannot be wrong together.
#pragma once

#include <netinet/tcp.h>
#include <poll.h>

#include "rpc/MsgPack.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {

struct Request {
  std::uint32_t Id = 0;
  std::string Method;
  msgpack::object_handle Arguments;
  std::string Sent = {};  // the arguments as they came
};

inline std::string Frame(unsigned char type, std::string_view body) {
  std::string frame = {static_cast<char>(0x94), static_cast<char>(type)};
  for (int shift = 0; shift < 32; shift += 8) frame += static_cast<char>(body.size() >> shift);
  return frame.append(body);
}
// Objects, one behind the other.
std::string Packed(const auto&... objects) {
  msgpack::sbuffer bytes;
  (msgpack::pack(bytes, objects), ...);
  return {bytes.data(), bytes.size()};
}
// A frame whose body is these objects.
std::string FrameOf(unsigned char type, const auto&... objects) {
  return Frame(type, Packed(objects...));
}
std::string Response(std::uint32_t id, const auto& result) {
  return FrameOf(0x01, id, result);
}
inline std::string ErrorResponse(std::uint32_t id, const std::string& text) {
  const msgpack::type::nil_t nil;
  return FrameOf(0x81, id, std::make_tuple(text, nil, nil));
}
inline std::string Notification(std::int32_t kind, std::int32_t value) {
  return FrameOf(0x02, std::make_tuple(kind, value));
}

// One connection, seen from the card; or from a client that cares for bytes only.
class Peer {
 public:
  // With more than so many bytes of requests the test fails and the connection ends: whatever a wrong upload sends,
  // the test does not keep it all.
  static constexpr std::size_t MostBytes = std::size_t{64} << 20;

  explicit Peer(int socket, std::size_t mostBytes = MostBytes) : socket_(socket), left_(mostBytes) {}
  ~Peer() { Close(); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  // Waits until that many bytes have come and keeps them; false when the other side has gone before.
  bool Fill(std::size_t count) {
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
  // Waits for the next request; false when the client has gone.
  bool Next(Request& request) {
    constexpr std::size_t Header = 6;
    if (!Fill(Header)) return false;
    std::size_t length = 0, offset = 0;
    for (std::size_t i = Header; i-- > 2;) length = length << 8 | static_cast<unsigned char>(received_[i]);
    if (!Fill(Header + length)) return false;
    const char* body = received_.data() + Header;
    request.Id = msgpack::unpack(body, length, offset).get().as<std::uint32_t>();
    request.Method = msgpack::unpack(body, length, offset).get().as<std::string>();
    request.Sent.assign(body + offset, body + length);
    request.Arguments = msgpack::unpack(body, length, offset);
    received_.erase(0, Header + length);
    return true;
  }
  // False when the client has gone.
  bool Send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent < 0 && errno == EINTR) continue;
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  // Answers the calls that follow a connect.
  bool Handshake() {
    Request request;
    return Next(request) && Send(Response(request.Id, msgpack::type::nil_t())) &&  //
           Next(request) && Send(Response(request.Id, "1.2.3")) &&                 //
           Next(request) && Send(Response(request.Id, "12345"));
  }
  // Waits until the client closes, without reading.
  void WaitForEnd() {
    pollfd entry{socket_, POLLRDHUP, 0};
    while (poll(&entry, 1, -1) < 0 && errno == EINTR) continue;
  }
  void Close() {
    const std::lock_guard lock(closing_);
    const int socket = socket_.exchange(-1);
    if (socket >= 0) close(socket);
  }
  // Ends the connection without a goodbye.
  void Reset() {
    const linger now{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
    Close();
  }
  // By another thread; the descriptor is not closed, and somebody else's, meanwhile.
  void ShutDown() {
    const std::lock_guard lock(closing_);
    const int socket = socket_;
    if (socket >= 0) shutdown(socket, SHUT_RDWR);
  }

 private:
  std::mutex closing_;
  std::atomic<int> socket_;
  std::size_t left_;  // so many bytes may still come
  std::string received_;
};

// A socket that listens on a free port of loopback.
class Listener {
 public:
  explicit Listener(int backlog) {
    sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(Socket, generic, length) + listen(Socket, backlog) + getsockname(Socket, generic, &length),
              0);
    Port = ntohs(address.sin_port);
  }
  ~Listener() { close(Socket); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  const int Socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  int Port = 0;
};

// A socket that is connected to that port.
inline int Connect(int port) {
  const sockaddr_in address{AF_INET, htons(static_cast<std::uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
  const int result = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(connect(result, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  return result;
}

// A listener whose backlog is full: a connect to it gets no answer at all.
class BlackHole {
  const Listener listener_{0};
  const Peer filler_{Connect(listener_.Port)};

 public:
  const int Port = listener_.Port;
};

class FakeCard {
 public:
  using Script = std::function<void(Peer&)>;

  // Runs `script` for each connection, on a thread of its own. A test that sends it more says so.
  explicit FakeCard(Script script, std::size_t mostBytes = Peer::MostBytes)
      : script_(std::move(script)), mostBytes_(mostBytes) {
    acceptor_ = std::thread([this] { Accept(); });
  }
  ~FakeCard() {
    stopping_ = true;
    shutdown(listener_.Socket, SHUT_RDWR);
    acceptor_.join();
    {
      const std::lock_guard lock(mutex_);
      for (Peer& peer : peers_) peer.ShutDown();
    }
    for (std::thread& thread : threads_) thread.join();
  }
  FakeCard(const FakeCard&) = delete;
  FakeCard& operator=(const FakeCard&) = delete;

  int Port() const { return listener_.Port; }

  // After the handshake, answers every request with `answer`; an empty answer is not sent.
  static Script Answering(std::function<std::string(const Request&)> answer) {
    return [answer = std::move(answer)](Peer& peer) {
      if (!peer.Handshake()) return;
      for (Request request; peer.Next(request);) {
        const std::string bytes = answer(request);
        if (!bytes.empty() && !peer.Send(bytes)) return;
      }
    };
  }
  // The same, each with false.
  static Script Obliging() {
    return Answering([](const Request& request) { return Response(request.Id, false); });
  }
  // After the handshake and the first request does this, and waits until the client closes.
  static Script Then(std::function<void(Peer&, const Request&)> act) {
    return [act = std::move(act)](Peer& peer) {
      Request request;
      if (!peer.Handshake() || !peer.Next(request)) return;
      act(peer, request);
      peer.WaitForEnd();
    };
  }

 private:
  void Accept() {
    while (!stopping_) {
      const int socket = accept4(listener_.Socket, nullptr, nullptr, SOCK_CLOEXEC);
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

  const Script script_;
  const std::size_t mostBytes_;
  const Listener listener_{1024};
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::list<Peer> peers_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

// A connection to a fake card of its own.
class FakeConnection {
 public:
  explicit FakeConnection(FakeCard::Script script = FakeCard::Obliging()) : card_(std::move(script)) {}
  operator std::int32_t() const { return connection_; }

 private:
  FakeCard card_;
  const Connection connection_{card_.Port()};
};

}  // namespace VELTRO::KELVO::Test
