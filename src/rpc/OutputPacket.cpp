#include "rpc/OutputPacket.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include "rpc/InputPacket.h"
#include "rpc/MsgPack.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::size_t FirstCapacity = 512;  // most calls are shorter, and memory of this size is quick to get
constexpr int MostDoublings = 50;
// Fewer bytes are copied faster than they are sent as a piece of their own.
constexpr std::size_t LeastReferenced = 16384;
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
  if (count == 0) return;  // `bytes` may be null
  if (count > capacity_ - length_) {
    std::size_t capacity = capacity_ == 0 ? FirstCapacity : capacity_;
    while (capacity < length_ + count) capacity *= 2;
    Reserve(capacity);
  }
  std::memcpy(storage_.get() + length_, bytes, count);
  length_ += count;
}

void OutputPacket::WriteByReference(std::span<const unsigned char> bytes, std::shared_ptr<const void> owner) {
  if (bytes.size() < LeastReferenced || !referenced_.empty()) {
    write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  } else {
    referenced_ = bytes;
    owner_ = std::move(owner);
    referencedAt_ = length_;
  }
}

std::span<const unsigned char> OutputPacket::Close() {
  if (!referenced_.empty()) throw std::logic_error("The packet is in pieces.");
  CloseInPieces();
  return {storage_.get(), length_};
}

FramePieces OutputPacket::CloseInPieces() {
  const std::size_t whole = length_ + referenced_.size();
  if (whole > MostBytes) throw std::runtime_error("Packet exceeds the maximum size.");
  const auto bodyLength = static_cast<std::uint32_t>(whole - FullHeaderLen);
  for (unsigned byte = 0; byte < 4; ++byte) {
    storage_.get()[HeaderLen + byte] = static_cast<unsigned char>(bodyLength >> (8 * byte));
  }
  const std::span<const unsigned char> own(storage_.get(), length_);
  return {own.first(referencedAt_), referenced_, own.subspan(referencedAt_)};
}

}  // namespace VELTRO::KELVO::ClientLib
