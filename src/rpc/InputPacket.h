// One received frame: its type, its request id, its body.
#pragma once

#include <span>

#include "rpc/Body.h"
#include "rpc/MsgPack.h"
#include "rpc/Packet.h"

namespace VELTRO::KELVO::ClientLib {

class InputPacket : public Packet {
 public:
  // An empty packet, to be assigned to.
  InputPacket() : Packet(PacketType::Response) {}
  // Copies the body; the request id, if there is one, is not yet taken from it.
  InputPacket(const char* body, unsigned int bodyLength, PacketType type);

  // Parses the whole frame of `length` bytes, header included, that starts at buffer[offset]. Throws
  // std::runtime_error "Invalid packet!".
  static InputPacket Allocate(const unsigned char* buffer, int offset, int length);

  // Of such a frame. Throws as Allocate.
  static std::uint32_t RequestIdOf(std::span<const unsigned char> frame);

  // Gets room for frames of so many bytes, so that Fill needs no memory for them.
  void MakeRoom(std::size_t frameSize) { Reserve(frameSize); }
  // An empty packet becomes the whole frame. Throws as Allocate.
  void Fill(std::span<const unsigned char> frame);

  // The next object of the body. It refers to the packet's bytes, so the packet must outlive it. A body that
  // is malformed, or claims more than it holds, is refused before anything is unpacked, with a
  // std::runtime_error that begins "Invalid packet!".
  msgpack::object_handle Unpack(std::size_t mostValues = Body::MostValues);

  // What is left of the body.
  std::span<const char> Rest() const;

 private:
  void Append(std::span<const unsigned char> body);
  void TakeRequestId();

  std::size_t position_ = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
