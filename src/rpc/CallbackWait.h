// Callbacks that wait. A callback keeps its connection from receiving: one that waits for a connection whose callback
// waits, at once or by way of others, for the first would wait until its time-out. Such a wait is refused.
#pragma once

namespace VELTRO::KELVO::ClientLib {

class ClientTransport;

// Makes the calling thread the receive thread of a connection, on which its callbacks run.
class ReceiveThread {
 public:
  explicit ReceiveThread(const ClientTransport* connection) { current_ = connection; }
  ~ReceiveThread() { current_ = nullptr; }
  ReceiveThread(const ReceiveThread&) = delete;
  ReceiveThread& operator=(const ReceiveThread&) = delete;

  // The connection whose receive thread the calling thread is; null for every other thread.
  static const ClientTransport* Current() { return current_; }

 private:
  inline static constinit thread_local const ClientTransport* current_ = nullptr;
};

// As long as it lives, the calling thread may be waiting for what a receive thread does. Only on a receive thread does
// that mean anything.
class [[nodiscard]] CallbackWait {
 public:
  // A wait for nothing.
  CallbackWait() = default;
  // For the receive thread of `awaited`; null: for nobody. Throws std::runtime_error "A callback must not wait for its
  // own connection." or "A callback must not wait for a connection whose callback waits for its own.".
  explicit CallbackWait(const ClientTransport* awaited) {
    if (ReceiveThread::Current() != nullptr && awaited != nullptr) Begin(awaited);
  }
  ~CallbackWait() {
    if (waiting_ != nullptr) End();
  }
  CallbackWait(const CallbackWait&) = delete;
  CallbackWait& operator=(const CallbackWait&) = delete;

 private:
  void Begin(const ClientTransport* awaited);
  void End() noexcept;

  const ClientTransport* waiting_ = nullptr;
};

}  // namespace VELTRO::KELVO::ClientLib
