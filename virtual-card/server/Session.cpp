#include "server/Session.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/Log.h"
#include "methods/RequestCost.h"
#include "methods/Requests.h"
#include "rpc/InputPacket.h"
#include "rpc/OutputPacket.h"
#include "rpc/Packet.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::InputPacket;
using ClientLib::MutexLock;
using ClientLib::OutputPacket;
using ClientLib::Packet;
using ClientLib::PacketType;

namespace {

constexpr std::size_t FirstInputBytes = 65536;
constexpr std::size_t MostAnswerBytes = 1 << 20;  // unread, beyond which no further request is read

void CheckHeader(const unsigned char* header) {
  if (header[0] != Packet::PacketStart) throw std::runtime_error("What came begins no frame.");
  if (header[1] != static_cast<unsigned char>(PacketType::Request)) {
    throw std::runtime_error("A frame of type " + std::to_string(header[1]) + " came, which is no request.");
  }
}

constexpr std::string_view NoRoom = " leaves more unread than there is room for: disconnected";

// What it takes of all sessions' memory.
constexpr std::size_t Beyond(std::size_t bytes) {
  return bytes - std::min(bytes, Session::OwnBytes);
}

std::chrono::microseconds PauseFor(std::size_t bytes, double rate) {
  constexpr double Most = 3600;
  const double seconds = std::min(static_cast<double>(bytes) / rate, Most);
  return std::chrono::ceil<std::chrono::microseconds>(std::chrono::duration<double>(seconds));
}

OutputPacket ErrorNotification(const std::string& text) {
  OutputPacket packet = OutputPacket::AllocateErrorNotification();
  ClientLib::RpcRemoteException(text, "").Pack(packet);
  return packet;
}

// Enough of a frame to tell whom to answer.
std::span<const unsigned char> HeadBytes(std::span<const unsigned char> frame) {
  return frame.first(std::min(frame.size(), Packet::FullHeaderLen + 9));
}

std::size_t CostOf(const OutputQueue& output, const HeldFrames& held) {
  return output.GetMemory() + held.GetMemory();
}

}  // namespace

Session::Session(Descriptor socket, SessionPeer peer, Card& card, Wake& wake, SessionMemory& memory,
                 const SessionSettings& settings)
    : socket_(std::move(socket)),
      peer_(std::move(peer.Place)),
      number_(peer.Number),
      card_(card),
      wake_(wake),
      memory_(memory),
      faults_(card.FaultsOnRequest),
      settings_(settings),
      input_(FirstInputBytes),
      inputCharge_(memory.Requests),
      outputCharge_(memory.Output) {}

Session::~Session() {
  Shutdown();
  if (thread_.joinable()) thread_.join();
}

void Session::Start() {
  thread_ = std::thread([this] { Work(); });
}

void Session::Work() {
  if (settings_.Verbose) LogLine({peer_, " connected"});
  try {
    Activity::Presence presence(card_.Doings, peer_);
    CardClient client(card_, memory_.Work, *this);
    while (const auto request = ReceiveRequest()) {
      Serve(client, presence, *request);
      client.Work.Give();
      if (!WaitForRoom()) break;
    }
    if (settings_.Verbose) LogLine({peer_, " disconnected"});
  } catch (const std::exception& error) {
    LogLine({peer_, " disconnected: ", error.what()});
  }
  Shutdown();
  finished_.store(true, std::memory_order_release);
  wake_.Signal();
}

void Session::Serve(CardClient& client, Activity::Presence& presence, const Request& request) {
  const bool isRefused = !request.Refusal.empty();
  const bool isSeen = card_.Doings.IsWatched();
  std::string log = request.Refusal;
  std::optional<OutputPacket> answer =
      isRefused ? Refuse(request.Frame, request.Refusal)
                : AnswerTo(client, request.Frame, settings_.Verbose || isSeen ? &log : nullptr);
  if (!isRefused) input_.Drop(request.Frame.size());
  inputCharge_.Resize(0);
  if (settings_.Verbose) LogLine({peer_, " ", log});
  if (isSeen) presence.AddCall(log);
  if (answer) Send(FrameKind::Answer, answer->Close());
}

