// Builds one frame. It is the output stream of a msgpack::packer: what is packed into it becomes the body.
#pragma once

#include <exception>
#include <memory>
#include <span>

#include "rpc/Packet.h"

namespace VELTRO::KELVO::ClientLib {

class InputPacket;
class RpcRemoteException;

class OutputPacket : public Packet {
 public:
  OutputPacket(const char* header, unsigned int headerLength, PacketType type,
               std::optional<unsigned int> requestId);

  static OutputPacket AllocateRequest(unsigned int requestId);
  // The three answers to a request. They throw std::bad_optional_access when the request has no id.
  static OutputPacket AllocateResponse(const InputPacket& request);
  static OutputPacket AllocateResponse(const InputPacket& request, const std::exception& error);
  static OutputPacket AllocateResponse(const InputPacket& request, const RpcRemoteException& error);
  static OutputPacket AllocateNotification();
  static OutputPacket AllocateErrorNotification();

  // Appends to the body (the name that msgpack::packer asks of a stream). Throws std::bad_alloc.
  void write(const char* bytes, std::size_t count);
  // The same, but many bytes are not copied: they must stay as they are until the frame is sent. Only the first
  // such run of a packet is left where it is.
  // With an `owner` whoever keeps that keeps the bytes as they are for longer.
  void WriteByReference(std::span<const unsigned char> bytes, std::shared_ptr<const void> owner = nullptr);

  // Writes the body length into the header and returns the whole frame, which the packet goes on owning.
  // Throws std::runtime_error "Packet exceeds the maximum size." beyond 0x7FFFFFFF bytes.
  std::span<const unsigned char> Close();
  // The same for a packet that may hold bytes by reference.
  FramePieces CloseInPieces();
  // Of the bytes by reference; null when there are none, or they have none.
  const std::shared_ptr<const void>& GetOwner() const { return owner_; }

 private:
  static OutputPacket Begin(PacketType type, std::optional<unsigned int> requestId);

  std::span<const unsigned char> referenced_;
  std::shared_ptr<const void> owner_;
  std::size_t referencedAt_ = 0;  // where in the storage they belong
};

}  // namespace VELTRO::KELVO::ClientLib
