#include "execution/CallStack.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

void CallStack::Enter(std::shared_ptr<const Program> program) {
  if (frames_.size() > MostCalls) {
    throw std::runtime_error("More than " + std::to_string(MostCalls) + " calls are open.");
  }
  carets_.SetNone(frames_.size());
  frames_.push_back({std::move(program), 0, 0, {}, {}});
  carets_.SetLevels(frames_.size());
}

void CallStack::Replace(std::shared_ptr<const Program> program) {
  replaced_ = std::exchange(Top(), Frame{std::move(program), 0, 0, {}, {}}).Commands;
  carets_.SetNone(frames_.size() - 1);
}

bool CallStack::Leave() {
  if (frames_.size() == 1) return false;
  frames_.pop_back();
  carets_.SetLevels(frames_.size());
  return true;
}

}  // namespace VELTRO::KELVO::VirtualCard
