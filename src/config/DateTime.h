// A point in time as the card counts it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

// One 64-bit number: the low 62 bits count ticks of 100 ns since midnight of 1 January of the year 1, the two bits
// above them say what kind of time it is. The kind is taken as it comes and never sent.
class DateTime {
 public:
  static constexpr std::string_view WireName = "time";
  static constexpr std::uint64_t TicksMask = (std::uint64_t{1} << 62) - 1;
  static constexpr std::int64_t TicksPerSecond = 10000000;
  static constexpr std::int64_t Epoch = 621355968000000000;      // 1 January 1970
  static constexpr std::int64_t LastTick = 3155378975999999999;  // of the year 9999
  static constexpr std::uint64_t LastSecond = (LastTick - Epoch) / TicksPerSecond;

  constexpr DateTime() = default;
  constexpr explicit DateTime(std::uint64_t value) : value_(value) {}

  // From seconds since 1 January 1970. Throws std::invalid_argument "The time is beyond the year 9999.".
  static constexpr DateTime FromSeconds(std::uint64_t seconds) {
    if (seconds > LastSecond) throw std::invalid_argument("The time is beyond the year 9999.");
    return DateTime(seconds * TicksPerSecond + Epoch);
  }
  // Seconds since 1 January 1970, without their fraction; negative before it.
  constexpr std::int64_t ToSeconds() const { return (GetTicks() - Epoch) / TicksPerSecond; }

  constexpr std::int64_t GetTicks() const { return static_cast<std::int64_t>(value_ & TicksMask); }
  std::string ToString() const { return std::to_string(GetTicks()); }

  template <class Packer>
  void msgpack_pack(Packer& packer) const {
    packer.pack(value_ & TicksMask);
  }
  // A card that sends signed numbers makes the highest kinds negative.
  void msgpack_unpack(const msgpack::object& object) {
    value_ = object.type == msgpack::type::NEGATIVE_INTEGER
                 ? static_cast<std::uint64_t>(object.as<std::int64_t>())
                 : object.as<std::uint64_t>();
  }

 private:
  std::uint64_t value_ = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
