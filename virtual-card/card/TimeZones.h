// The time zones that the card knows.
#pragma once

#include <string>
#include <vector>

#include "config/TimeZone.h"

namespace VELTRO::KELVO::VirtualCard {

// In the order of their clocks. They keep standard time the whole year.
std::vector<ClientLib::TimeZone> SupportedTimeZones();

// Throws std::runtime_error "There is no time zone 'NAME'.".
ClientLib::TimeZone FindTimeZone(const std::string& name);

}  // namespace VELTRO::KELVO::VirtualCard
