#include "rpc/ClientTransport.h"

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <utility>

#include "common/PromptOutput.h"
#include "rpc/Body.h"
#include "rpc/RpcClientConfiguration.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// How long the end of the process waits for a receive thread that is just leaving its loop.
constexpr std::chrono::milliseconds AbandonTimeout{2000};
constexpr std::chrono::milliseconds AbandonLook{10};

// Stepping back makes the calls of a lone thread faster, those of several and notifications slower, and takes a
// descriptor. So many answers without a notification between them, each the only one awaited, say that the calls of one
// thread are what comes: more than a connect needs.
constexpr std::uint64_t AnswersThatShowALoneCaller = 8;

// On standard output. A blocked one costs the text, and a long text its end.
void SayWhatEndedReceiving(const char* reason) noexcept {
  char line[1024];
  const int length =
      std::snprintf(line, sizeof line, "Exception occurred when trying to receive: %.900s\n", reason);
  if (length > 0) WriteAtOnce(STDOUT_FILENO, {line, static_cast<std::size_t>(length)});
}

}  // namespace

ClientTransport::ClientTransport(const Context* context)
    : context_(context != nullptr ? *context : throw std::runtime_error("Instance must not be null!")),
      communication_(*this) {}

void ClientTransport::checkActive() const {
  if (!running_.load(std::memory_order_acquire)) throw std::runtime_error("ConnectionAborted");
}

bool ClientTransport::Run() {
  {
    const MutexLock lock(threadMutex_);
    if (stopped_) return false;
    SetFinished(false);
  }
  try {
    communication_.Connect();
    const MutexLock lock(threadMutex_);
    if (stopped_) throw std::runtime_error("ConnectionAborted");
    inbox_.Open();
    running_.store(true, std::memory_order_release);
    thread_ = std::thread([this] { receiver(); });
    return true;
  } catch (const std::exception& error) {
    running_.store(false, std::memory_order_release);
    communication_.Disconnect();
    SetFinished(true);
    const auto& configuration = GetConfig();
    // Deliberately nothing between the port and what follows it.
    logger_.Write(("Unable to connect to " + configuration.Address.ToString() + ":" +
                   std::to_string(configuration.Port) + "Exception: " + error.what())
                      .c_str());
    return false;
  }
}

void ClientTransport::EndWaits() {
  running_.store(false, std::memory_order_release);
  communication_.Shutdown();
  inbox_.Close();
  const auto& disconnected = GetConfig().DisconnectedCallback;
  if (disconnected && !endTold_.exchange(true)) disconnected();
}

void ClientTransport::StopRunning() {
  if (running_.load(std::memory_order_acquire)) TapEnd(FrameWay::ToCard);
  EndWaits();
  std::thread thread;
  {
    const MutexLock lock(threadMutex_);
    stopped_ = true;
    thread = std::move(thread_);
  }
  if (thread.joinable()) {
    thread.join();
  } else {
    // Another thread is joining, or connecting, or no thread was started: return when nobody uses the socket.
    MutexLock lock(finishedMutex_);
    while (!finished_) finishedChanged_.Wait(lock);
  }
  communication_.Disconnect();
}

void ClientTransport::SetFinished(bool finished) {
  const MutexLock lock(finishedMutex_);
  finished_ = finished;
  finishedChanged_.NotifyAll();
}

bool ClientTransport::Abandon() {
  EndWaits();
  const MutexLock lock(threadMutex_);
  stopped_ = true;
  if (!thread_.joinable()) return true;
  const Deadline deadline = DeadlineAfter(AbandonTimeout);
  {
    MutexLock finishedLock(finishedMutex_);
    while (!finished_ && !calling_ && std::chrono::steady_clock::now() < deadline) {
      finishedChanged_.WaitUntil(finishedLock, DeadlineAfter(AbandonLook));
    }
    if (!finished_) {
      thread_.detach();
      return false;
    }
  }
  thread_.join();
  return true;
}

InputPacket ClientTransport::Exchange(std::uint32_t requestId, const FramePieces& frame,
                                      std::chrono::milliseconds timeout,
                                      const std::shared_ptr<const void>& owner) {
  checkActive();
  const Deadline deadline = DeadlineAfter(timeout);  // for sending and waiting together
  Inbox::Ticket ticket(inbox_, requestId, false);
  {
    ReadTurn::OfCaller turn(communication_.GetReadTurn());
    Tap(FrameWay::ToCard, frame, owner);
    if (timeout.count() > 0) turn.TryTake();
    communication_.Write(frame, deadline, turn);
    if (timeout.count() > 0) ReceiveAsCaller(ticket, turn, deadline);
  }
  return ticket.Wait(deadline);
}

