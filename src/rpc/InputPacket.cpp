#include "rpc/InputPacket.h"

#include <cstring>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

InputPacket::InputPacket(const char* body, unsigned int bodyLength, PacketType type) : Packet(type) {
  Append({reinterpret_cast<const unsigned char*>(body), bodyLength});
}

InputPacket InputPacket::Allocate(const unsigned char* buffer, int offset, int length) {
  if (buffer == nullptr || length < static_cast<int>(FullHeaderLen) || buffer[offset] != PacketStart) {
    throw std::runtime_error("Invalid packet!");
  }
  InputPacket packet;
  packet.Fill({buffer + offset, static_cast<std::size_t>(length)});
  return packet;
}

std::uint32_t InputPacket::RequestIdOf(std::span<const unsigned char> frame) {
  const auto body = frame.subspan(FullHeaderLen);
  std::size_t position = 0;
  return Body::TakeRequestId({reinterpret_cast<const char*>(body.data()), body.size()}, position);
}

void InputPacket::Fill(std::span<const unsigned char> frame) {
  type_ = static_cast<PacketType>(frame[1]);
  Append(frame.subspan(FullHeaderLen));
  if (!IsNotification(type_)) TakeRequestId();
}

void InputPacket::Append(std::span<const unsigned char> body) {
  if (body.empty()) return;
  if (body.size() > capacity_) Reserve(body.size());
  std::memcpy(storage_.get(), body.data(), body.size());
  length_ = body.size();
}

void InputPacket::TakeRequestId() {
  requestId_ = Body::TakeRequestId(Rest(), position_);
}

std::span<const char> InputPacket::Rest() const {
  return {reinterpret_cast<const char*>(storage_.get()) + position_, length_ - position_};
}

msgpack::object_handle InputPacket::Unpack(std::size_t mostValues) {
  const auto rest = Rest();
  std::size_t used = 0;
  auto object = Body::Unpack(rest, used, IsError(type_) ? Body::AnyDepth : Body::UsualDepth, mostValues);
  position_ += used;
  return object;
}

}  // namespace VELTRO::KELVO::ClientLib
