// A time zone that the card knows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rpc/WireFields.h"

namespace VELTRO::KELVO::ClientLib {

struct TimeZone {
  static constexpr std::string_view WireName = "timeZone";

  std::string Name;            // what SystemConfig's TimeZone takes
  std::string DisplayName;     // for people
  std::int32_t UtcOffset = 0;  // minutes that its clocks are ahead of UTC

  std::string ToString() const { return Name; }

  template <class Self>
  static auto WireFields(Self& self) {
    return std::tie(self.Name, self.DisplayName, self.UtcOffset);
  }
};

}  // namespace VELTRO::KELVO::ClientLib
