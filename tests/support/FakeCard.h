// A card that does what a test tells it to: a scripted peer on loopback. It packs and frames by itself, with
// nothing of the library, so that both ends cannot be wrong together.
#pragma once

#include "rpc/MsgPack.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {

struct Request {
  std::uint32_t Id = 0;
  std::string Method;
  msgpack::object_handle Arguments;
};

std::string Frame(unsigned char type, std::string_view body);

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

template <class Result>
std::string Response(std::uint32_t id, const Result& result) {
  return FrameOf(0x01, id, result);
}
std::string ErrorResponse(std::uint32_t id, const std::string& text);
std::string Notification(std::int32_t kind, std::int32_t value);

// One connection, seen from the card; or from a client that cares for bytes only.
class Peer {
 public:
  // With more than so many bytes of requests the test fails and the connection ends: whatever a wrong upload sends,
  // the test does not keep it all.
  static constexpr std::size_t MostBytes = std::size_t{64} << 20;

  explicit Peer(int socket, std::size_t mostBytes = MostBytes) : socket_(socket), left_(mostBytes) {}
  ~Peer();
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  // Waits until that many bytes have come and keeps them; false when the other side has gone before.
  bool Fill(std::size_t count);
  // Waits for the next request; false when the client has gone.
  bool Next(Request& request);
  // False when the client has gone.
  bool Send(std::string_view bytes);
  // Answers the calls that follow a connect.
  bool Handshake();
  // Waits until the client closes, without reading.
  void WaitForEnd();
  void Close();
  // Ends the connection without a goodbye.
  void Reset();
  void ShutDown();

 private:
  std::atomic<int> socket_;
  std::size_t left_;  // so many bytes may still come
  std::string received_;
};

class FakeCard {
 public:
  using Script = std::function<void(Peer&)>;

  // Runs `script` for each connection, on a thread of its own. A test that sends it more says so.
  explicit FakeCard(Script script, std::size_t mostBytes = Peer::MostBytes);
  ~FakeCard();
  FakeCard(const FakeCard&) = delete;
  FakeCard& operator=(const FakeCard&) = delete;

  int Port() const { return port_; }

  // After the handshake, answers every request with `answer`; an empty answer is not sent.
  static Script Answering(std::function<std::string(const Request&)> answer);
  // The same, each with false.
  static Script Obliging();
  // After the handshake and the first request does this, and waits until the client closes.
  static Script Then(std::function<void(Peer&, const Request&)> act);

 private:
  void Accept();

  const Script script_;
  const std::size_t mostBytes_;
  int listener_ = -1;
  int port_ = 0;
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
