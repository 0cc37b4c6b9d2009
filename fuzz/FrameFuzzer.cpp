// One frame as it arrives: taken apart, looked at by a second opinion, put together again.
#include <cstring>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "Reference.h"
#include "Require.h"
#include "rpc/Body.h"
#include "rpc/InputPacket.h"
#include "rpc/LogText.h"
#include "rpc/OutputPacket.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using namespace VELTRO::KELVO::ClientLib;

// Reading every inner error of a chain makes all their descriptions, which costs the square of its depth.
constexpr int MostInnerErrors = 3;
// Of a frame of very many objects, only the first are looked at this way: refusing one takes long.
constexpr int MostErrors = 16;

std::optional<InputPacket> Allocate(std::span<const unsigned char> frame) {
  try {
    return InputPacket::Allocate(frame.data(), 0, static_cast<int>(frame.size()));
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

void CheckHead(std::span<const unsigned char> frame, const std::optional<InputPacket>& packet) {
  if (frame.size() < Packet::FullHeaderLen || frame[0] != Packet::PacketStart) {
    Require(!packet, "what is no frame is refused");
    return;
  }
  const auto type = static_cast<PacketType>(frame[1]);
  const std::span body(reinterpret_cast<const char*>(frame.data()) + Packet::FullHeaderLen,
                       frame.size() - Packet::FullHeaderLen);
  std::size_t idLength = 0;
  std::optional<std::uint32_t> id;
  if (!IsNotification(type)) {
    const auto expected = RequestIdOf(body);
    Require(packet.has_value() == expected.has_value(),
            "a frame is taken exactly when it has its request id");
    if (!expected) return;
    id = expected->Value;
    idLength = expected->Length;
  }
  Require(packet.has_value(), "a notification needs no request id");
  Require(packet->GetRequestId() == id, "the request id is what stands there");
  Require(packet->GetType() == type, "the type is what stands there");
  Require(packet->Rest().size() == body.size() - idLength, "the rest of the body is all behind the id");
}

void CheckBody(std::span<const char> bytes) {
  for (const std::uint32_t depth : {0U, 1U, 4U, Body::UsualDepth, Body::AnyDepth}) {
    std::optional<std::size_t> length;
    try {
      length = Body::Check(bytes, depth);
    } catch (const std::runtime_error&) {
    }
    Require(length == LengthOfObject(bytes, depth), "a body is taken exactly when it holds a whole object");
  }
}

// The frame that answers `packet`, or one like it, without its objects.
OutputPacket FrameLike(const InputPacket& packet) {
  return packet.GetRequestId() ? OutputPacket::AllocateResponse(packet)
                               : OutputPacket::AllocateNotification();
}

InputPacket Reread(OutputPacket& written) {
  const auto frame = written.Close();
  Require(Packet::BodyLength(frame.data()) == frame.size() - Packet::FullHeaderLen,
          "a frame's header counts its body");
  return InputPacket::Allocate(frame.data(), 0, static_cast<int>(frame.size()));
}

// The chain from the object itself, which the exception is made from.
std::size_t CountLinks(const msgpack::object& object) {
  std::size_t count = 0;
  const msgpack::object* link = &object;
  for (; link->type == msgpack::type::ARRAY && link->via.array.size > 0; ++count) {
    link = &link->via.array.ptr[link->via.array.size - 1];
  }
  return count;
}

bool IsText(const msgpack::object& object) {
  return object.type == msgpack::type::STR || object.type == msgpack::type::BIN;
}

// An error is nil, or an array of a text, a text or nil, anything, and at its end an error.
bool IsErrorObject(const msgpack::object& object) {
  const msgpack::object* link = &object;
  while (link->type == msgpack::type::ARRAY) {
    const auto& elements = link->via.array;
    if (elements.size < 3 || !IsText(elements.ptr[0])) return false;
    if (!elements.ptr[1].is_nil() && !IsText(elements.ptr[1])) return false;
    link = &elements.ptr[elements.size - 1];
  }
  return link->is_nil();
}

void CheckSame(RpcRemoteException a, RpcRemoteException b) {
  for (int depth = 0; depth < MostInnerErrors; ++depth) {
    Require(a.GetText() == b.GetText(), "an error's text survives the wire");
    Require(a.GetStackTrace() == b.GetStackTrace(), "an error's stack trace survives the wire");
    Require(std::strcmp(a.what(), b.what()) == 0, "an error's description survives the wire");
    auto innerOfA = a.GetInner();
    auto innerOfB = b.GetInner();
    Require(innerOfA.has_value() == innerOfB.has_value(), "an error's chain survives the wire");
    if (!innerOfA) return;
    a = *innerOfA;
    b = *innerOfB;
  }
}

void CheckError(const msgpack::object& object, const InputPacket& packet) {
  std::optional<RpcRemoteException> error;
  try {
    error = RpcRemoteException::FromObject(object);
  } catch (const msgpack::type_error&) {
  }
  Require(error.has_value() == IsErrorObject(object),
          "an error is taken exactly when it has the shape of one");
  if (!error) return;
  Require(std::strncmp(error->what(), "BeginException-", 15) == 0, "a description begins with its head");
  OutputPacket written = packet.GetRequestId() ? OutputPacket::AllocateResponse(packet, *error)
                                               : OutputPacket::AllocateErrorNotification();
  if (!packet.GetRequestId()) error->Pack(written);
  InputPacket reread = Reread(written);
  Require(IsError(reread.GetType()), "an error travels as one");
  const auto handle = reread.Unpack();
  Require(reread.Rest().empty(), "an error is one object");
  const std::size_t links = CountLinks(object);
  Require(CountLinks(handle.get()) == (object.is_nil() ? 1 : links), "an error keeps all its inner errors");
  CheckSame(*error, RpcRemoteException::FromObject(handle.get()));
}

// Takes objects from `packet` as long as there are any, and writes each of them into `copy`, if there is one.
void TakeObjects(InputPacket& packet, OutputPacket* copy) {
  const std::uint32_t depth = IsError(packet.GetType()) ? Body::AnyDepth : Body::UsualDepth;
  for (int count = 0;; ++count) {
    const auto rest = packet.Rest();
    const auto length = LengthOfObject(rest, depth);
    try {
      const auto handle = packet.Unpack();
      Require(length && rest.size() - packet.Rest().size() == *length, "an object takes its own length");
      if (count < MostErrors) CheckError(handle.get(), packet);
      // Both walk an object recursively, so they are for what has the usual depth.
      if (LengthOfObject(rest, Body::UsualDepth)) {
        Require(!LogText(handle.get()).empty(), "every object has a text");
        if (copy != nullptr) msgpack::packer(*copy).pack(handle.get());
      }
    } catch (const std::runtime_error&) {
      Require(!length, "a whole object is not refused");
      return;
    }
  }
}

void Look(std::span<const unsigned char> frame) {
  auto packet = Allocate(frame);
  CheckHead(frame, packet);
  if (!packet) return;
  CheckBody(packet->Rest());
  OutputPacket first = FrameLike(*packet);
  TakeObjects(*packet, &first);

  InputPacket reread = Reread(first);
  Require(reread.GetRequestId() == packet->GetRequestId(), "the request id survives the wire");
  OutputPacket second = FrameLike(reread);
  TakeObjects(reread, &second);
  Require(reread.Rest().empty(), "what was packed is unpacked to its end");
  const auto a = first.Close();
  const auto b = second.Close();
  Require(a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0, "objects survive the wire");
}

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VELTRO::KELVO::Fuzz::Look({data, size});
  return 0;
}
