#include "session/FrameSplitter.h"

#include <new>

#include "rpc/Packet.h"

namespace VELTRO::KELVO::ClientLib::Recording {

namespace {

// No card sends more, and what claims to be longer is not gathered.
constexpr std::size_t MostGathered = std::size_t{64} << 20;

bool LooksLikeFrame(std::span<const unsigned char> bytes) {
  if (bytes.size() < Packet::FullHeaderLen || bytes.front() != Packet::PacketStart) return false;
  switch (static_cast<PacketType>(bytes[1])) {
    case PacketType::Request:
    case PacketType::Response:
    case PacketType::ErrorResponse:
    case PacketType::Notification:
    case PacketType::ErrorNotification:
      return Packet::BodyLength(bytes.data()) <= MostGathered;
  }
  return false;
}

}  // namespace

void FrameSplitter::Take(std::span<const unsigned char> bytes) {
  if (isLost_ && mayResume_ && LooksLikeFrame(bytes)) isLost_ = false;
  if (begun_.empty()) {
    static_cast<void>(Gather(bytes.subspan(TakeFrames(bytes))));
  } else if (Gather(bytes)) {
    const std::size_t taken = TakeFrames(begun_);
    begun_.erase(begun_.begin(), begun_.begin() + static_cast<std::ptrdiff_t>(taken));
  }
}

bool FrameSplitter::Gather(std::span<const unsigned char> bytes) {
  try {
    begun_.insert(begun_.end(), bytes.begin(), bytes.end());
    return true;
  } catch (const std::bad_alloc&) {
    Lose();
    sink_.TakeOther(connection_, way_, LineKind::Raw, bytes);
    return false;
  }
}

void FrameSplitter::Lose() {
  if (!begun_.empty()) sink_.TakeOther(connection_, way_, LineKind::Raw, begun_);
  begun_ = std::vector<unsigned char>();  // its memory, too: there may be none for more
  isLost_ = mayResume_ = true;
}

void FrameSplitter::End() {
  if (!begun_.empty()) sink_.TakeOther(connection_, way_, LineKind::Raw, begun_);
  begun_.clear();
  sink_.TakeOther(connection_, way_, LineKind::Ended);
}

std::size_t FrameSplitter::TakeFrames(std::span<const unsigned char> bytes) {
  std::size_t taken = 0;
  while (taken < bytes.size()) {
    const auto rest = bytes.subspan(taken);
    if (!isLost_ && rest.front() == Packet::PacketStart) {
      if (rest.size() < Packet::FullHeaderLen) break;
      const std::size_t size = Packet::FullHeaderLen + std::size_t{Packet::BodyLength(rest.data())};
      isLost_ = size > MostGathered;
      if (!isLost_ && rest.size() < size) break;
      if (!isLost_) {
        sink_.TakeFrame(connection_, way_, {rest.first(size)});
        taken += size;
        continue;
      }
    }
    isLost_ = true;
    sink_.TakeOther(connection_, way_, LineKind::Raw, rest);
    taken = bytes.size();
  }
  return taken;
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
