#include "execution/Program.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "lists/CommandCodes.h"
#include "lists/Envelope.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode2;
using ClientLib::CommandView;

namespace {

namespace Envelope = ClientLib::Envelope;

std::string NameOf(std::int32_t code) {
  const auto mnemonic = ClientLib::MnemonicOf(code);
  return mnemonic ? std::string(*mnemonic) : "code " + std::to_string(code);
}

}  // namespace

Program::Program(std::string name, ClientLib::CommandList list, std::optional<std::int32_t> listId,
                 std::shared_ptr<const void> hold)
    : name_(std::move(name)), listId_(listId), hold_(std::move(hold)), list_(std::move(list)) {
  bytes_ = list_.Bytes();
  if (bytes_.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::runtime_error(name_ + " is too long.");
  }
  FindLoops();
}

CommandView Program::ReadAt(std::size_t& place) const {
  CommandView view;
  std::size_t size = 0;
  const unsigned char* const payload = Envelope::Get(bytes_.data() + place, view.Code, size);
  view.Payload = {payload, size};
  place = static_cast<std::size_t>(payload - bytes_.data()) + size;
  return view;
}

std::size_t Program::Find(std::size_t index) const {
  std::size_t place = places_[index / Stride];
  for (std::size_t steps = index % Stride; steps > 0; --steps) ReadAt(place);
  return place;
}

CommandView Program::At(std::size_t index) const {
  std::size_t place = Find(index);
  return ReadAt(place);
}

std::string Program::Describe(std::size_t index) const {
  if (index >= GetCommandCount()) return name_;
  return name_ + ", command " + std::to_string(index) + " (" + NameOf(At(index).Code) + ")";
}

std::size_t Program::LoopEndOf(std::size_t index) const {
  return std::ranges::lower_bound(loops_, index, {}, &Loop::Start)->End;
}

// Notes the commands' places on its way.
void Program::FindLoops() {
  LoopMatcher matcher;
  const std::size_t count = GetCommandCount();
  places_.reserve(count / Stride + 1);
  std::size_t place = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % Stride == 0) places_.push_back(static_cast<std::uint32_t>(place));
    const CommandView command = ReadAt(place);
    const bool isStart = command.Code == CommandCode2::LOOP_START;
    if (!isStart && command.Code != CommandCode2::LOOP_END) continue;
    try {
      const std::int32_t depth = LoopMatcher::DepthOf(command, isStart);
      if (isStart) {
        matcher.Start(i, depth);
      } else {
        loops_.push_back(matcher.End(i, depth));
      }
    } catch (const std::exception& error) {
      throw CommandError(*this, i, error.what());
    }
  }
  if (!matcher.GetOpen().empty())
    throw CommandError(*this, matcher.GetOpen().back().Index, LoopMatcher::NoEnd);
  std::ranges::sort(loops_, {}, &Loop::Start);
}

}  // namespace VELTRO::KELVO::Simulation
