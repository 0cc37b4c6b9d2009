// The card's SPI modules.
#pragma once

#include <cstdint>
#include <vector>

#include "config/RecordAPI.h"
#include "peripherals/SpiConfig.h"

namespace VELTRO::KELVO::ClientLib {

class SpiAPI : public RecordAPI<SpiConfig> {
 public:
  using RecordAPI::RecordAPI;
  using Bytes = std::vector<std::uint8_t>;

  // Sends the bytes and returns as many that came meanwhile.
  Bytes Transfer(std::int32_t module, const Bytes& bytes) {
    return caller_.Call<Bytes>("TransferSpi", module, bytes);
  }
};

}  // namespace VELTRO::KELVO::ClientLib
