// General-purpose input and output: the pins of the card's ports.
#pragma once

#include <chrono>
#include <cstdint>

#include "config/RecordAPI.h"
#include "peripherals/GpioConfig.h"
#include "peripherals/LongWait.h"

namespace VELTRO::KELVO::ClientLib {

// Pins are a port's bits; those that are set are active, whatever the port's polarity.
class GpioAPI : public RecordAPI<GpioConfig> {
 public:
  using RecordAPI::RecordAPI;

  std::uint32_t ReadPort(IOPort port) {
    return caller_.Call<std::uint32_t>("ReadGpioPort", port._to_integral());
  }
  void WritePort(IOPort port, PinAction action, std::uint32_t pins) {
    caller_.Call("WriteGpioPort", port._to_integral(), action._to_integral(), pins);
  }
  // In microseconds.
  void PulsePins(IOPort port, std::uint32_t pins, double duration) {
    caller_.Call("PulseGpioPins", port._to_integral(), pins, duration);
  }
  // Returns the port's pins when one of `pins` is another than in `known`, or `timeout` is over.
  std::uint32_t WaitForChange(IOPort port, std::uint32_t pins, std::uint32_t known,
                              std::chrono::milliseconds timeout) {
    return WaitLong(
        caller_, timeout,
        [&](std::uint32_t milliseconds) {
          return caller_.Call<std::uint32_t>("WaitForGpioChange", port._to_integral(), pins, known,
                                             milliseconds);
        },
        [&](std::uint32_t levels) { return ((levels ^ known) & pins) != 0; });
  }
};

}  // namespace VELTRO::KELVO::ClientLib
