// The parts of the records of peripherals that are compiled once.
#include <algorithm>
#include <stdexcept>

#include "config/RecordText.h"
#include "peripherals/AdapterBoardConfig.h"
#include "peripherals/GpioConfig.h"
#include "peripherals/SerialPortConfig.h"
#include "peripherals/SpiConfig.h"

namespace VELTRO::KELVO::ClientLib {

template class Record<GpioConfig>;
template class Record<PortConfig>;
template class Record<SerialPortConfig>;
template class Record<SpiModule>;
template class Record<SpiConfig>;
template class Record<AdapterBoardConfig>;

std::string GpioPort::ToString() const {
  RecordText fields;
  WriteFields(*this, fields);
  return "{ " + fields.Take() + " }";
}

std::vector<GpioPort> GpioConfig::DefaultPorts() {
  std::vector<GpioPort> ports(IOPort::_values().size());
  for (std::size_t i = 1; i < ports.size(); i += 2) ports[i].Direction = IODirection::Output;
  return ports;
}

PinPlace GpioConfig::FindPin(std::string_view name) const {
  PinPlace place{0, 0};
  for (const GpioPort& port : Ports) {
    const auto found = std::ranges::find(port.PinNames, name);
    place.Pin = static_cast<std::int32_t>(found - port.PinNames.begin());
    if (found != port.PinNames.end() && !name.empty()) return place;
    ++place.Port;
  }
  throw std::runtime_error("There is no pin '" + std::string(name) + "'.");
}

}  // namespace VELTRO::KELVO::ClientLib
