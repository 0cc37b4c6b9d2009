#include "RawClient.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace VELTRO::KELVO::Bench {

namespace {

constexpr std::size_t kReceiveCapacity = std::size_t{64} << 10;

}  // namespace

RawSocket::RawSocket(std::uint16_t port) : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "socket");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  const int on = 1;
  if (::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)) != 0 ||
      ::connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    const int code = errno;
    ::close(fd_);
    throw std::system_error(code, std::generic_category(), "connect");
  }
}

RawSocket::~RawSocket() {
  ::close(fd_);
}

void RawSocket::Shutdown() {
  ::shutdown(fd_, SHUT_RDWR);
}

RawAnswer ParseAnswer(const Frame& frame) {
  if (frame.type != FrameType::Response) throw std::runtime_error("the server answered with an error");
  RawAnswer answer;
  std::size_t offset = 0;
  answer.id = msgpack::unpack(frame.body, frame.size, offset).get().as<std::uint32_t>();
  answer.result = msgpack::unpack(frame.body, frame.size, offset);
  return answer;
}

PingPongClient::PingPongClient(std::uint16_t port) : socket_(port), reader_(socket_.Fd(), kReceiveCapacity) {}

msgpack::object_handle PingPongClient::Call(std::string_view method, int argument) {
  const std::uint32_t id = ++lastId_;
  socket_.Send(StackFrame(id, method, argument));
  Frame frame{};
  if (!reader_.Next(frame)) throw std::runtime_error("connection closed");
  RawAnswer answer = ParseAnswer(frame);
  if (answer.id != id) throw std::runtime_error("answer to another request");
  return std::move(answer.result);
}

Frame PingPongClient::NextNotification() {
  Frame frame{};
  if (!reader_.Next(frame)) throw std::runtime_error("connection closed");
  if (frame.type != FrameType::Notification) throw std::runtime_error("notification expected");
  return frame;
}

SharedWaitClient::SharedWaitClient(std::uint16_t port) : socket_(port), receiver_([this] { Receive(); }) {}

SharedWaitClient::~SharedWaitClient() {
  socket_.Shutdown();
  receiver_.join();
}

msgpack::object_handle SharedWaitClient::Call(std::string_view method, int argument) {
  const std::uint32_t id = lastId_.fetch_add(1) + 1;
  const StackFrame request(id, method, argument);
  {
    const std::lock_guard lock(sendMutex_);
    socket_.Send(request);
  }
  std::unique_lock lock(mutex_);
  auto found = answers_.end();
  arrived_.wait(lock, [&] {
    found = answers_.find(id);
    return found != answers_.end() || isClosed_;
  });
  if (found == answers_.end()) throw std::runtime_error("connection closed");
  msgpack::object_handle result = std::move(found->second);
  answers_.erase(found);
  return result;
}

void SharedWaitClient::Receive() {
  try {
    FrameReader reader(socket_.Fd(), kReceiveCapacity);
    Frame frame{};
    while (reader.Next(frame)) {
      RawAnswer answer = ParseAnswer(frame);
      {
        const std::lock_guard lock(mutex_);
        answers_.emplace(answer.id, std::move(answer.result));
      }
      // After the unlock, so that the woken thread does not run into the mutex at once.
      arrived_.notify_all();
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "raw client: %s\n", error.what());
  }
  {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
  }
  arrived_.notify_all();
}

SemaphoreClient::SemaphoreClient(std::uint16_t port) : socket_(port), receiver_([this] { Receive(); }) {}

SemaphoreClient::~SemaphoreClient() {
  socket_.Shutdown();
  receiver_.join();
}

msgpack::object_handle SemaphoreClient::Call(std::string_view method, int argument) {
  // Shared with the receive thread, because that one may still be leaving release() when the caller is gone.
  thread_local const auto waiter = std::make_shared<Waiter>();
  const std::uint32_t id = lastId_.fetch_add(1) + 1;
  const StackFrame request(id, method, argument);
  {
    const std::lock_guard lock(pendingMutex_);
    if (isClosed_) throw std::runtime_error("connection closed");
    pending_.emplace(id, waiter);
  }
  {
    const std::lock_guard lock(sendMutex_);
    socket_.Send(request);
  }
  waiter->answered.acquire();
  if (waiter->isFailed) throw std::runtime_error("connection closed");
  return std::move(waiter->result);
}

void SemaphoreClient::Receive() {
  try {
    FrameReader reader(socket_.Fd(), kReceiveCapacity);
    Frame frame{};
    while (reader.Next(frame)) {
      RawAnswer answer = ParseAnswer(frame);
      std::shared_ptr<Waiter> waiter;
      {
        const std::lock_guard lock(pendingMutex_);
        const auto found = pending_.find(answer.id);
        if (found == pending_.end()) throw std::runtime_error("answer to no request");
        waiter = std::move(found->second);
        pending_.erase(found);
      }
      waiter->result = std::move(answer.result);
      waiter->answered.release();
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "raw client: %s\n", error.what());
  }
  const std::lock_guard lock(pendingMutex_);
  isClosed_ = true;
  for (const auto& [id, waiter] : pending_) {
    waiter->isFailed = true;
    waiter->answered.release();
  }
  pending_.clear();
}

SlotWaitClient::SlotWaitClient(std::uint16_t port) : socket_(port), receiver_([this] { Receive(); }) {}

SlotWaitClient::~SlotWaitClient() {
  socket_.Shutdown();
  receiver_.join();
}

msgpack::object_handle SlotWaitClient::Call(std::string_view method, int argument) {
  // Shared with the receive thread, because that one still notifies when the caller may already be gone.
  thread_local const auto slot = std::make_shared<WaitSlot>();
  slot->isReady = false;
  slot->isFailed = false;
  const std::uint32_t id = lastId_.fetch_add(1) + 1;
  const StackFrame request(id, method, argument);
  {
    const std::lock_guard lock(pendingMutex_);
    if (isClosed_) throw std::runtime_error("connection closed");
    pending_.emplace(id, slot);
  }
  {
    const std::lock_guard lock(sendMutex_);
    socket_.Send(request);
  }
  std::unique_lock lock(slot->mutex);
  slot->answered.wait(lock, [] { return slot->isReady; });
  if (slot->isFailed) throw std::runtime_error("connection closed");
  return std::move(slot->result);
}

void SlotWaitClient::Receive() {
  try {
    FrameReader reader(socket_.Fd(), kReceiveCapacity);
    Frame frame{};
    while (reader.Next(frame)) {
      RawAnswer answer = ParseAnswer(frame);
      std::shared_ptr<WaitSlot> slot;
      {
        const std::lock_guard lock(pendingMutex_);
        const auto found = pending_.find(answer.id);
        if (found == pending_.end()) throw std::runtime_error("answer to no request");
        slot = std::move(found->second);
        pending_.erase(found);
      }
      {
        const std::lock_guard lock(slot->mutex);
        slot->result = std::move(answer.result);
        slot->isReady = true;
      }
      slot->answered.notify_one();
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "raw client: %s\n", error.what());
  }
  FailPending();
}

void SlotWaitClient::FailPending() {
  const std::lock_guard lock(pendingMutex_);
  isClosed_ = true;
  for (const auto& [id, slot] : pending_) {
    const std::lock_guard slotLock(slot->mutex);
    slot->isFailed = true;
    slot->isReady = true;
    slot->answered.notify_one();
  }
  pending_.clear();
}

}  // namespace VELTRO::KELVO::Bench