std::optional<OutputPacket> Session::AnswerTo(CardClient& client, std::span<const unsigned char> frame,
                                              std::string* log) {
  if (const auto fault = faults_.AreNone() ? nullptr : FaultOfRequest(frame)) {
    const bool isRefused = fault->Action == FaultAction::Error;
    if (isRefused || !Undergo(*fault, frame.size())) {
      if (log != nullptr) *log = "not carried out: " + fault->Text;
      return isRefused ? std::optional(Refuse(HeadBytes(frame), fault->ErrorText)) : std::nullopt;
    }
  }
  client.Work.Take(CostOf(frame));
  return Answer(client, frame, log);
}

std::shared_ptr<const Fault> Session::FaultOfRequest(std::span<const unsigned char> frame) {
  const auto head = HeadOf(frame);
  auto fault = head ? faults_.OfRequest(head->Method, number_) : nullptr;
  if (fault == nullptr) return nullptr;
  if (settings_.Verbose) LogLine({peer_, " ", head->Method, " meets the fault ", fault->Text});
  if (fault->Side == FaultSide::Request) return fault;
  const MutexLock lock(outputMutex_);
  answerFaults_[head->Id] = std::move(fault);
  return nullptr;
}

bool Session::Undergo(const Fault& fault, std::size_t bytes) const {
  switch (fault.Action) {
    case FaultAction::Delay:
      return Pause(fault.Delay);
    case FaultAction::Slow:
      return Pause(PauseFor(bytes, fault.Rate));
    case FaultAction::Drop:
      throw std::runtime_error("A fault was asked for.");
    default:
      return false;
  }
}

bool Session::Pause(std::chrono::microseconds time) const {
  const auto deadline = std::chrono::steady_clock::now() + time;
  pollfd entry{socket_.Get(), 0, 0};  // tells of its end alone
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return true;
    if (poll(&entry, 1, static_cast<int>(left.count())) > 0) return false;
  }
}

std::optional<Session::Request> Session::ReceiveRequest() {
  if (Receive(Packet::FullHeaderLen) != Received::All) return std::nullopt;
  CheckHeader(input_.Data());
  const std::size_t body = Packet::BodyLength(input_.Data());
  const std::size_t size = Packet::FullHeaderLen + body;
  if (body > MostBodyBytes) {
    return ReceiveRefused(size, "The request has " + std::to_string(body) + " bytes; the card takes " +
                                    std::to_string(MostBodyBytes) + " at most.");
  }
  switch (Receive(size)) {
    case Received::All:
      return Request{{input_.Data(), size}, {}};
    case Received::NoMemory:
      return ReceiveRefused(size, "The card has too many large requests to take at once.");
    default:
      return std::nullopt;
  }
}

// Its id tells whom to answer; nothing else of it is kept.
std::optional<Session::Request> Session::ReceiveRefused(std::size_t size, std::string refusal) {
  const std::size_t head = std::min(size, refused_.size());
  if (Receive(head) != Received::All) return std::nullopt;
  std::copy_n(input_.Data(), head, refused_.begin());
  InputPacket::Allocate(refused_.data(), 0,
                        static_cast<int>(head));  // throws when there is none to be answered
  if (!Skip(size)) return std::nullopt;
  return Request{std::span(refused_).first(head), std::move(refusal)};
}

bool Session::Skip(std::size_t count) {
  while (count > 0) {
    const std::size_t there = std::min(input_.Size(), count);
    input_.Drop(there);
    inputCharge_.Resize(0);
    count -= there;
    if (count > 0 && Receive(std::min(count, FirstInputBytes)) != Received::All) return false;
  }
  return true;
}

