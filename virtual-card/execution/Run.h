// One run of a list: all that its commands act upon.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "card/Notifier.h"
#include "execution/Clock.h"
#include "execution/Motion.h"
#include "execution/Program.h"

namespace VELTRO::KELVO::VirtualCard {

struct Run {
  struct Loop {
    std::size_t Start;        // index of its loop start
    std::size_t End;          // of its loop end
    std::int32_t PassesLeft;  // the current one included
  };

  const Program& Commands;
  Clock& Time;
  Motion& Galvos;
  Notifier& Clients;

  std::size_t Current = 0;       // index of the command that is executed
  std::size_t Next = 0;          // of the one after it; flow commands set it
  std::vector<Loop> Loops = {};  // those that are running, the innermost last
};

}  // namespace VELTRO::KELVO::VirtualCard
