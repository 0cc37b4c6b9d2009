#include "console/WireSetting.h"

#include <algorithm>
#include <charconv>

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr std::int32_t PinCount = 32;

// A number below `count`, and nothing else.
std::optional<std::int32_t> NumberBelow(std::int32_t count, std::string_view text) {
  std::int32_t number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole && number >= 0 && number < count ? std::optional(number) : std::nullopt;
}

std::optional<Simulation::Pin> ParsePin(std::string_view text) {
  const std::size_t point = std::min(text.find('.'), text.size());
  const auto port = NumberBelow(Simulation::Pins::PortCount, text.substr(0, point));
  const auto number = NumberBelow(PinCount, text.substr(std::min(point + 1, text.size())));
  return port && number ? std::optional(Simulation::Pin{*port, *number}) : std::nullopt;
}

}  // namespace

std::optional<Simulation::Wire> ParseWire(std::string_view text) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const auto from = ParsePin(text.substr(0, equals));
  const auto to = ParsePin(text.substr(std::min(equals + 1, text.size())));
  return from && to && !(*from == *to) ? std::optional(Simulation::Wire{*from, *to}) : std::nullopt;
}

}  // namespace VELTRO::KELVO::VirtualCard
