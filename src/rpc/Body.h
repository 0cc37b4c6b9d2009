// Bodies of frames as they come from the network: sizes in them are claims, so each is walked once, with
// memory that does not depend on what it claims, before anything is unpacked from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib::Body {

// How deep objects may be nested. No answer of a card comes near the usual bound; remote errors nest as deep
// as the card likes and are only ever walked, never recursed into.
inline constexpr std::uint32_t UsualDepth = 256;
inline constexpr std::uint32_t AnyDepth = UINT32_MAX;

// How many values one object may hold in all. Unpacked, a byte can become 24, so this, and not the length of what has
// come, bounds the memory. What may well hold more, as lists do, is taken by a Reader.
inline constexpr std::size_t MostValues = std::size_t{1} << 20;

// Reads a request id, a non-negative integer of up to 32 bits, from the start of `bytes` and adds its length
// to `position`. Throws std::runtime_error "Invalid packet!".
std::uint32_t TakeRequestId(std::span<const char> bytes, std::size_t& position);

// The length of the first object in `bytes`. Throws std::runtime_error, "Invalid packet! " and a reason, when
// there is no whole object, it is nested deeper than `depth`, or it holds more values than `mostValues`.
std::size_t Check(std::span<const char> bytes, std::uint32_t depth, std::size_t mostValues = MostValues);

// Checks and unpacks the first object; its texts and byte strings refer to `bytes`. Sets `used` to its
// length.
msgpack::object_handle Unpack(std::span<const char> bytes, std::size_t& used, std::uint32_t depth,
                              std::size_t mostValues = MostValues);

// The same into a zone that the caller keeps and clears, which spares an allocation an object.
msgpack::object Unpack(std::span<const char> bytes, msgpack::zone& zone, std::uint32_t depth);

// The bytes of the first object, a byte string or a text, where they stand. Throws std::runtime_error as Check, and
// msgpack::type_error for an object of another kind.
std::span<const char> Bytes(std::span<const char> bytes);

// Takes a large object apart from the front, one of its elements in memory at a time. Throws std::runtime_error, "Invalid
// packet! " and a reason, for what is malformed, and msgpack::type_error for what is of another kind.
class Reader {
 public:
  explicit Reader(std::span<const char> bytes) : rest_(bytes) {}

  // The number of elements of an array, or pairs of a map, which are to be taken next.
  std::uint32_t TakeArray() { return TakeHead(false); }
  std::uint32_t TakeMap() { return TakeHead(true); }
  // The next object, whole. It lives until the next is taken.
  msgpack::object Take();
  bool IsAtEnd() const { return rest_.empty(); }

 private:
  std::uint32_t TakeHead(bool isMap);

  std::span<const char> rest_;
  msgpack::zone zone_;
};

}  // namespace VELTRO::KELVO::ClientLib::Body
