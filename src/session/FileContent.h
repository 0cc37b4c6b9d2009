// Which calls carry what a file contains, for recordings that leave it out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rpc/FrameTap.h"
#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// A method that carries it, and which argument does; none: the result does.
struct ContentPlace {
  std::string_view Method;
  std::optional<std::size_t> Argument;
};
// Null for a method that carries none that way.
const ContentPlace* FindContent(std::string_view method, FrameWay way);

// Puts nil in place of the content that the arguments or the result have there; returns how many bytes it was.
std::uint64_t LeaveOut(msgpack::object& value, const ContentPlace& place);

// In place of a result that was left out, packed: as many bytes, of nothing.
std::string PackedFiller(std::string_view method, std::uint64_t size);

}  // namespace VELTRO::KELVO::ClientLib::Recording