void ClientTransport::ReceiveAsCaller(const Inbox::Ticket& ticket, ReadTurn::OfCaller& turn,
                                      Deadline deadline) {
  turn.TryTake();
  while (turn.IsTaken() && !(ticket.IsSettled() && communication_.IsLastFrame())) {
    try {
      const int frameSize = communication_.Peek(ticket.IsSettled() ? Deadline() : deadline);
      if (frameSize == 0) return;
      // Notifications are the receive thread's, and so is the end of the connection.
      if (frameSize < 0 || IsNotification(static_cast<PacketType>(communication_.Frame()[1]))) {
        return turn.HandOver();
      }
      const std::span frame(communication_.Frame(), static_cast<std::size_t>(frameSize));
      Inbox::Arrival answer(frame);
      Tap(FrameWay::FromCard, {frame});
      inbox_.Deliver(std::move(answer));
      communication_.Accept(frameSize);
    } catch (const std::exception&) {
      turn.HandOver();  // it fails there, too, and ends the connection
    }
  }
}

InputPacket ClientTransport::Read(std::uint32_t requestId, std::chrono::milliseconds timeout) {
  checkActive();
  Inbox::Ticket ticket(inbox_, requestId, true);
  return ticket.Wait(DeadlineAfter(timeout));
}

RpcRemoteException ClientTransport::getException(const msgpack::object_handle& object) {
  return RpcRemoteException::FromObject(object.get());
}

void ClientTransport::SetTap(std::shared_ptr<FrameTap> tap) {
  {
    const MutexLock lock(tapMutex_);
    tapped_.store(tap != nullptr, std::memory_order_relaxed);
    tap_.swap(tap);
  }
  // What ends with the former one ends here, and keeps no frame waiting.
}

void ClientTransport::Tap(FrameWay way, const FramePieces& frame, const std::shared_ptr<const void>& owner) {
  if (!tapped_.load(std::memory_order_relaxed)) return;
  const MutexLock lock(tapMutex_);
  if (tap_) tap_->Take(way, frame, owner);
}

void ClientTransport::TapEnd(FrameWay way) {
  if (!tapped_.load(std::memory_order_relaxed)) return;
  const MutexLock lock(tapMutex_);
  if (tap_) tap_->TakeEnd(way);
}

void ClientTransport::receiver() {
  const ReceiveThread mark(this);
  try {
    while (running_.load(std::memory_order_acquire)) {
      if (loneAnswers_ >= AnswersThatShowALoneCaller && communication_.IsLastFrame() && !inbox_.IsAwaited()) {
        communication_.GetReadTurn().StepBack();
      }
      const int frameSize = communication_.Read();
      if (frameSize < 1) break;
      Receive(frameSize);
    }
    EndReceiving();
  } catch (const std::exception& error) {
    EndReceiving();
    SayWhatEndedReceiving(error.what());
  } catch (...) {
    EndReceiving();
    SayWhatEndedReceiving("Unexpected error!");
  }
}

void ClientTransport::EndReceiving() {
  if (running_.load(std::memory_order_acquire)) TapEnd(FrameWay::FromCard);
  EndWaits();
  communication_.Disconnect();
  SetFinished(true);
}

void ClientTransport::Receive(int frameSize) {
  const std::span frame(communication_.Frame(), static_cast<std::size_t>(frameSize));
  const auto type = static_cast<PacketType>(frame[1]);
  Tap(FrameWay::FromCard, {frame});
  if (IsNotification(type)) {
    // Handled where it stands in the receive buffer: nobody else is going to read it.
    loneAnswers_ = 0;
    const auto body = frame.subspan(Packet::FullHeaderLen);
    ReceiveNotification(type, {reinterpret_cast<const char*>(body.data()), body.size()});
  } else {
    ++loneAnswers_;
    if (inbox_.Deliver(Inbox::Arrival(frame))) loneAnswers_ = 0;
  }
}

void ClientTransport::ReceiveNotification(PacketType type, std::span<const char> body) {
  zone_.clear();
  RpcClientEvent event;
  const msgpack::object object = Body::Unpack(body, zone_, IsError(type) ? Body::AnyDepth : Body::UsualDepth);
  if (object.type != msgpack::type::ARRAY) {
    logger_.Write("Received invalid notification message!");
    return;
  }
  if (IsError(type)) {
    event.RemoteError = RpcRemoteException::FromObject(object);
  } else {
    const auto& elements = object.via.array;
    if (elements.size == 0) throw std::runtime_error("Received message too short.");
    event.EventType = elements.ptr[0].as<std::int32_t>();
    event.Arguments = {elements.ptr + 1, elements.size - 1};
  }
  Notify(event);
}

void ClientTransport::Notify(const RpcClientEvent& event) {
  const auto& callback = GetConfig().NotificationCallback;
  if (!callback) {
    logger_.Write("Received notification but no callback registered.");
    return;
  }
  calling_.store(true, std::memory_order_relaxed);
  try {
    callback(event);
  } catch (...) {
    calling_.store(false, std::memory_order_relaxed);
    throw;
  }
  calling_.store(false, std::memory_order_relaxed);
}

}  // namespace VELTRO::KELVO::ClientLib
