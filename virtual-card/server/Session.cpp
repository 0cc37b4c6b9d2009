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
#include "rpc/Packet.h"

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

// What it takes of all sessions' memory.
constexpr std::size_t Beyond(std::size_t bytes) {
  return bytes - std::min(bytes, Session::OwnBytes);
}

}  // namespace

Session::Session(Descriptor socket, std::string peer, Card& card, Wake& wake, SessionMemory& memory,
                 const SessionSettings& settings)
    : socket_(std::move(socket)),
      peer_(std::move(peer)),
      card_(card),
      wake_(wake),
      memory_(memory),
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
      WaitForRoom();
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
  client.Work.Take(CostOf(request.Frame));
  std::optional<OutputPacket> answer =
      isRefused ? Refuse(request.Frame, request.Refusal)
                : Answer(client, request.Frame, settings_.Verbose || isSeen ? &log : nullptr);
  if (!isRefused) input_.Drop(request.Frame.size());
  inputCharge_.Resize(0);
  if (settings_.Verbose) LogLine({peer_, " ", log});
  if (isSeen) presence.AddCall(log);
  if (answer) Send(FrameKind::Answer, answer->Close());
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
  if (closed_) return;
  if (output_.IsEmpty()) frame = frame.subspan(TransmitNow(frame));
  if (frame.empty() || closed_) return;
  if (output_.IsEmpty()) wake_.Signal();
  if (!Keep(kind, frame)) {
    CloseFor(" leaves more unread than there is room for: disconnected");
  } else if (output_.GetNotificationBytes() > settings_.MostNotificationBytes) {
    CloseFor(" does not read its notifications: disconnected");
  }
}

bool Session::Keep(FrameKind kind, std::span<const unsigned char> bytes) noexcept {
  if (!outputCharge_.Resize(Beyond(output_.GetMemory() + bytes.size()))) return false;
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
  while (!closed_ && !output_.IsEmpty()) {
    const auto bytes = output_.Front();
    const std::size_t size = bytes.size();
    const std::size_t sent = TransmitNow(bytes);
    if (closed_) return;
    output_.Drop(sent);
    outputCharge_.Resize(Beyond(output_.GetMemory()));
    if (sent < size) break;
  }
  outputChanged_.NotifyAll();
}

bool Session::HasOutput() {
  const MutexLock lock(outputMutex_);
  return !closed_ && !output_.IsEmpty();
}

void Session::WaitForRoom() {
  MutexLock lock(outputMutex_);
  while (!closed_ && output_.GetSize() > MostAnswerBytes) outputChanged_.Wait(lock);
}

void Session::Close() noexcept {
  closed_ = true;
  output_.Clear();
  outputCharge_.Resize(0);
  shutdown(socket_.Get(), SHUT_RDWR);
  outputChanged_.NotifyAll();
}

void Session::Shutdown() noexcept {
  const MutexLock lock(outputMutex_);
  Close();
}

}  // namespace VELTRO::KELVO::VirtualCard
