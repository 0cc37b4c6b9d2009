// A list made ready to run: every command at its index, and the loops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "execution/Flow.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::Simulation {

// It adds little to the list's own bytes: lists may be as long as the card's memory is large.
class Program {
 public:
  // `name` is what errors call it, as "List 7"; `listId` is of a list that has one, `hold` lives as long as the
  // program. Finds the end of every loop.
  // Throws CommandError for a loop end without a start, a start without an end, or one whose depth is not
  // that of its start.
  Program(std::string name, ClientLib::CommandList list, std::optional<std::int32_t> listId = {},
          std::shared_ptr<const void> hold = {});

  std::optional<std::int32_t> GetListId() const { return listId_; }
  std::size_t GetCommandCount() const { return list_.GetCommandCount(); }
  ClientLib::CommandView At(std::size_t index) const;
  // The same for who goes on from command to command: `next` is where the one behind the latest begins.
  struct Place {
    std::size_t Index = 0, Byte = 0;
  };
  ClientLib::CommandView At(std::size_t index, Place& next) const {
    if (next.Index != index) next.Byte = Find(index);
    next.Index = index + 1;
    return ReadAt(next.Byte);
  }
  // What errors call the command: "List 7, command 12 (ARCA)", or "List 7" when there is none at `index`.
  std::string Describe(std::size_t index) const;
  // The index of the loop end that belongs to the loop start at `index`.
  std::size_t LoopEndOf(std::size_t index) const;

 private:
  // The place of every so many commands is noted, from where it is a few steps to any of them.
  static constexpr std::size_t Stride = 8;

  void FindLoops();
  // Where the command begins.
  std::size_t Find(std::size_t index) const;
  // The command at `place` in the list's bytes; moves `place` behind it.
  ClientLib::CommandView ReadAt(std::size_t& place) const;

  const std::string name_;
  const std::optional<std::int32_t> listId_;
  const std::shared_ptr<const void> hold_;
  ClientLib::CommandList list_;
  std::span<const unsigned char> bytes_;  // all of the list's
  std::vector<std::uint32_t> places_;     // of commands 0, Stride, 2 * Stride, ...
  std::vector<Loop> loops_;               // by their starts
};

struct CommandPlace {
  std::int32_t ListId;
  std::size_t Index;
};

// What is wrong with one command: its description and the reason.
class CommandError : public std::runtime_error {
 public:
  CommandError(const Program& program, std::size_t index, const std::string& reason)
      : std::runtime_error(program.Describe(index) + ": " + reason),
        list_(program.GetListId()),
        index_(index) {}

  // Nothing when the command is of no list: of a glyph, say.
  std::optional<CommandPlace> GetPlace() const {
    return list_ ? std::optional(CommandPlace{*list_, index_}) : std::nullopt;
  }

 private:
  const std::optional<std::int32_t> list_;
  const std::size_t index_;
};

}  // namespace VELTRO::KELVO::Simulation