Session::Received Session::Receive(std::size_t count) {
  constexpr std::size_t StepBytes = 1 << 20;
  const auto deadline = std::chrono::steady_clock::now() + LargeRequestTime;
  while (input_.Size() < count) {
    auto room = input_.Room(count);
    // Nothing of what is behind a long one, so that its memory is given back when it is done.
    std::size_t most = count > FirstInputBytes ? count - input_.Size() : room.size();
    if (count > OwnBytes) {
      most = std::min(most, StepBytes);
      if (!inputCharge_.Resize(Beyond(input_.Size() + most))) return Received::NoMemory;
      WaitForBytes(deadline);
    }
    room = room.first(std::min(room.size(), most));
    const ssize_t received = recv(socket_.Get(), room.data(), room.size(), 0);
    if (received < 0 && errno == EINTR) continue;
    if (received <= 0) return Received::Ended;
    input_.Add(static_cast<std::size_t>(received));
  }
  return Received::All;
}

void Session::WaitForBytes(std::chrono::steady_clock::time_point deadline) const {
  pollfd entry{socket_.Get(), POLLIN, 0};
  int ready = 0;
  do {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    ready = poll(&entry, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
  } while (ready < 0 && errno == EINTR);
  if (ready == 0) throw std::runtime_error("A large request did not come in time.");
}

void Session::Notify(std::span<const unsigned char> frame) noexcept {
  Send(FrameKind::Notification, frame);
}

void Session::Send(FrameKind kind, std::span<const unsigned char> frame) noexcept {
  const MutexLock lock(outputMutex_);
  if (closed_ || isEnding_) return;
  try {
    if (const auto fault = FaultOf(kind, frame)) return SendFaulty(*fault, kind, frame);
    if (held_.IsEmpty()) return Transmit(kind, frame);
    if (held_.IsLineFree()) {
      Transmit(kind, frame);
    } else {
      Hold({kind, {frame.begin(), frame.end()}});
    }
    held_.LetOutReordered(std::chrono::steady_clock::now());
    Release();
  } catch (const std::exception&) {  // no memory for it
    CloseFor(NoRoom);
  }
}

std::shared_ptr<const Fault> Session::FaultOf(FrameKind kind, std::span<const unsigned char> frame) {
  if (kind == FrameKind::Notification) {
    return faults_.AreNone()
               ? nullptr
               : faults_.OfNotification(NotificationTarget(frame.data(), frame.size()), number_);
  }
  if (answerFaults_.empty()) return nullptr;
  const auto head = HeadOf(frame);
  const auto found = head ? answerFaults_.find(head->Id) : answerFaults_.end();
  if (found == answerFaults_.end()) return nullptr;
  auto fault = std::move(found->second);
  answerFaults_.erase(found);
  return fault;
}

void Session::SendFaulty(const Fault& fault, FrameKind kind, std::span<const unsigned char> frame) {
  const auto now = std::chrono::steady_clock::now();
  HeldFrame held{kind, {frame.begin(), frame.end()}};
  switch (fault.Action) {
    case FaultAction::Silent:
      return;
    case FaultAction::Drop:
      return CloseFor(" disconnected: A fault was asked for.");
    case FaultAction::Error: {
      OutputPacket error = kind == FrameKind::Answer ? Refuse(HeadBytes(frame), fault.ErrorText)
                                                     : ErrorNotification(fault.ErrorText);
      const auto bytes = error.Close();
      held.Bytes.assign(bytes.begin(), bytes.end());
      break;
    }
    case FaultAction::Garbage:
      for (unsigned char& byte : held.Bytes) byte = static_cast<unsigned char>(~byte);
      break;
    case FaultAction::Truncate:
      held.Bytes.resize(held.Bytes.size() / 2);
      held.IsLast = true;
      break;
    case FaultAction::Delay:
    case FaultAction::Reorder:
      held.Due = now + fault.Delay;
      held.GoesBehindAnother = fault.Action == FaultAction::Reorder;
      break;
    case FaultAction::Slow:
      held.Rate = fault.Rate;
  }
  if (held.Due == HeldFrame::TimePoint()) held_.LetOutReordered(now);
  Hold(std::move(held));
  Release();
}

void Session::Hold(HeldFrame frame) {
  held_.Add(std::move(frame));
  wake_.Signal();
  CheckBounds();
}

void Session::Release() {
  const auto now = std::chrono::steady_clock::now();
  while (!closed_ && !isEnding_) {
    const auto frame = held_.Next(now);
    if (!frame) return;
    Transmit(frame->Kind, frame->Bytes);
    if (!frame->IsLast) continue;
    isEnding_ = true;
    held_.Clear();
  }
  if (isEnding_ && !closed_ && output_.IsEmpty()) Close();
}

void Session::Transmit(FrameKind kind, std::span<const unsigned char> bytes) noexcept {
  if (output_.IsEmpty()) bytes = bytes.subspan(TransmitNow(bytes));
  if (bytes.empty() || closed_) return;
  if (output_.IsEmpty()) wake_.Signal();
  if (!Keep(kind, bytes)) return CloseFor(NoRoom);
  CheckBounds();
}

void Session::CheckBounds() noexcept {
  if (!outputCharge_.Resize(Beyond(CostOf(output_, held_)))) {
    CloseFor(NoRoom);
  } else if (output_.GetNotificationBytes() + held_.GetNotificationBytes() >
             settings_.MostNotificationBytes) {
    CloseFor(" does not read its notifications: disconnected");
  }
}

bool Session::Keep(FrameKind kind, std::span<const unsigned char> bytes) noexcept {
  if (!outputCharge_.Resize(Beyond(CostOf(output_, held_) + bytes.size()))) return false;
  try {
    output_.Append(kind, bytes);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void Session::CloseFor(std::string_view reason) noexcept {
  LogLine({peer_, reason});
  Close();
}

void Session::GiveUp(std::string_view reason) noexcept {
  const MutexLock lock(outputMutex_);
  if (closed_) return;
  LogLine({peer_, " disconnected: ", reason});
  Close();
}

std::size_t Session::TransmitNow(std::span<const unsigned char> bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count =
        send(socket_.Get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
      sent += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      break;
    } else if (errno != EINTR) {
      Close();
      return bytes.size();
    }
  }
  return sent;
}

void Session::Flush() {
  const MutexLock lock(outputMutex_);
  try {
    if (!held_.IsEmpty()) Release();
  } catch (const std::bad_alloc&) {
    CloseFor(NoRoom);
  }
  while (!closed_ && !output_.IsEmpty()) {
    const auto bytes = output_.Front();
    const std::size_t size = bytes.size();
    const std::size_t sent = TransmitNow(bytes);
    if (closed_) return;
    output_.Drop(sent);
    outputCharge_.Resize(Beyond(CostOf(output_, held_)));
    if (sent < size) break;
  }
  if (isEnding_ && !closed_ && output_.IsEmpty()) Close();
  outputChanged_.NotifyAll();
}

Session::Output Session::GetOutput() {
  const MutexLock lock(outputMutex_);
  return closed_ ? Output{} : Output{!output_.IsEmpty(), held_.GetDue()};
}

bool Session::WaitForRoom() {
  MutexLock lock(outputMutex_);
  while (!closed_ && output_.GetSize() + held_.GetMemory() > MostAnswerBytes) outputChanged_.Wait(lock);
  return !closed_;
}

void Session::Close() noexcept {
  closed_ = true;
  output_.Clear();
  held_.Clear();
  outputCharge_.Resize(0);
  shutdown(socket_.Get(), SHUT_RDWR);
  outputChanged_.NotifyAll();
}

void Session::Shutdown() noexcept {
  const MutexLock lock(outputMutex_);
  Close();
}

}  // namespace VELTRO::KELVO::VirtualCard
