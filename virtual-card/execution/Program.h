// A list made ready to run: every command at its index, and the loops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "lists/CommandList.h"

namespace VELTRO::KELVO::VirtualCard {

class Program {
 public:
  // `name` is what errors call it, as "List 7"; `listId` is of a list that the card holds. Finds the end of every loop.
  // Throws CommandError for a loop end without a start, a start without an end, or one whose depth is not
  // that of its start.
  Program(std::string name, ClientLib::CommandList list, std::optional<std::int32_t> listId = {});

  std::optional<std::int32_t> GetListId() const { return listId_; }
  std::size_t GetCommandCount() const { return commands_.size(); }
  const ClientLib::CommandView& At(std::size_t index) const { return commands_[index]; }
  // What errors call the command: "List 7, command 12 (ARCA)", or "List 7" when there is none at `index`.
  std::string Describe(std::size_t index) const;
  // The index of the loop end that belongs to the loop start at `index`.
  std::size_t LoopEndOf(std::size_t index) const { return loopEnds_.at(index); }

 private:
  void FindLoops();

  const std::string name_;
  const std::optional<std::int32_t> listId_;
  const ClientLib::CommandList list_;  // whose memory the commands are in
  std::vector<ClientLib::CommandView> commands_;
  std::unordered_map<std::size_t, std::size_t> loopEnds_;
};

// What is wrong with one command: its description and the reason.
class CommandError : public std::runtime_error {
 public:
  CommandError(const Program& program, std::size_t index, const std::string& reason)
      : std::runtime_error(program.Describe(index) + ": " + reason) {}
};

}  // namespace VELTRO::KELVO::VirtualCard
