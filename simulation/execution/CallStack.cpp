#include "execution/CallStack.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::Simulation {

void CallStack::Enter(std::shared_ptr<const Program> program,
                      std::vector<std::shared_ptr<const Program>> rest) {
  if (frames_.size() > MostCalls) {
    throw std::runtime_error("More than " + std::to_string(MostCalls) + " calls are open.");
  }
  carets_.SetNone(frames_.size());
  frames_.push_back({std::move(program), 0, 0, {}, {}, {}, std::move(rest)});
  carets_.SetLevels(frames_.size());
}

void CallStack::Replace(std::shared_ptr<const Program> program) {
  Frame& frame = Top();
  std::vector<std::shared_ptr<const Program>> rest = std::move(frame.Rest);
  replaced_ = std::exchange(frame, Frame{std::move(program), 0, 0, {}, {}, {}, std::move(rest)}).Commands;
  carets_.SetNone(frames_.size() - 1);
}

bool CallStack::Leave() {
  auto& rest = Top().Rest;
  if (!rest.empty()) {
    const auto next = std::move(rest.back());
    rest.pop_back();
    Replace(next);
    return true;
  }
  if (frames_.size() == 1) return false;
  frames_.pop_back();
  carets_.SetLevels(frames_.size());
  return true;
}

}  // namespace VELTRO::KELVO::Simulation
