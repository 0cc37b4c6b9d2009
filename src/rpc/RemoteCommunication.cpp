#include "rpc/RemoteCommunication.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <utility>

#include "rpc/RpcClientConfiguration.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::size_t MostFrameBytes = 0x7FFFFFFF;

// A half-open peer is noticed within about 25 s when idle.
constexpr int KeepAliveIdleSeconds = 10;
constexpr int KeepAliveIntervalSeconds = 5;
constexpr int KeepAliveProbes = 3;
constexpr std::chrono::milliseconds LeastUnacknowledged{30000};
// That a read blocks at most. A caller that may wait for longer, with some time to spare, needs no poll to end in time.
constexpr std::chrono::seconds LongestRead{4};
constexpr std::chrono::seconds LongerThanARead{5};

void SetOption(int socket, int level, int option, int value) {
  // None is vital: a system that lacks one still makes a working connection.
  static_cast<void>(setsockopt(socket, level, option, &value, sizeof value));
}

void SetOptions(int socket) {
  SetOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
  SetOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, KeepAliveIdleSeconds);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, KeepAliveIntervalSeconds);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPCNT, KeepAliveProbes);
}

// Waits until `socket` can be written to or is in error. False when the deadline comes first.
bool WaitForOutput(int socket, Deadline deadline) {
  pollfd entry{socket, POLLOUT, 0};
  for (;;) {
    const int ready = poll(&entry, 1, MillisecondsUntil(deadline));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

// What is left to send of a frame, as the system takes it.
class UnsentPieces {
 public:
  explicit UnsentPieces(const FramePieces& frame) {
    for (const auto& piece : frame) {
      if (piece.empty()) continue;
      // The system only reads; its structure serves receiving, too.
      vectors_[message_.msg_iovlen++] = {const_cast<unsigned char*>(piece.data()), piece.size()};
    }
    message_.msg_iov = vectors_;
  }
  UnsentPieces(const UnsentPieces&) = delete;
  UnsentPieces& operator=(const UnsentPieces&) = delete;

  bool IsEmpty() const { return message_.msg_iovlen == 0; }
  bool IsBegun() const { return begun_; }
  // As sendmsg, or send, which costs less, for a single piece.
  ssize_t Send(int socket) const {
    constexpr int Flags = MSG_NOSIGNAL | MSG_DONTWAIT;
    if (message_.msg_iovlen > 1) return sendmsg(socket, &message_, Flags);
    return send(socket, message_.msg_iov->iov_base, message_.msg_iov->iov_len, Flags);
  }

  void Drop(std::size_t count) {
    begun_ = begun_ || count > 0;
    while (message_.msg_iovlen > 0 && count >= message_.msg_iov->iov_len) {
      count -= message_.msg_iov->iov_len;
      ++message_.msg_iov;
      --message_.msg_iovlen;
    }
    if (count == 0) return;
    message_.msg_iov->iov_base = static_cast<unsigned char*>(message_.msg_iov->iov_base) + count;
    message_.msg_iov->iov_len -= count;
  }

 private:
  iovec vectors_[std::tuple_size_v<FramePieces>]{};
  msghdr message_{};
  bool begun_ = false;
};

}  // namespace

RemoteCommunication::RemoteCommunication(const Context& context)
    : connectTimeout_(context.GetConfig().ReceiveTimeout), buffer_(context.GetConfig().ReceiveBufferSize) {
  addressLength_ = context.GetConfig().Address.GetSockaddr(context.GetConfig().Port, address_);
  socket_ = socket(address_.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP);
  if (socket_ < 0) throw std::runtime_error("Unable to create a connection.");
  SetOptions(socket_);
  SetTimeout(connectTimeout_);
}

RemoteCommunication::~RemoteCommunication() {
  Disconnect();
}

void RemoteCommunication::SetTimeout(std::chrono::milliseconds timeout) {
  constexpr std::chrono::milliseconds Longest{std::numeric_limits<int>::max()};
  const auto counted = std::clamp(timeout, LeastUnacknowledged, Longest).count();
  const MutexLock lock(lifeMutex_);
  // The system counts the time in which a card that is alive takes nothing, too.
  if (socket_ >= 0) SetOption(socket_, IPPROTO_TCP, TCP_USER_TIMEOUT, static_cast<int>(counted));
}

void RemoteCommunication::Connect() {
  if (IsConnected()) throw std::runtime_error("Already connected!");
  const Deadline deadline = DeadlineAfter(connectTimeout_);
  bool started = false;
  {
    const MutexLock lock(lifeMutex_);
    if (!shutDown_ && socket_ >= 0) {
      const auto* address = reinterpret_cast<const sockaddr*>(&address_);
      started = connect(socket_, address, addressLength_) == 0 || errno == EINPROGRESS;
    }
  }
  if (!started || !WaitForConnect(deadline)) {
    Disconnect();
    throw std::runtime_error("Unable to create a connection.");
  }
}

bool RemoteCommunication::WaitForConnect(Deadline deadline) {
  if (!WaitForOutput(socket_, deadline)) return false;
  int error = 0;
  socklen_t length = sizeof error;
  if (getsockopt(socket_, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) return false;
  const MutexLock lock(lifeMutex_);
  if (shutDown_) return false;
  // From here on the reading thread blocks in recv; sends never block, they say so themselves.
  if (fcntl(socket_, F_SETFL, 0) != 0) return false;
  const timeval longest{LongestRead.count(), 0};
  if (setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest) != 0) return false;
  readTurn_.Open(socket_);
  connected_.store(true, std::memory_order_release);
  return true;
}

void RemoteCommunication::Shutdown() {
  connected_.store(false, std::memory_order_release);
  const MutexLock lock(lifeMutex_);
  shutDown_ = true;
  if (socket_ >= 0) shutdown(socket_, SHUT_RDWR);
}

// The turn to send, taken before `deadline` or not at all.
class RemoteCommunication::SendTurn {
 public:
  SendTurn(TimedLock& lock, Deadline deadline) : lock_(lock), taken_(lock.LockUntil(deadline)) {}
  SendTurn(TimedLock& lock, Deadline deadline, ReadTurn::OfCaller& turn)
      : lock_(lock), taken_(lock.TryLock()) {
    if (taken_) return;
    turn.Return();
    taken_ = lock.LockUntil(deadline);
  }
  ~SendTurn() {
    if (taken_) lock_.Unlock();
  }
  SendTurn(const SendTurn&) = delete;
  SendTurn& operator=(const SendTurn&) = delete;

  bool IsTaken() const { return taken_; }

 private:
  TimedLock& lock_;
  bool taken_;
};

void RemoteCommunication::Disconnect() {
  Shutdown();  // whoever sends stops, so the turn comes soon
  const SendTurn turn(sendLock_, Deadline::max());
  const MutexLock lock(lifeMutex_);
  readTurn_.Close();
  if (socket_ >= 0) close(socket_);
  socket_ = -1;
}

void RemoteCommunication::Write(const FramePieces& frame, Deadline deadline, ReadTurn::OfCaller& readTurn) {
  const SendTurn turn(sendLock_, deadline, readTurn);
  UnsentPieces unsent(frame);
  bool sound = turn.IsTaken() && IsConnected();
  while (sound && !unsent.IsEmpty()) {
    const ssize_t sent = unsent.Send(socket_);
    if (sent >= 0) {
      unsent.Drop(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      readTurn.Return();
      sound = WaitForOutput(socket_, deadline) && IsConnected();
    } else {
      sound = errno == EINTR;
    }
  }
  if (sound) return;
  if (!unsent.IsEmpty() && unsent.IsBegun()) Shutdown();
  throw std::runtime_error("Socket error, unable to send!");
}

int RemoteCommunication::Receive(std::size_t count) {
  while (buffer_.Size() < count) {
    const auto room = buffer_.Room(count);
    const ssize_t received = recv(socket_, room.data(), room.size(), 0);
    if (received < 0 && errno == EINTR) continue;
    if (!IsConnected()) return -1;
    if (received < 0 && errno == EAGAIN) continue;  // nothing has come for long
    if (received <= 0) return static_cast<int>(received);
    buffer_.Add(static_cast<std::size_t>(received));
    if (buffer_.Data()[0] != Packet::PacketStart) throw std::runtime_error("Invalid packet!");
  }
  return 1;
}

int RemoteCommunication::Read() {
  buffer_.Drop(frameSize_);
  frameSize_ = 0;
  if (!IsConnected()) return -1;
  // What is in the buffer already begins a frame, or is none.
  if (buffer_.Size() > 0 && buffer_.Data()[0] != Packet::PacketStart)
    throw std::runtime_error("Invalid packet!");
  if (const int result = Receive(Packet::FullHeaderLen); result <= 0) return result;
  const std::size_t size = WantedSize();
  if (size > MostFrameBytes) return -1;
  if (const int result = Receive(size); result <= 0) return result;
  frameSize_ = size;
  return static_cast<int>(size);
}

std::size_t RemoteCommunication::WantedSize() const {
  if (buffer_.Size() < Packet::FullHeaderLen) return Packet::FullHeaderLen;
  return Packet::FullHeaderLen + std::size_t{Packet::BodyLength(buffer_.Data())};
}

int RemoteCommunication::Peek(Deadline deadline) {
  buffer_.Drop(std::exchange(frameSize_, 0));
  for (;;) {
    const bool isFrame = buffer_.Size() == 0 || buffer_.Data()[0] == Packet::PacketStart;
    const std::size_t wanted = WantedSize();
    if (!isFrame || wanted > MostFrameBytes || !IsConnected()) return -1;
    if (buffer_.Size() >= wanted) return static_cast<int>(wanted);
    const bool mayBlock = deadline - std::chrono::steady_clock::now() > LongerThanARead;
    if (!mayBlock) {
      pollfd entry{socket_, POLLIN, 0};
      const int ready = poll(&entry, 1, MillisecondsUntil(deadline));
      if (ready == 0) return 0;
      if (ready < 0) {
        if (errno == EINTR) continue;
        return -1;
      }
    }
    const auto room = buffer_.Room(wanted);
    const ssize_t received = recv(socket_, room.data(), room.size(), mayBlock ? 0 : MSG_DONTWAIT);
    if (received > 0) {
      buffer_.Add(static_cast<std::size_t>(received));
    } else if (received == 0 || (errno != EINTR && errno != EAGAIN)) {
      return -1;
    }
  }
}

bool RemoteCommunication::IsDataPending() {
  if (readTurn_.IsHandedOver()) return true;
  const MutexLock lock(lifeMutex_);
  int bytes = 0;
  return socket_ >= 0 && ioctl(socket_, FIONREAD, &bytes) == 0 && bytes > 0;
}

}  // namespace VELTRO::KELVO::ClientLib
