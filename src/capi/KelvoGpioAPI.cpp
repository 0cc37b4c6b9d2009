#include "kelvo/KelvoGpioAPI.h"

#include "capi/FlatRecord.h"
#include "capi/WaitTime.h"
#include "peripherals/GpioAPI.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

uint32_t Bit(int32_t pin) {
  if (pin < 0 || pin > 31) throw std::runtime_error("Pin must be between 0 and 31.");
  return uint32_t{1} << pin;
}

}  // namespace

int32_t vlGpioInitConfig(vlGpioConfig* config) {
  return Flat::Init<GpioConfig>(config);
}

int32_t vlGpioGetConfig(int32_t handle, vlGpioConfig* config) {
  return Flat::Get<GpioAPI>(handle, config);
}

int32_t vlGpioSetConfig(int32_t handle, const vlGpioConfig* config) {
  return Flat::Set<GpioAPI, GpioConfig>(handle, config);
}

int32_t vlGpioLoadConfig(int32_t handle) {
  return Flat::Load<GpioAPI>(handle);
}

int32_t vlGpioStoreConfig(int32_t handle) {
  return Flat::Store<GpioAPI>(handle);
}

int32_t vlGpioToStringConfig(const vlGpioConfig* config, char* buffer, uint32_t size, uint32_t* length) {
  return Flat::ToString<GpioConfig>(config, buffer, size, length);
}

int32_t vlGpioConfigFindPin(const vlGpioConfig* config, const char* name, int32_t* port, int32_t* pin) {
  return Guarded([&] {
    NotNull(name, "name"), NotNull(port, "port"), NotNull(pin, "pin");
    const PinPlace place = Flat::Taken<GpioConfig>(config).FindPin(name);
    *port = place.Port, *pin = place.Pin;
  });
}

int32_t vlGpioReadPort(int32_t handle, int32_t port, uint32_t* pins) {
  return On<GpioAPI>(handle, [&](GpioAPI& gpio) {
    NotNull(pins, "pins");
    *pins = gpio.ReadPort(IOPort::_from_integral(port));
  });
}

int32_t vlGpioWritePort(int32_t handle, int32_t port, int32_t action, uint32_t pins) {
  return On<GpioAPI>(handle, [&](GpioAPI& gpio) {
    gpio.WritePort(IOPort::_from_integral(port), PinAction::_from_integral(action), pins);
  });
}

int32_t vlGpioReadPin(int32_t handle, int32_t port, int32_t pin, bool* active) {
  return On<GpioAPI>(handle, [&](GpioAPI& gpio) {
    NotNull(active, "active");
    const IOPort known = IOPort::_from_integral(port);
    const uint32_t bit = Bit(pin);
    *active = (gpio.ReadPort(known) & bit) != 0;
  });
}

int32_t vlGpioWritePin(int32_t handle, int32_t port, int32_t pin, bool active) {
  return On<GpioAPI>(handle, [&](GpioAPI& gpio) {
    const IOPort known = IOPort::_from_integral(port);
    gpio.WritePort(known, active ? PinAction::Set : PinAction::Clear, Bit(pin));
  });
}

int32_t vlGpioPulsePins(int32_t handle, int32_t port, uint32_t pins, double duration_us) {
  return On<GpioAPI>(handle,
                     [&](GpioAPI& gpio) { gpio.PulsePins(IOPort::_from_integral(port), pins, duration_us); });
}

int32_t vlGpioWaitForChange(int32_t handle, int32_t port, uint32_t pins, uint32_t known, int32_t timeout_ms,
                            uint32_t* now) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(now, "now");
    GpioAPI gpio(connection.Client);
    *now = gpio.WaitForChange(IOPort::_from_integral(port), pins, known, WaitTime(connection, timeout_ms));
    return ((*now ^ known) & pins) != 0 ? int32_t{0} : int32_t{1};
  });
}
