// The socket of one connection: connects, writes whole frames, reads whole frames.
#pragma once

#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <span>

#include "common/Deadline.h"
#include "common/Futex.h"
#include "common/Mutex.h"
#include "rpc/Context.h"
#include "rpc/Packet.h"
#include "rpc/ReadTurn.h"
#include "rpc/ReceiveBuffer.h"

namespace VELTRO::KELVO::ClientLib {

// Who has the turn reads; any thread may write, shut down and disconnect.
class RemoteCommunication {
 public:
  // Creates the receive buffer and the socket. Throws std::runtime_error "\"GetSockaddr\" failed because
  // there was no IPv4 or IPv6 address given." or "Unable to create a connection.".
  explicit RemoteCommunication(const Context& context);
  ~RemoteCommunication();
  RemoteCommunication(const RemoteCommunication&) = delete;
  RemoteCommunication& operator=(const RemoteCommunication&) = delete;

  // Connects within the configured time-out. Throws std::runtime_error "Already connected!" or, with the
  // socket closed, "Unable to create a connection.".
  void Connect();
  // Ends the connection without closing the descriptor, so that it stays ours while another thread may be
  // using it: a blocked Read, Write or Connect returns. May be called in any state.
  void Shutdown();
  // Shuts down and closes the descriptor. Not while another thread may be reading.
  void Disconnect();
  bool IsConnected() const { return connected_.load(std::memory_order_acquire); }

  // How long the card may leave what was sent unacknowledged before it is taken for dead: the time-out of calls, so
  // that one which is busy is not, and never less than half a minute. At first the configured time-out counts.
  void SetTimeout(std::chrono::milliseconds timeout);

  // Sends a whole frame before `deadline`. Throws std::runtime_error "Socket error, unable to send!"; a frame of
  // which a part is gone by then has broken the stream and ends the connection. A turn to read that the caller has is
  // given back before anything is waited for.
  void Write(const FramePieces& frame, Deadline deadline, ReadTurn::OfCaller& readTurn);

  ReadTurn& GetReadTurn() { return readTurn_; }

  // For the receive thread. Reads the next whole frame and returns its size; it stands at Frame() until the next Read. As much as has
  // arrived is received at once, so most frames cost no system call. Returns 0 when the peer has closed and
  // -1 on an error or after Shutdown. Throws std::runtime_error "Invalid packet!" when what arrives is no
  // frame.
  int Read();
  const unsigned char* Frame() const { return buffer_.Data(); }
  // Whether nothing has been received behind that frame.
  bool IsLastFrame() const { return buffer_.Size() == frameSize_; }

  // For a caller that has the turn: waits for the next whole frame and returns its size; it stands at Frame(), and is
  // left to Read unless Accept is called. Returns 0 when it does not come before `deadline`, and -1 when Read has to see
  // what has come.
  int Peek(Deadline deadline);
  void Accept(int frameSize) { frameSize_ = static_cast<std::size_t>(frameSize); }

  // Whether received data waits to be read.
  bool IsDataPending();

 private:
  bool WaitForConnect(Deadline deadline);
  // Receives until `count` bytes are there: a number above 0, or what Read returns instead.
  int Receive(std::size_t count);
  // The size of the frame that the buffer begins with, or as much of its header as has to come first.
  std::size_t WantedSize() const;

  sockaddr_storage address_{};
  socklen_t addressLength_ = 0;
  const std::chrono::milliseconds connectTimeout_;
  std::atomic<bool> connected_{false};
  ReceiveBuffer buffer_;
  std::size_t frameSize_ = 0;  // of the frame that is read, and stays until the next is wanted
  ReadTurn readTurn_;          // to use the buffer and what is about it

  // One frame at a time: who sends has the turn, also while it waits for room in the socket.
  class SendTurn;
  TimedLock sendLock_;

  // Guards the life of the descriptor, and is never held while anything is waited for. The number itself changes
  // with the turn to send and under this mutex, so either is enough to use it; and whoever has the turn to read may use
  // it, until the receive thread disconnects with that turn.
  Mutex lifeMutex_;
  bool shutDown_ KELVO_GUARDED_BY(lifeMutex_) = false;
  int socket_ = -1;
};

}  // namespace VELTRO::KELVO::ClientLib
