#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <msgpack.hpp>
#include <mutex>
#include <semaphore>
#include <string_view>
#include <thread>
#include <unordered_map>

#include "Wire.h"

namespace VELTRO::KELVO::Bench {

// One blocking socket to the raw server on loopback, TCP_NODELAY set.
class RawSocket {
 public:
  explicit RawSocket(std::uint16_t port);
  ~RawSocket();
  RawSocket(const RawSocket&) = delete;
  RawSocket& operator=(const RawSocket&) = delete;

  int Fd() const { return fd_; }
  void Send(const StackFrame& frame) { SendAll(fd_, frame.Data(), frame.Size()); }
  // Lets a receive loop in another thread end.
  void Shutdown();

 private:
  int fd_ = -1;
};

struct RawAnswer {
  std::uint32_t id = 0;
  msgpack::object_handle result;
};

RawAnswer ParseAnswer(const Frame& frame);

// No receive thread and no locks: the floor that the kernel and msgpack set.
class PingPongClient {
 public:
  explicit PingPongClient(std::uint16_t port);

  msgpack::object_handle Call(std::string_view method, int argument);
  // Blocks in the same thread for the next frame, which must be a notification.
  Frame NextNotification();

 private:
  RawSocket socket_;
  FrameReader reader_;
  std::uint32_t lastId_ = 0;
};

// One mutex and one condition variable for all callers; every answer wakes whoever waits.
class SharedWaitClient {
 public:
  explicit SharedWaitClient(std::uint16_t port);
  ~SharedWaitClient();

  msgpack::object_handle Call(std::string_view method, int argument);

 private:
  void Receive();

  RawSocket socket_;
  std::mutex sendMutex_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::unordered_map<std::uint32_t, msgpack::object_handle> answers_;
  bool isClosed_ = false;
  std::atomic<std::uint32_t> lastId_{0};
  std::thread receiver_;
};

// Hands each answer to its caller by a semaphore, which is a futex: one atomic exchange when nobody sleeps.
class SemaphoreClient {
 public:
  explicit SemaphoreClient(std::uint16_t port);
  ~SemaphoreClient();

  msgpack::object_handle Call(std::string_view method, int argument);

 private:
  struct Waiter {
    std::binary_semaphore answered{0};
    bool isFailed = false;
    msgpack::object_handle result;
  };

  void Receive();

  RawSocket socket_;
  std::mutex sendMutex_;
  std::mutex pendingMutex_;
  std::unordered_map<std::uint32_t, std::shared_ptr<Waiter>> pending_;
  bool isClosed_ = false;
  std::atomic<std::uint32_t> lastId_{0};
  std::thread receiver_;
};

// Each caller has a place of its own to wait at, and an answer wakes nobody else.
class SlotWaitClient {
 public:
  explicit SlotWaitClient(std::uint16_t port);
  ~SlotWaitClient();

  msgpack::object_handle Call(std::string_view method, int argument);

 private:
  struct WaitSlot {
    std::mutex mutex;
    std::condition_variable answered;
    bool isReady = false;
    bool isFailed = false;
    msgpack::object_handle result;
  };

  void Receive();
  void FailPending();

  RawSocket socket_;
  std::mutex sendMutex_;
  std::mutex pendingMutex_;
  std::unordered_map<std::uint32_t, std::shared_ptr<WaitSlot>> pending_;
  bool isClosed_ = false;
  std::atomic<std::uint32_t> lastId_{0};
  std::thread receiver_;
};

}  // namespace VELTRO::KELVO::Bench
