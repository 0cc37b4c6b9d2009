#include "server/Session.h"

#include <sys/socket.h>

#include <cerrno>
#include <exception>
#include <stdexcept>
#include <utility>

#include "Log.h"
#include "methods/Requests.h"
#include "rpc/Packet.h"

namespace VELTRO::KELVO::VirtualCard {

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
  const std::size_t body = Packet::BodyLength(header);
  if (body > Session::MostBodyBytes) {
    throw std::runtime_error("A request of " + std::to_string(body) + " bytes was announced.");
  }
}

}  // namespace

Session::Session(Descriptor socket, std::string peer, Card& card, Wake& wake, const SessionSettings& settings)
    : socket_(std::move(socket)),
      peer_(std::move(peer)),
      card_(card),
      wake_(wake),
      settings_(settings),
      input_(FirstInputBytes) {}

Session::~Session() {
  Shutdown();
  if (thread_.joinable()) thread_.join();
}

void Session::Start() {
  thread_ = std::thread([this] { Work(); });
}

void Session::Work() {
  if (settings_.Verbose) LogLine(peer_ + " connected");
  try {
    CardClient client(card_);
    std::span<const unsigned char> frame;
    while (ReceiveFrame(frame)) {
      std::string log;
      OutputPacket answer = Answer(client, frame, settings_.Verbose ? &log : nullptr);
      input_.Drop(frame.size());
      if (settings_.Verbose) LogLine(peer_ + " " + log);
      Send(FrameKind::Answer, answer.Close());
      WaitForRoom();
    }
    if (settings_.Verbose) LogLine(peer_ + " disconnected");
  } catch (const std::exception& error) {
    LogLine(peer_ + " disconnected: " + error.what());
  }
  Shutdown();
  finished_.store(true, std::memory_order_release);
  wake_.Signal();
}

bool Session::Receive(std::size_t count) {
  while (input_.Size() < count) {
    const auto room = input_.Room(count);
    const ssize_t received = recv(socket_.Get(), room.data(), room.size(), 0);
    if (received < 0 && errno == EINTR) continue;
    if (received <= 0) return false;
    input_.Add(static_cast<std::size_t>(received));
  }
  return true;
}

bool Session::ReceiveFrame(std::span<const unsigned char>& frame) {
  if (!Receive(Packet::FullHeaderLen)) return false;
  CheckHeader(input_.Data());
  const std::size_t size = Packet::FullHeaderLen + Packet::BodyLength(input_.Data());
  if (!Receive(size)) return false;
  frame = {input_.Data(), size};
  return true;
}

void Session::Notify(std::span<const unsigned char> frame) {
  Send(FrameKind::Notification, frame);
}

void Session::Send(FrameKind kind, std::span<const unsigned char> frame) {
  const MutexLock lock(outputMutex_);
  if (closed_) return;
  if (output_.IsEmpty()) frame = frame.subspan(TransmitNow(frame));
  if (frame.empty() || closed_) return;
  if (output_.IsEmpty()) wake_.Signal();
  output_.Append(kind, frame);
  if (output_.GetNotificationBytes() > settings_.MostNotificationBytes) {
    LogLine(peer_ + " does not read its notifications: disconnected");
    Close();
  }
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

void Session::Close() {
  closed_ = true;
  output_.Clear();
  shutdown(socket_.Get(), SHUT_RDWR);
  outputChanged_.NotifyAll();
}

void Session::Shutdown() {
  const MutexLock lock(outputMutex_);
  Close();
}

}  // namespace VELTRO::KELVO::VirtualCard
