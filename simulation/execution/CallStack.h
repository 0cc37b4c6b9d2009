// The lists and glyphs that a run is in, each called by the one before it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "execution/Carets.h"
#include "execution/Program.h"

namespace VELTRO::KELVO::Simulation {

// A list or glyph that is being run, and how far it is. Flow commands set where it goes on.
struct Frame {
  struct Loop {
    std::size_t Start;        // index of its loop start
    std::size_t End;          // of its loop end
    std::int32_t PassesLeft;  // the current one included
  };
  struct Switch {
    std::int32_t Value;
    bool IsDecided = false;  // a case or the default has acted
  };

  std::shared_ptr<const Program> Commands;
  std::size_t Current = 0;  // index of the command that is executed
  std::size_t Next = 0;     // of the one after it
  Program::Place Place = {};
  std::vector<Loop> Loops;  // those that are running, the innermost last
  std::optional<Switch> Choice;
  std::vector<std::shared_ptr<const Program>> Rest;  // what was called with it and comes next, the next last
};

class CallStack {
 public:
  // Calls that may be under way at once.
  static constexpr std::size_t MostCalls = Carets::MostLevels - 1;

  explicit CallStack(Carets& carets) : carets_(carets) { frames_.reserve(Carets::MostLevels); }
  ~CallStack() { carets_.SetLevels(0); }
  CallStack(const CallStack&) = delete;
  CallStack& operator=(const CallStack&) = delete;

  Frame& Top() { return frames_.back(); }
  // Goes on at the program's first command; Leave goes on in the `rest`, last to first, and then comes back.
  // Throws std::runtime_error "More than 64 calls are open.".
  void Enter(std::shared_ptr<const Program> program, std::vector<std::shared_ptr<const Program>> rest = {});
  // Goes on at the program's first command in place of the current one.
  void Replace(std::shared_ptr<const Program> program);
  // Ends the current program; false when there is nothing to go on with.
  bool Leave();
  // Takes up the next command of the current program; false at its end.
  bool Step() {
    Frame& frame = frames_.back();
    if (frame.Next >= frame.Commands->GetCommandCount()) return false;
    frame.Current = frame.Next++;
    ShowPlace(frame);
    return true;
  }

 private:
  void ShowPlace(const Frame& frame) {
    if (const auto id = frame.Commands->GetListId()) carets_.Set(frames_.size() - 1, *id, frame.Current);
  }

  Carets& carets_;
  std::vector<Frame> frames_;
  std::shared_ptr<const Program> replaced_;  // its command is being executed until the next Step
};

}  // namespace VELTRO::KELVO::Simulation
