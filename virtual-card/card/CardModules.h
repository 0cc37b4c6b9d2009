// What is next to the card's pins: SPI modules and the registers of special functions. Both are connected with themselves.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "card/CardConfiguration.h"
#include "card/Executor.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class CardModules {
 public:
  using Bytes = std::vector<std::uint8_t>;

  CardModules(CardConfiguration& configuration, Executor& executor)
      : configuration_(configuration), executor_(executor) {}

  // Throws std::runtime_error "There is no SPI module MODULE.".
  void CheckSpi(std::int32_t module);
  // Gives back what it sends. Throws as CheckSpi, or std::runtime_error "A transfer has 65536 bytes at most.".
  Bytes Transfer(std::int32_t module, Bytes bytes);

  // Status: bit 0 while a list runs. Input: what Output is. Both throw std::runtime_error "There is no register WHICH.",
  // WriteRegister also "Register WHICH can only be read.".
  std::uint32_t ReadRegister(std::int32_t which);
  void WriteRegister(std::int32_t which, std::uint32_t value);

 private:
  CardConfiguration& configuration_;
  Executor& executor_;
  std::atomic<std::uint32_t> control_{0};
  std::atomic<std::uint32_t> output_{0};
};

}  // namespace VELTRO::KELVO::VirtualCard
