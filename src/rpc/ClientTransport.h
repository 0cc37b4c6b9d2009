// One connection's transport: the socket, the receive thread and the inbox.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <thread>

#include "common/Mutex.h"
#include "rpc/Inbox.h"
#include "rpc/RemoteCommunication.h"
#include "rpc/RpcEvents.h"
#include "rpc/RpcLogger.h"

namespace VELTRO::KELVO::ClientLib {

// Constructed, run once, stopped once. Any thread may call anything but Run at any time.
class ClientTransport {
 public:
  // Throws std::runtime_error "Instance must not be null!", or what RemoteCommunication throws.
  explicit ClientTransport(const Context* context);
  ~ClientTransport() { StopRunning(); }
  ClientTransport(const ClientTransport&) = delete;
  ClientTransport& operator=(const ClientTransport&) = delete;

  // Connects and starts the receive thread; returns whether the connection is up.
  bool Run();
  // Ends the connection: running calls fail with "ConnectionAborted", the receive thread is joined. Waits for
  // a notification callback that is running, and for nothing else.
  void StopRunning();
  // For the end of the process: like StopRunning, but a receive thread that a callback keeps, or whose
  // callback is ending the process, is left behind. Returns whether nothing is left that could touch this
  // object.
  bool Abandon();

  bool IsConnected() const {
    return running_.load(std::memory_order_acquire) && communication_.IsConnected();
  }
  // Throws std::runtime_error "ConnectionAborted" when the transport is not running.
  void checkActive() const;

  // Sends the request's frame and waits for its answer.
  InputPacket Exchange(std::uint32_t requestId, const FramePieces& frame, std::chrono::milliseconds timeout);
  // Waits for the answer to a request that was sent. Throws std::runtime_error "ConnectionAborted" or
  // "Response was not received in the given timespan.".
  InputPacket Read(std::uint32_t requestId, std::chrono::milliseconds timeout);

  // The exception for a remote error as received; a nil object gives one with empty members.
  static RpcRemoteException getException(const msgpack::object_handle& object);

  RemoteCommunication& GetCommunication() { return communication_; }
  RpcLogger& GetLogger() { return logger_; }

  // Whether the calling thread is this transport's receive thread: it must not wait for an answer.
  bool IsReceiveThread() const;
  // Whether the calling thread is the receive thread of any transport: it must not join one.
  static bool IsAnyReceiveThread();

 private:
  void receiver();
  void Receive(int frameSize);
  void ReceiveNotification(PacketType type, std::span<const char> body);
  void Notify(const RpcClientEvent& event);
  void SetFinished(bool finished);

  const Context& context_;
  std::atomic<bool> running_{false};
  RpcLogger logger_;
  Inbox inbox_;
  RemoteCommunication communication_;
  msgpack::zone zone_;  // of the notification being handled; the receive thread's own

  Mutex threadMutex_;
  bool stopped_ KELVO_GUARDED_BY(threadMutex_) = false;
  std::thread thread_ KELVO_GUARDED_BY(threadMutex_);

  std::atomic<bool> calling_{false};  // a callback is running

  Mutex finishedMutex_;
  CondVar finishedChanged_;
  // Nobody connects, no receive thread runs, or it is just leaving.
  bool finished_ KELVO_GUARDED_BY(finishedMutex_) = true;
};

}  // namespace VELTRO::KELVO::ClientLib
