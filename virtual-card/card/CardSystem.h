// The card as a whole: its operating state and its clock.
#pragma once

#include <atomic>
#include <cstdint>

#include "card/CardConfiguration.h"
#include "config/DateTime.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class CardSystem {
 public:
  explicit CardSystem(CardConfiguration& configuration);

  // OperatingState flags: ConfigurationFailed until it is reset, when something stored could not be read.
  std::int32_t GetOperatingState() const { return operatingState_; }
  void ResetOperatingState();

  // The time, with the bits above the ticks that say its kind. The clock is the host's and what Set added.
  std::uint64_t GetTime();
  std::uint64_t GetUniversalTime();
  void SetTime(const ClientLib::DateTime& universal);

 private:
  CardConfiguration& configuration_;
  std::atomic<std::int32_t> operatingState_;
  std::atomic<std::int64_t> ahead_{0};  // ticks that the clock is ahead of the host's
};

}  // namespace VELTRO::KELVO::VirtualCard
