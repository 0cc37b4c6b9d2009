// An input port and its bits, as an option or a line of standard input gives them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

struct InputSetting {
  std::int32_t Port;
  std::uint32_t Bits;
};

// The bits are decimal or, behind "0x", hexadecimal. Nothing when either is no such number.
std::optional<InputSetting> ParseInput(std::string_view port, std::string_view bits);

}  // namespace VELTRO::KELVO::VirtualCard
