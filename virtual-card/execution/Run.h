// One run of a list: all that its commands act upon.
#pragma once

#include <cstdint>
#include <optional>

#include "card/CardFonts.h"
#include "card/CardSystem.h"
#include "card/Notifier.h"
#include "execution/CallStack.h"
#include "execution/Clock.h"
#include "execution/Motion.h"
#include "execution/Programs.h"
#include "surroundings/ListVariables.h"
#include "surroundings/RunInputs.h"

namespace VELTRO::KELVO::VirtualCard {

struct Run {
  Clock& Time;
  Motion& Galvos;
  Notifier& Clients;
  RunInputs& Inputs;
  ListVariables& Variables;
  CardFonts& Fonts;
  CardSystem& System;
  Programs& Prepared;
  CallStack& Calls;
  std::optional<std::int32_t> StandaloneList;

  std::optional<std::int32_t> Font = {};  // chosen by the run; else the card's active one
};

}  // namespace VELTRO::KELVO::VirtualCard
