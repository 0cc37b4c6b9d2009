#include "console/InputSetting.h"

#include <charconv>

namespace VELTRO::KELVO::VirtualCard {

namespace {

template <class T>
bool Parse(std::string_view text, int base, T& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::optional<InputSetting> ParseInput(std::string_view port, std::string_view bits) {
  InputSetting result{};
  const bool isHexadecimal = bits.starts_with("0x") || bits.starts_with("0X");
  if (isHexadecimal) bits.remove_prefix(2);
  if (!Parse(port, 10, result.Port) || !Parse(bits, isHexadecimal ? 16 : 10, result.Bits)) return {};
  return result;
}

}  // namespace VELTRO::KELVO::VirtualCard
