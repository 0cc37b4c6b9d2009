// One run of a list: all that its commands act upon.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "execution/CallStack.h"
#include "execution/Clock.h"
#include "execution/Motion.h"
#include "execution/Programs.h"
#include "surroundings/RunSurroundings.h"

namespace VELTRO::KELVO::Simulation {

struct Run {
  Clock& Time;
  Motion& Galvos;
  const RunSurroundings& Around;
  Programs& Prepared;
  CallStack& Calls;
  std::optional<std::int32_t> StandaloneList;
  std::atomic<std::uint64_t>& Executed;  // commands

  std::uint64_t MostCommands = ~std::uint64_t{0};
  std::optional<std::int32_t> Font = {};  // chosen by the run; else the active one
};

}  // namespace VELTRO::KELVO::Simulation
