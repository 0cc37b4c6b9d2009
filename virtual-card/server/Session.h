// One client's connection.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <thread>

#include "card/Card.h"
#include "common/Mutex.h"
#include "rpc/ReceiveBuffer.h"
#include "server/OutputQueue.h"
#include "server/Socket.h"

namespace VELTRO::KELVO::VirtualCard {

struct SessionSettings {
  std::size_t MostNotificationBytes = 16 << 20;
  bool Verbose = false;
};

// Requests are read and carried out by the session's own thread, one after another. Frames are sent by
// whoever has them, as far as the socket takes them; the server's thread sends the rest when it takes more.
// Nobody waits for a client but its own thread.
class Session {
 public:
  // A longer body is refused. Lists come in pieces of less than 2 MiB; an object of MessagePack of one byte
  // takes 24 when it is unpacked, so this is also what bounds a hostile request.
  static constexpr std::size_t MostBodyBytes = 16 << 20;

  // `wake` is signalled when there is something to send later, and when the session has ended.
  Session(Descriptor socket, std::string peer, Card& card, Wake& wake, const SessionSettings& settings);
  // Ends the connection and joins the thread.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Starts the thread: once, when notifications reach the session, or it would miss those of a run that its
  // first request starts. Throws std::system_error.
  void Start();
  // Sends the notification or queues it. A client that leaves too many of them unread is disconnected.
  void Notify(std::span<const unsigned char> frame);
  // Sends what waits, as far as the socket takes it.
  void Flush();
  bool HasOutput();
  // Ends the connection: the thread ends soon.
  void Shutdown();
  // Whether the thread is through; the destructor does not wait then.
  bool IsFinished() const { return finished_.load(std::memory_order_acquire); }
  int GetSocket() const { return socket_.Get(); }

 private:
  void Work();
  // Receives until `count` bytes are there; false when the connection has ended.
  bool Receive(std::size_t count);
  bool ReceiveFrame(std::span<const unsigned char>& frame);
  void Send(FrameKind kind, std::span<const unsigned char> frame);
  // Sends as much as the socket takes and returns how much. A connection that has failed takes everything.
  std::size_t TransmitNow(std::span<const unsigned char> bytes) KELVO_REQUIRES(outputMutex_);
  // A client that asks without reading the answers is not asked for more.
  void WaitForRoom();
  void Close() KELVO_REQUIRES(outputMutex_);

  const Descriptor socket_;
  const std::string peer_;
  Card& card_;
  Wake& wake_;
  const SessionSettings settings_;
  ClientLib::ReceiveBuffer input_;  // the thread's own

  ClientLib::Mutex outputMutex_;
  ClientLib::CondVar outputChanged_;
  OutputQueue output_ KELVO_GUARDED_BY(outputMutex_);
  bool closed_ KELVO_GUARDED_BY(outputMutex_) = false;

  std::atomic<bool> finished_{false};
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
