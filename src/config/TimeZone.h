// A time zone that the card knows.
#pragma once

#include <cstdint>
#include <string>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

struct TimeZone {
  std::string Name;            // what SystemConfig's TimeZone takes
  std::string DisplayName;     // for people
  std::int32_t UtcOffset = 0;  // minutes that its clocks are ahead of UTC

  std::string ToString() const { return Name; }

  // On the wire: an array of the three, in this order. What a newer card has behind them is ignored.
  MSGPACK_DEFINE_ARRAY(Name, DisplayName, UtcOffset)
};

}  // namespace VELTRO::KELVO::ClientLib
