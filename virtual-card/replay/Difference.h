// Where two values differ.
#pragma once

#include <cstddef>
#include <string>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::VirtualCard {

struct Difference {
  std::size_t Count = 0;  // of the values in them that differ
  // Of the first: where it is ("[0].name[2]"), and what each has there, as JSON; "nothing" where it has none.
  std::string Path, Left, Right;
};

Difference FindDifference(const msgpack::object& left, const msgpack::object& right);

}  // namespace VELTRO::KELVO::VirtualCard
