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

// Reads a request id, a non-negative integer of up to 32 bits, from the start of `bytes` and adds its length
// to `position`. Throws std::runtime_error "Invalid packet!".
std::uint32_t TakeRequestId(std::span<const char> bytes, std::size_t& position);

// The length of the first object in `bytes`. Throws std::runtime_error, "Invalid packet! " and a reason, when
// there is no whole object or it is nested deeper than `depth`.
std::size_t Check(std::span<const char> bytes, std::uint32_t depth);

// Checks and unpacks the first object; its texts and byte strings refer to `bytes`. Sets `used` to its
// length.
msgpack::object_handle Unpack(std::span<const char> bytes, std::size_t& used, std::uint32_t depth);

// The same into a zone that the caller keeps and clears, which spares an allocation an object.
msgpack::object Unpack(std::span<const char> bytes, msgpack::zone& zone, std::uint32_t depth);

}  // namespace VELTRO::KELVO::ClientLib::Body
