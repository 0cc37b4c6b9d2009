#include <chrono>

#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

void Pulse(Card& card, std::int32_t port, std::uint32_t pins, double microseconds) {
  constexpr double LongestUs = 60e6;
  if (!(microseconds > 0 && microseconds <= LongestUs)) {
    throw std::runtime_error("The duration of a pulse must be more than 0 and at most 60 s.");
  }
  using Steady = std::chrono::steady_clock;
  const auto end = Steady::now() + std::chrono::ceil<Steady::duration>(
                                       std::chrono::duration<double, std::micro>(microseconds));
  const std::uint64_t number = card.Ports.BeginPulse(port, pins);
  try {
    card.Pending.Add(&card.Ports, end, [&ports = card.Ports, number](bool isOver) {
      if (isOver) ports.EndPulse(number);
      return isOver;
    });
  } catch (...) {
    card.Ports.EndPulse(number);
    throw;
  }
}

Later<std::uint32_t> ChangeOf(Card& card, std::int32_t port, std::uint32_t pins, std::uint32_t known,
                              std::uint32_t timeout) {
  card.Ports.Read(port);  // throws when there is none
  return {std::chrono::milliseconds(timeout), [=, &ports = card.Ports](bool isOver) {
            const std::uint32_t now = ports.Get(port);
            return isOver || ((now ^ known) & pins) != 0 ? std::optional(now) : std::nullopt;
          }};
}

}  // namespace

std::span<const Method> PinMethods() {
  static constexpr Method Rows[] = {
      {"ReadGpioPort", [](Card& card, std::int32_t port) { return card.Ports.Read(port); }},
      {"WriteGpioPort", [](Card& card, std::int32_t port, std::int32_t action,
                           std::uint32_t pins) { card.Ports.Write(port, action, pins); }},
      {"PulseGpioPins", [](Card& card, std::int32_t port, std::uint32_t pins,
                           double duration) { Pulse(card, port, pins, duration); }},
      {"WaitForGpioChange", [](Card& card, std::int32_t port, std::uint32_t pins, std::uint32_t known,
                               std::uint32_t timeout) { return ChangeOf(card, port, pins, known, timeout); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
