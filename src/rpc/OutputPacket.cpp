#include "rpc/OutputPacket.h"

#include <cstring>
#include <stdexcept>

#include "rpc/InputPacket.h"
#include "rpc/MsgPack.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::size_t FirstCapacity = 8192;
constexpr int MostDoublings = 50;
// What a receiver of our own kind takes; the length field could say twice as much.
constexpr std::size_t MostBytes = 0x7FFFFFFF;

}  // namespace

OutputPacket::OutputPacket(const char* header, unsigned int headerLength, PacketType type,
                           std::optional<unsigned int> requestId)
    : Packet(type) {
  requestId_ = requestId;
  std::size_t capacity = FirstCapacity;
  for (int doublings = 0; capacity < headerLength && doublings < MostDoublings; ++doublings) capacity *= 2;
  if (capacity < headerLength) capacity = headerLength;
  Reserve(capacity);
  write(header, headerLength);
}

OutputPacket OutputPacket::Begin(PacketType type, std::optional<unsigned int> requestId) {
  const char header[FullHeaderLen] = {static_cast<char>(PacketStart), static_cast<char>(type), 0, 0, 0, 0};
  OutputPacket packet(header, FullHeaderLen, type, requestId);
  if (requestId) msgpack::packer(packet).pack_uint32(*requestId);
  return packet;
}

OutputPacket OutputPacket::AllocateRequest(unsigned int requestId) {
  return Begin(PacketType::Request, requestId);
}

OutputPacket OutputPacket::AllocateResponse(const InputPacket& request) {
  return Begin(PacketType::Response, request.GetRequestId().value());
}

OutputPacket OutputPacket::AllocateResponse(const InputPacket& request, const std::exception& error) {
  return AllocateResponse(request, RpcRemoteException(error.what()));
}

OutputPacket OutputPacket::AllocateResponse(const InputPacket& request, const RpcRemoteException& error) {
  OutputPacket packet = Begin(PacketType::ErrorResponse, request.GetRequestId().value());
  error.Pack(packet);
  return packet;
}

OutputPacket OutputPacket::AllocateNotification() {
  return Begin(PacketType::Notification, std::nullopt);
}

OutputPacket OutputPacket::AllocateErrorNotification() {
  return Begin(PacketType::ErrorNotification, std::nullopt);
}

void OutputPacket::write(const char* bytes, std::size_t count) {
  if (count == 0) return;  // nothing may well stand nowhere, which memcpy does not allow
  if (count > capacity_ - length_) {
    std::size_t capacity = capacity_ == 0 ? FirstCapacity : capacity_;
    while (capacity < length_ + count) capacity *= 2;
    Reserve(capacity);
  }
  std::memcpy(storage_.get() + length_, bytes, count);
  length_ += count;
}

std::span<const unsigned char> OutputPacket::Close() {
  if (length_ > MostBytes) throw std::runtime_error("Packet exceeds the maximum size.");
  const auto bodyLength = static_cast<std::uint32_t>(length_ - FullHeaderLen);
  for (unsigned byte = 0; byte < 4; ++byte) {
    storage_.get()[HeaderLen + byte] = static_cast<unsigned char>(bodyLength >> (8 * byte));
  }
  return {storage_.get(), length_};
}

}  // namespace VELTRO::KELVO::ClientLib
