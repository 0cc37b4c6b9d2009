// One client's connection.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>

#include "base/MemoryBudget.h"
#include "base/Wake.h"
#include "base/WorkMemory.h"
#include "card/CardClient.h"
#include "common/Mutex.h"
#include "faults/Faults.h"
#include "rpc/Packet.h"
#include "rpc/ReceiveBuffer.h"
#include "server/HeldFrames.h"
#include "server/OutputQueue.h"
#include "server/Socket.h"

namespace VELTRO::KELVO::VirtualCard {

// What all sessions share beyond what each has of its own, so that together they stay within bounds.
struct SessionMemory {
  explicit SessionMemory(std::size_t mostOutput) : Output(mostOutput) {}

  MemoryBudget Requests{64 << 20};  // that have not come as a whole
  WorkMemories Work;                // that are being carried out
  MemoryBudget Output;              // that clients have not read
};

struct SessionSettings {
  std::size_t MostNotificationBytes = 16 << 20;
  bool Verbose = false;
};

struct SessionPeer {
  std::string Place;
  std::uint64_t Number = 1;  // of the connection, counted since the card's start
};

// Requests are read and carried out by the session's own thread, one after another. Frames are sent by
// whoever has them, as far as the socket takes them; the server's thread sends the rest when it takes more, and what a
// fault has kept back when its time has come.
// Nobody waits for a client but its own thread.
class Session : private AnswerTaker {
 public:
  // A longer body is refused. Lists come in pieces of less than 2 MiB; an object of MessagePack of one byte
  // takes 24 when it is unpacked, so this is also what bounds a hostile request.
  static constexpr std::size_t MostBodyBytes = 16 << 20;
  // What is always there for a session's request, and for what its client has not read; more is of all sessions'.
  static constexpr std::size_t OwnBytes = 2 << 20;
  // In which a request that takes more must have come.
  static constexpr std::chrono::seconds LargeRequestTime{60};

  // `wake` is signalled when there is something to send later, and when the session has ended.
  Session(Descriptor socket, SessionPeer peer, Card& card, Wake& wake, SessionMemory& memory,
          const SessionSettings& settings);
  // Ends the connection and joins the thread.
  ~Session() override;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Starts the thread: once, when notifications reach the session, or it would miss those of a run that its
  // first request starts. Throws std::system_error.
  void Start();
  // Sends the notification or queues it. A client that leaves too many of them unread is disconnected, also for want of
  // memory.
  void Notify(std::span<const unsigned char> frame) noexcept;
  // Sends what waits, as far as the socket takes it and its time has come.
  void Flush();
  struct Output {
    bool IsThere = false;                         // for the socket to take
    HeldFrame::TimePoint Due = HeldFrame::Never;  // when there is more of it
  };
  Output GetOutput();
  // Ends the connection: the thread ends soon.
  void Shutdown() noexcept;
  // Whether the thread is through; the destructor does not wait then.
  bool IsFinished() const { return finished_.load(std::memory_order_acquire); }
  int GetSocket() const { return socket_.Get(); }

 private:
  void Work();
  // With the longest form of a request id.
  static constexpr std::size_t MostHeadBytes = ClientLib::Packet::FullHeaderLen + 9;

  struct Request {
    std::span<const unsigned char> Frame;
    std::string Refusal;  // not empty: Frame has only the beginning, which is to be answered with this
  };

  void Serve(CardClient& client, Activity::Presence& presence, const Request& request);
  // The next one; nothing when the connection has ended. Throws std::runtime_error when what comes is none.
  std::optional<Request> ReceiveRequest();
  // Takes a request of `size` bytes, header included, that is refused.
  std::optional<Request> ReceiveRefused(std::size_t size, std::string refusal);
  enum class Received { All, Ended, NoMemory };
  // Receives until `count` bytes are there.
  Received Receive(std::size_t count);
  // Receives so many bytes for nobody; false when the connection has ended.
  bool Skip(std::size_t count);
  // Throws std::runtime_error when there are none by then.
  void WaitForBytes(std::chrono::steady_clock::time_point deadline) const;
  // The answer to a request, which a fault may befall; nothing when there is none, or it comes later.
  std::optional<ClientLib::OutputPacket> AnswerTo(CardClient& client, std::span<const unsigned char> frame,
                                                  std::string* log);
  // The fault that befalls the request now; null for none, also when one is to befall its answer.
  std::shared_ptr<const Fault> FaultOfRequest(std::span<const unsigned char> frame);
  // Does what the fault does to a request of so many bytes; returns whether it is carried out then. Throws to end the
  // connection.
  bool Undergo(const Fault& fault, std::size_t bytes) const;
  // False when the connection ends meanwhile.
  bool Pause(std::chrono::microseconds time) const;
  void Send(FrameKind kind, std::span<const unsigned char> frame) noexcept;
  // The fault that befalls what is about to be sent; null for none.
  std::shared_ptr<const Fault> FaultOf(FrameKind kind, std::span<const unsigned char> frame)
      KELVO_REQUIRES(outputMutex_);
  void SendFaulty(const Fault& fault, FrameKind kind, std::span<const unsigned char> frame)
      KELVO_REQUIRES(outputMutex_);
  void Hold(HeldFrame frame) KELVO_REQUIRES(outputMutex_);
  // Sends what need not be held any more.
  void Release() KELVO_REQUIRES(outputMutex_);
  void Transmit(FrameKind kind, std::span<const unsigned char> bytes) noexcept KELVO_REQUIRES(outputMutex_);
  // Closes when more waits than may.
  void CheckBounds() noexcept KELVO_REQUIRES(outputMutex_);
  void TakeAnswer(std::span<const unsigned char> frame) noexcept override { Send(FrameKind::Answer, frame); }
  void GiveUp(std::string_view reason) noexcept override;
  // Keeps the bytes for later; false when there is no room for them.
  bool Keep(FrameKind kind, std::span<const unsigned char> bytes) noexcept KELVO_REQUIRES(outputMutex_);
  // Sends as much as the socket takes and returns how much. A connection that has failed takes everything.
  std::size_t TransmitNow(std::span<const unsigned char> bytes) KELVO_REQUIRES(outputMutex_);
  // A client that asks without reading the answers is not asked for more. False when the connection has ended.
  bool WaitForRoom();
  void Close() noexcept KELVO_REQUIRES(outputMutex_);
  void CloseFor(std::string_view reason) noexcept KELVO_REQUIRES(outputMutex_);

  const Descriptor socket_;
  const std::string peer_;
  const std::uint64_t number_;
  Card& card_;
  Wake& wake_;
  SessionMemory& memory_;
  Faults& faults_;
  const SessionSettings settings_;

  // The thread's own.
  ClientLib::ReceiveBuffer input_;
  MemoryCharge inputCharge_;
  std::array<unsigned char, MostHeadBytes> refused_{};  // the beginning of the latest request that was

  ClientLib::Mutex outputMutex_;
  ClientLib::CondVar outputChanged_;
  OutputQueue output_ KELVO_GUARDED_BY(outputMutex_);
  MemoryCharge outputCharge_ KELVO_GUARDED_BY(outputMutex_);
  HeldFrames held_ KELVO_GUARDED_BY(outputMutex_);
  // Those of answers that are still to come, by the id of their requests.
  std::unordered_map<std::uint32_t, std::shared_ptr<const Fault>> answerFaults_
      KELVO_GUARDED_BY(outputMutex_);
  bool isEnding_ KELVO_GUARDED_BY(outputMutex_) = false;  // with what is being sent
  bool closed_ KELVO_GUARDED_BY(outputMutex_) = false;

  std::atomic<bool> finished_{false};
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
