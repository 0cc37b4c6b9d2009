// The card's serial ports.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "config/RecordAPI.h"
#include "peripherals/LongWait.h"
#include "peripherals/SerialPortConfig.h"

namespace VELTRO::KELVO::ClientLib {

class SerialPortAPI : public RecordAPI<SerialPortConfig> {
 public:
  using RecordAPI::RecordAPI;
  using Bytes = std::vector<std::uint8_t>;

  void Write(std::int32_t port, const Bytes& bytes) { caller_.Call("WriteSerialPort", port, bytes); }
  // Returns what has been received, `most` bytes at most, as soon as there is something; nothing when there is
  // none within `timeout`.
  Bytes Read(std::int32_t port, std::uint32_t most, std::chrono::milliseconds timeout) {
    return WaitLong(
        caller_, timeout,
        [&](std::uint32_t milliseconds) {
          return caller_.Call<Bytes>("ReadSerialPort", port, most, milliseconds);
        },
        [](const Bytes& bytes) { return !bytes.empty(); });
  }
  // Forgets what has been received and not read.
  void Flush(std::int32_t port) { caller_.Call("FlushSerialPort", port); }
};

}  // namespace VELTRO::KELVO::ClientLib
