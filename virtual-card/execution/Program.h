// A list made ready to run: every command at its index, and the loops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "lists/CommandList.h"

namespace VELTRO::KELVO::VirtualCard {

// What is wrong with one command of a list. Its text names the command: "command 12 (ARCA): " and the reason.
class CommandError : public std::runtime_error {
 public:
  CommandError(std::size_t index, std::int32_t code, const std::string& reason);
};

class Program {
 public:
  // Finds the end of every loop. Throws CommandError for a loop end without a start, a start without an end,
  // or one whose depth is not that of its start.
  explicit Program(const ClientLib::CommandList& list);

  std::size_t GetCommandCount() const { return commands_.size(); }
  const ClientLib::CommandView& At(std::size_t index) const { return commands_[index]; }
  // The index of the loop end that belongs to the loop start at `index`.
  std::size_t LoopEndOf(std::size_t index) const { return loopEnds_.at(index); }

 private:
  void FindLoops();

  const ClientLib::CommandList list_;  // whose memory the commands are in
  std::vector<ClientLib::CommandView> commands_;
  std::unordered_map<std::size_t, std::size_t> loopEnds_;
};

}  // namespace VELTRO::KELVO::VirtualCard
