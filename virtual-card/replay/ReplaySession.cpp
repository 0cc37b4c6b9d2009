#include "replay/ReplaySession.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <exception>
#include <stdexcept>
#include <utility>

#include "base/Log.h"
#include "rpc/OutputPacket.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::InputPacket;
using ClientLib::Packet;
using ClientLib::PacketType;

namespace {

constexpr std::size_t FirstBytes = 65536;
constexpr std::chrono::hours Longest{24 * 365};  // that anything is planned ahead

// Stands where a recorded connection would, for a client that has none.
const RecordedConnection NoConnection;

std::string AnswerFrame(PacketType type, std::uint32_t id, std::string_view body) {
  msgpack::sbuffer bytes;
  msgpack::packer(bytes).pack_uint32(id);
  bytes.write(body.data(), body.size());
  return FrameOf(type, {bytes.data(), bytes.size()});
}

}  // namespace

ReplaySession::ReplaySession(Descriptor socket, std::string peer, const RecordedCalls& recording,
                             const RecordedConnection* connection, std::string refusal,
                             const ReplaySettings& settings, Wake& finished)
    : socket_(std::move(socket)),
      peer_(std::move(peer)),
      connection_(connection),
      answers_(recording, connection == nullptr ? NoConnection : *connection, settings.IsStrict),
      refusal_(std::move(refusal)),
      settings_(settings),
      wake_(finished),
      input_(FirstBytes) {
  thread_ = std::thread([this] { Work(); });
}

ReplaySession::~ReplaySession() {
  shutdown(socket_.Get(), SHUT_RDWR);
  thread_.join();
}

bool ReplaySession::HasClientLeft() const {
  pollfd entry{socket_.Get(), POLLRDHUP, 0};
  return isFinished_ || poll(&entry, 1, 0) > 0;
}

void ReplaySession::Work() {
  try {
    Serve();
  } catch (const std::exception& error) {
    LogLine({peer_, " disconnected: ", error.what()});
  }
  shutdown(socket_.Get(), SHUT_RDWR);
  isFinished_ = true;
  wake_.Signal();
}

void ReplaySession::Serve() {
  if (connection_ != nullptr) {
    for (const RecordedEvent& event : connection_->Beginning) PlanEvent(event, Clock::now());
  }
  while (SendDue()) {
    pollfd entry{socket_.Get(), POLLIN, 0};
    int wait = -1;
    if (!planned_.empty()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(planned_.begin()->first - Clock::now());
      wait = static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60000));
    }
    if (poll(&entry, 1, wait) <= 0) continue;
    const auto room = input_.Room(input_.Size() + 1);
    const ssize_t received = recv(socket_.Get(), room.data(), room.size(), MSG_DONTWAIT);
    if (received < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (received <= 0) {
      static_cast<void>(SendDue());
      return;
    }
    input_.Add(static_cast<std::size_t>(received));
    AnswerAll();
  }
}

void ReplaySession::AnswerAll() {
  while (input_.Size() >= Packet::FullHeaderLen) {
    const unsigned char* header = input_.Data();
    if (header[0] != Packet::PacketStart || header[1] != static_cast<unsigned char>(PacketType::Request)) {
      throw std::runtime_error("What came begins no request.");
    }
    const std::size_t size = Packet::FullHeaderLen + std::size_t{Packet::BodyLength(header)};
    if (size > static_cast<std::size_t>(INT32_MAX)) throw std::runtime_error("A request is too long.");
    if (input_.Size() < size) return;
    AnswerOne({header, size});
    input_.Drop(size);
  }
}

void ReplaySession::AnswerOne(std::span<const unsigned char> frame) {
  InputPacket request = InputPacket::Allocate(frame.data(), 0, static_cast<int>(frame.size()));
  const msgpack::object_handle name = request.Unpack();
  if (name->type != msgpack::type::STR) throw std::runtime_error("A request names no method.");
  const std::string_view method(name->via.str.ptr, name->via.str.size);
  ReplayedAnswer answer;
  if (connection_ == nullptr) {
    answer.Refusal = refusal_;
  } else {
    answer = answers_.Answer(method, request.Rest());
  }
  if (!answer.Refusal.empty()) {
    LogLine({peer_, ": ", answer.Refusal});
  } else if (settings_.IsVerbose) {
    LogLine({peer_, " ", method, answer.IsRepeated ? ", once more" : ""});
  }
  const auto now = Clock::now();
  const RecordedCall* const call = answer.IsRepeated ? nullptr : answer.Call;
  if (call != nullptr) PlanEvents(*call, true, now);
  if (!answer.IsSilent) PlanAnswer(request, answer, method, now);
  if (call != nullptr) PlanEvents(*call, false, now);
}

void ReplaySession::PlanAnswer(const InputPacket& request, const ReplayedAnswer& answer,
                               std::string_view method, Clock::time_point now) {
  auto at = now;
  if (answer.Call != nullptr && !answer.IsRepeated) {
    const bool isLast = std::ranges::any_of(answer.Call->Events, &RecordedEvent::IsAhead);
    if (isLast) at = std::max(at, latestEvent_);
  }
  // What waits for something to happen waits as long as it did.
  if (answer.Call != nullptr && method.starts_with("WaitFor"))
    at = std::max(at, now + Scaled(answer.Call->Took));
  std::string bytes;
  if (answer.Refusal.empty()) {
    bytes = AnswerFrame(answer.Type, request.GetRequestId().value(), answer.Body);
  } else {
    // Without the empty trace the client would put the text in its place, too.
    const ClientLib::RpcRemoteException error(answer.Refusal, "");
    auto refusal = ClientLib::OutputPacket::AllocateResponse(request, error);
    const auto sent = refusal.Close();
    bytes.assign(reinterpret_cast<const char*>(sent.data()), sent.size());
  }
  planned_.emplace(at, Sending{std::move(bytes)});
}

void ReplaySession::PlanEvents(const RecordedCall& call, bool areAhead, Clock::time_point now) {
  for (const RecordedEvent& event : call.Events) {
    if (event.IsAhead == areAhead) PlanEvent(event, now);
  }
}

void ReplaySession::PlanEvent(const RecordedEvent& event, Clock::time_point begin) {
  latestEvent_ = std::max(latestEvent_, begin + Scaled(event.Delay));
  planned_.emplace(latestEvent_, Sending{event.Bytes, event.IsEnd});
}

ReplaySession::Clock::duration ReplaySession::Scaled(std::chrono::microseconds time) const {
  const std::chrono::duration<double> scaled = std::chrono::duration<double>(time) / settings_.Speed;
  return scaled < Longest ? std::chrono::duration_cast<Clock::duration>(scaled) : Clock::duration(Longest);
}

bool ReplaySession::SendDue() {
  while (!planned_.empty() && planned_.begin()->first <= Clock::now()) {
    const auto next = planned_.extract(planned_.begin());
    if (next.mapped().IsEnd || !Send(next.mapped().Bytes)) return false;
  }
  return true;
}

bool ReplaySession::Send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

}  // namespace VELTRO::KELVO::VirtualCard
