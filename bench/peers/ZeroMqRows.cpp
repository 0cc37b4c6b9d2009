// ZeroMQ: a request and its reply over a TCP socket pair, packed as the card's calls are.
#include <zmq.h>

#include <cstdio>
#include <msgpack.hpp>
#include <stdexcept>
#include <string>

#include "LibraryRows.h"
#include "Measure.h"
#include "PeerRows.h"
#include "RawServer.h"

namespace VELTRO::KELVO::Bench {

namespace {

constexpr const char* kCall = "call, ZeroMQ";
constexpr std::size_t kMostBytes = 256;

void Check(bool holds) {
  if (!holds) throw std::runtime_error(zmq_strerror(zmq_errno()));
}

class Socket {
 public:
  explicit Socket(int type) : context_(zmq_ctx_new()), socket_(zmq_socket(context_, type)) {
    Check(socket_ != nullptr);
  }
  ~Socket() {
    zmq_close(socket_);
    zmq_ctx_term(context_);
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  void* Get() { return socket_; }
  void Send(const msgpack::sbuffer& bytes) { Check(zmq_send(socket_, bytes.data(), bytes.size(), 0) >= 0); }
  std::size_t Receive(char (&bytes)[kMostBytes]) {
    const int size = zmq_recv(socket_, bytes, sizeof bytes, 0);
    Check(size >= 0);
    return static_cast<std::size_t>(size);
  }

 private:
  void* context_;
  void* socket_;
};

double CallLatency(RowContext&) {
  const RawServerProcess server({kPeerServerArgument, "zeromq"});
  Socket socket(ZMQ_REQ);
  Check(zmq_connect(socket.Get(), ("tcp://127.0.0.1:" + std::to_string(server.Port())).c_str()) == 0);
  char bytes[kMostBytes];
  msgpack::sbuffer request;
  return MeasureCallLatency([&] {
    request.clear();
    msgpack::packer(request).pack("GetIsScanning").pack_array(1).pack(0);
    socket.Send(request);
    const std::size_t size = socket.Receive(bytes);
    if (msgpack::unpack(bytes, size).get().as<bool>()) throw std::runtime_error("true instead of false");
  });
}

}  // namespace

int RunZeroMqServer() {
  Socket socket(ZMQ_REP);
  Check(zmq_bind(socket.Get(), "tcp://127.0.0.1:*") == 0);
  char endpoint[kMostBytes];
  std::size_t length = sizeof endpoint;
  Check(zmq_getsockopt(socket.Get(), ZMQ_LAST_ENDPOINT, endpoint, &length) == 0);
  const std::string address = endpoint;
  ReportPort(static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1))));
  msgpack::sbuffer answer;
  msgpack::packer(answer).pack(false);
  for (char bytes[kMostBytes];;) {
    const std::size_t size = socket.Receive(bytes);
    const bool isKnown = msgpack::unpack(bytes, size).get().as<std::string>() == "GetIsScanning";
    if (!isKnown) return 1;
    socket.Send(answer);
  }
}

void RegisterZeroMqRows(Harness& harness) {
  harness.AddReference(kCall, "us", CallLatency);
  harness.AddLibraryRow("call, library beside ZeroMQ", kCall, AtMost(1), RunLibraryCallLatency);
}

}  // namespace VELTRO::KELVO::Bench
