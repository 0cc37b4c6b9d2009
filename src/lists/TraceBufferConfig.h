// What a card records in its trace buffer. The four numbers are passed on as they are: their meaning is the card's.
#pragma once

#include <cstdint>

namespace VELTRO::KELVO::ClientLib {

struct TraceBufferConfig {
  std::int32_t Mode = 0;
  std::uint32_t Signals = 0;
  std::uint32_t Period = 0;
  std::uint32_t Length = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
