// A wire between two pins, as an option gives it.
#pragma once

#include <optional>
#include <string_view>

#include "surroundings/Pins.h"

namespace VELTRO::KELVO::VirtualCard {

// "PORT.PIN=PORT.PIN", from an output to an input. Nothing when it is no such text, names no pins of the card, or leads
// from a pin to the same.
std::optional<Simulation::Wire> ParseWire(std::string_view text);

}  // namespace VELTRO::KELVO::VirtualCard
