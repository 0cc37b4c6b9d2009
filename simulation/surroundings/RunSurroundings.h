// All that a run looks at and acts upon besides the galvos. Who runs lists provides it: a card with its clients, or a
// program that wants to see what a list draws.
#pragma once

#include <cstdint>
#include <functional>

#include "config/DateTime.h"
#include "config/ProcessVariables.h"
#include "surroundings/AbortSignal.h"
#include "surroundings/FontSource.h"
#include "surroundings/ListSource.h"
#include "surroundings/ListVariables.h"
#include "surroundings/MarkTimeFormat.h"
#include "surroundings/Pins.h"
#include "surroundings/RunInputs.h"
#include "surroundings/SerialPorts.h"

namespace VELTRO::KELVO::Simulation {

struct RunSurroundings {
  AbortSignal& Abort;  // of the run that is running; also wakes its waits
  RunInputs& Inputs;
  Pins& Ports;
  SerialPorts& Serial;
  ListVariables& Variables;
  MarkTimeFormat& TimeFormat;
  ListSource& Lists;
  FontSource& Fonts;
  std::function<ClientLib::ProcessVariables()> GetProcessVariables;  // what holds at the start of a run
  std::function<ClientLib::DateTime()> GetLocalTime;
  std::function<void(std::int32_t)> TellProgress;
  std::function<void(std::int32_t)> CheckSpiModule;  // throws when there is none of that number
};

}  // namespace VELTRO::KELVO::Simulation
