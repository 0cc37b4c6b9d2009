#include "execution/Program.h"

#include <exception>
#include <utility>

#include "lists/CommandCodes.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Command;
using ClientLib::CommandCode2;
using ClientLib::CommandView;

namespace {

std::string NameOf(std::int32_t code) {
  const auto mnemonic = ClientLib::MnemonicOf(code);
  return mnemonic ? std::string(*mnemonic) : "code " + std::to_string(code);
}

struct OpenStart {
  std::size_t Index;
  std::int32_t Depth;
};

std::int32_t DepthOf(const CommandView& command, bool isStart) {
  Command::CommandValueReader reader(command.Payload);
  if (isStart) reader.AsInt32();  // the count
  return reader.AsInt32();
}

}  // namespace

Program::Program(std::string name, ClientLib::CommandList list, std::optional<std::int32_t> listId)
    : name_(std::move(name)), listId_(listId), list_(std::move(list)) {
  commands_.reserve(list_.GetCommandCount());
  list_.ForEach([this](const CommandView& command) { commands_.push_back(command); });
  FindLoops();
}

std::string Program::Describe(std::size_t index) const {
  if (index >= commands_.size()) return name_;
  return name_ + ", command " + std::to_string(index) + " (" + NameOf(commands_[index].Code) + ")";
}

void Program::FindLoops() {
  std::vector<OpenStart> open;
  for (std::size_t i = 0; i < commands_.size(); ++i) {
    const CommandView& command = commands_[i];
    const bool isStart = command.Code == CommandCode2::LOOP_START;
    if (!isStart && command.Code != CommandCode2::LOOP_END) continue;
    try {
      const std::int32_t depth = DepthOf(command, isStart);
      if (isStart) {
        open.push_back({i, depth});
        continue;
      }
      if (open.empty()) throw std::runtime_error("No loop is open here.");
      if (open.back().Depth != depth) {
        throw std::runtime_error("It ends loop depth " + std::to_string(depth) + ", but depth " +
                                 std::to_string(open.back().Depth) + " is open here.");
      }
      loopEnds_.emplace(open.back().Index, i);
      open.pop_back();
    } catch (const std::exception& error) {
      throw CommandError(*this, i, error.what());
    }
  }
  if (!open.empty()) throw CommandError(*this, open.back().Index, "The loop has no end.");
}

}  // namespace VELTRO::KELVO::VirtualCard
