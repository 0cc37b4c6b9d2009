// A run without a card: nothing is waited for, and nobody is outside.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>

#include "config/ProcessVariables.h"
#include "execution/Simulation.h"
#include "lists/CommandList.h"
#include "services/Font.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::Simulation {

// What the run finds.
struct Stage {
  std::map<std::int32_t, ClientLib::CommandList> Lists;  // that it may call
  std::map<std::int32_t, ClientLib::Font> Fonts;         // the first is the active one
  std::map<std::int32_t, std::uint32_t> Inputs;          // levels on the pins of ports
  std::optional<std::int32_t> StandaloneList;
  ClientLib::ProcessVariables Variables;
  std::uint64_t MostCommands = 50'000'000;  // that are carried out
};

// docs/simulation.md says what is different from a run on a card. A run that is aborted waits for a second start, unless
// Abort was called.
class Rehearsal {
 public:
  static constexpr double LimitUs = 24 * 3600e6;  // of simulated time

  explicit Rehearsal(Stage stage) : stage_(std::move(stage)) {}

  // Runs the list as list `id`, which stands for it when lists call it. Once.
  RunResult Run(std::int32_t id, ClientLib::CommandList list, Canvas& canvas);
  // Where the run is in the list, for its canvas.
  std::int32_t GetCaret(std::int32_t id) const { return carets_.Find(id); }
  // Any thread may call it.
  void Abort() { abort_.Raise(); }

 private:
  Stage stage_;
  AbortSignal abort_;
  Carets carets_;
};

}  // namespace VELTRO::KELVO::Simulation
