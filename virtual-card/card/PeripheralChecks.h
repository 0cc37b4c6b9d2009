// What the card can be of what its records of peripheral input and output say.
#pragma once

#include "peripherals/GpioConfig.h"
#include "peripherals/SerialPortConfig.h"
#include "peripherals/SpiConfig.h"

namespace VELTRO::KELVO::VirtualCard {

// Each throws std::runtime_error with the text that a client gets.
void CheckPorts(const ClientLib::GpioConfig& config);
void CheckSerialPorts(const ClientLib::SerialPortConfig& config);
void CheckSpiModules(const ClientLib::SpiConfig& config);

}  // namespace VELTRO::KELVO::VirtualCard
