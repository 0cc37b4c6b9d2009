// One connection's transport: the socket, the receive thread and the inbox.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <thread>

#include "common/Mutex.h"
#include "rpc/CallbackWait.h"
#include "rpc/FrameTap.h"
#include "rpc/Inbox.h"
#include "rpc/RemoteCommunication.h"
#include "rpc/RpcEvents.h"
#include "rpc/RpcLogger.h"
#include "rpc/Transport.h"

namespace VELTRO::KELVO::ClientLib {

// Any thread may call anything but Run at any time.
class ClientTransport : private Context, public Transport {
 public:
  // Throws std::runtime_error "Instance must not be null!", or what RemoteCommunication throws.
  explicit ClientTransport(const Context* context);
  ~ClientTransport() override { StopRunning(); }
  ClientTransport(const ClientTransport&) = delete;
  ClientTransport& operator=(const ClientTransport&) = delete;

  bool Run() override;
  // Ends the connection: running calls fail with "ConnectionAborted", and the configuration's DisconnectedCallback is
  // called, before the receive thread is joined. Waits for a notification callback that is running, and for nothing
  // else.
  void StopRunning() override;
  // For the end of the process: like StopRunning, but a receive thread that a callback keeps, or whose
  // callback is ending the process, is left behind. Returns whether nothing is left that could touch this
  // object.
  bool Abandon();

  bool IsConnected() const override {
    return running_.load(std::memory_order_acquire) && communication_.IsConnected();
  }
  void checkActive() const override;

  InputPacket Exchange(std::uint32_t requestId, const FramePieces& frame, std::chrono::milliseconds timeout,
                       const std::shared_ptr<const void>& owner = nullptr) override;
  InputPacket Read(std::uint32_t requestId, std::chrono::milliseconds timeout) override;

  // The exception for a remote error as received; a nil object gives one with empty members.
  static RpcRemoteException getException(const msgpack::object_handle& object);

  RemoteCommunication& GetCommunication() { return communication_; }
  RpcLogger& GetLogger() { return logger_; }

  // Who sees every frame from now on, instead of who did; null: nobody.
  void SetTap(std::shared_ptr<FrameTap> tap);

  // To be held while waiting for what comes over this connection. Throws as CallbackWait does.
  CallbackWait BeginWait() const { return CallbackWait(this); }

 private:
  const RpcClientConfiguration& GetConfig() const override { return context_.GetConfig(); }
  void receiver();
  // Reads for everybody, until the ticket's answer has come, with the turn if it can be had.
  void ReceiveAsCaller(const Inbox::Ticket& ticket, ReadTurn::OfCaller& turn, Deadline deadline);
  // Shuts the connection down and releases whoever waits for something from it.
  void EndWaits();
  void EndReceiving();
  void Receive(int frameSize);
  void ReceiveNotification(PacketType type, std::span<const char> body);
  void Notify(const RpcClientEvent& event);
  void Tap(FrameWay way, const FramePieces& frame, const std::shared_ptr<const void>& owner = nullptr);
  void TapEnd(FrameWay way);
  void SetFinished(bool finished);

  const Context& context_;
  std::atomic<bool> running_{false};
  RpcLogger logger_;
  Inbox inbox_;
  RemoteCommunication communication_;
  std::atomic<bool> tapped_{false};
  Mutex tapMutex_;
  std::shared_ptr<FrameTap> tap_ KELVO_GUARDED_BY(tapMutex_);
  msgpack::zone zone_;  // of the notification being handled; the receive thread's own
  // In a row, without a notification between them and without another call under way; the receive thread's own.
  std::uint64_t loneAnswers_ = 0;

  Mutex threadMutex_;
  bool stopped_ KELVO_GUARDED_BY(threadMutex_) = false;
  std::thread thread_ KELVO_GUARDED_BY(threadMutex_);

  std::atomic<bool> calling_{false};  // a callback is running
  std::atomic<bool> endTold_{false};  // to DisconnectedCallback

  Mutex finishedMutex_;
  CondVar finishedChanged_;
  // False from the beginning of a connect until its receive thread has nothing left to do.
  bool finished_ KELVO_GUARDED_BY(finishedMutex_) = true;
};

}  // namespace VELTRO::KELVO::ClientLib
