#include "rpc/InputPacket.h"

#include <cstring>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

InputPacket::InputPacket(const char* body, unsigned int bodyLength, PacketType type) : Packet(type) {
  if (bodyLength == 0) return;
  Reserve(bodyLength);
  std::memcpy(storage_.get(), body, bodyLength);
  length_ = bodyLength;
}

InputPacket InputPacket::Allocate(const unsigned char* buffer, int offset, int length) {
  if (buffer == nullptr || length < static_cast<int>(FullHeaderLen) || buffer[offset] != PacketStart) {
    throw std::runtime_error("Invalid packet!");
  }
  const unsigned char* frame = buffer + offset;
  InputPacket packet(reinterpret_cast<const char*>(frame + FullHeaderLen),
                     static_cast<unsigned int>(length) - static_cast<unsigned int>(FullHeaderLen),
                     static_cast<PacketType>(frame[1]));
  if (!IsNotification(packet.type_)) packet.TakeRequestId();
  return packet;
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
