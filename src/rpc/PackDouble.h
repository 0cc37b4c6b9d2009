// Doubles in MessagePack.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

// As float 64, whatever the value: the library's own packing makes integers of whole numbers, and loses the sign of a
// negative zero.
template <class Stream>
void PackDouble(msgpack::packer<Stream>& packer, double value) {
  char bytes[9] = {'\xCB'};
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (std::size_t i = 0; i < 8; ++i) bytes[1 + i] = static_cast<char>(bits >> (56 - 8 * i));
  packer.pack_bin_body(bytes, sizeof bytes);  // as they are
}

}  // namespace VELTRO::KELVO::ClientLib
