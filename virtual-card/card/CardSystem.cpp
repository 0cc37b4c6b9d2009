#include "card/CardSystem.h"

#include <chrono>

#include "card/TimeZones.h"
#include "common/KelvoAPIEnums.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::DateTime;
using ClientLib::OperatingState;

namespace {

constexpr std::uint64_t UniversalKind = std::uint64_t{1} << 62;
constexpr std::uint64_t LocalKind = std::uint64_t{2} << 62;

std::int64_t HostTicks() {
  using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, DateTime::TicksPerSecond>>;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<Ticks>(now).count() + DateTime::Epoch;
}

std::uint64_t Combined(std::int64_t ticks, std::uint64_t kind) {
  return (static_cast<std::uint64_t>(ticks) & DateTime::TicksMask) | kind;
}

}  // namespace

CardSystem::CardSystem(CardConfiguration& configuration)
    : configuration_(configuration),
      operatingState_(configuration.IsSound() ? OperatingState::Normal
                                              : OperatingState::ConfigurationFailed) {}

void CardSystem::ResetOperatingState() {
  operatingState_ = OperatingState::Normal;
}

std::uint64_t CardSystem::GetTime() {
  constexpr std::int64_t TicksPerMinute = 60 * DateTime::TicksPerSecond;
  const std::int64_t offset = FindTimeZone(configuration_.System.Get().TimeZone).UtcOffset;
  return Combined(HostTicks() + ahead_ + offset * TicksPerMinute, LocalKind);
}

std::uint64_t CardSystem::GetUniversalTime() {
  return Combined(HostTicks() + ahead_, UniversalKind);
}

void CardSystem::SetTime(const DateTime& universal) {
  ahead_ = universal.GetTicks() - HostTicks();
}

}  // namespace VELTRO::KELVO::VirtualCard
