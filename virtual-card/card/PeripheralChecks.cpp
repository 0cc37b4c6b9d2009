#include "card/PeripheralChecks.h"

#include <cmath>
#include <set>
#include <stdexcept>
#include <string>

#include "surroundings/Pins.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::GpioPort;
using ClientLib::PortConfig;
using ClientLib::SpiModule;

namespace {

constexpr std::size_t MostPinNameBytes = 31, MostPinNames = 32;

void Demand(bool holds, const std::string& text) {
  if (!holds) throw std::runtime_error(text);
}

void CheckName(const std::string& name) {
  Demand(name.size() <= MostPinNameBytes,
         "The name '" + name.substr(0, MostPinNameBytes) + "...' has more than 31 bytes.");
}

// The subject of texts about one of several.
std::string Numbered(const std::string& what, std::size_t index) {
  return what + " " + std::to_string(index) + ": ";
}

bool IsBetween(std::int64_t value, std::int64_t least, std::int64_t most) {
  return value >= least && value <= most;
}

}  // namespace

void CheckPorts(const ClientLib::GpioConfig& config) {
  Demand(config.Ports.size() == Simulation::Pins::PortCount, "The card has 8 ports of pins.");
  std::set<std::string> names;
  for (std::size_t i = 0; i < config.Ports.size(); ++i) {
    const GpioPort& port = config.Ports[i];
    const std::string at = Numbered("Port", i);
    Demand(std::isfinite(port.DebounceTime) && port.DebounceTime >= 0,
           at + "The debounce time must be finite and not negative.");
    Demand(port.PinNames.size() <= MostPinNames, at + "It has 32 pins.");
    CheckName(port.PortName);
    for (const std::string& name : port.PinNames) {
      CheckName(name);
      Demand(name.empty() || names.insert(name).second, "Two pins are called '" + name + "'.");
    }
  }
}

void CheckSerialPorts(const ClientLib::SerialPortConfig& config) {
  Demand(IsBetween(std::ssize(config.Ports), 1, 4), "The card has 1 to 4 serial ports.");
  for (std::size_t i = 0; i < config.Ports.size(); ++i) {
    const PortConfig& port = config.Ports[i];
    const std::string at = Numbered("Serial port", i);
    Demand(IsBetween(port.BaudRate, 300, 4000000), at + "The baud rate must be 300 to 4000000.");
    Demand(IsBetween(port.DataBits, 5, 8), at + "The number of data bits must be 5 to 8.");
  }
}

void CheckSpiModules(const ClientLib::SpiConfig& config) {
  Demand(IsBetween(std::ssize(config.Modules), 1, 8), "The card has 1 to 8 SPI modules.");
  for (std::size_t i = 0; i < config.Modules.size(); ++i) {
    const SpiModule& module = config.Modules[i];
    const std::string at = Numbered("SPI module", i);
    Demand(IsBetween(module.Mode, 0, 3), at + "The mode must be 0 to 3.");
    Demand(std::isfinite(module.ClockFrequency) && module.ClockFrequency > 0,
           at + "The clock frequency must be positive and finite.");
    Demand(IsBetween(module.WordLength, 4, 32), at + "The word length must be 4 to 32.");
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
