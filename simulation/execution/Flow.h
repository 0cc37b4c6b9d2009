// Which loop start belongs to which loop end, and where branches may lead.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::Simulation {

struct Loop {
  std::uint32_t Start, End;  // indices
};

// Is shown the loop starts and ends of a list in their order.
class LoopMatcher {
 public:
  struct OpenStart {
    std::size_t Index;
    std::int32_t Depth;
  };

  static std::int32_t DepthOf(const ClientLib::CommandView& command, bool isStart) {
    ClientLib::Command::CommandValueReader reader(command.Payload);
    if (isStart) reader.AsInt32();  // the count
    return reader.AsInt32();
  }

  void Start(std::size_t index, std::int32_t depth) { open_.push_back({index, depth}); }
  // Throws std::runtime_error when the end is not that of the innermost loop.
  Loop End(std::size_t index, std::int32_t depth) {
    if (open_.empty()) throw std::runtime_error("No loop is open here.");
    const OpenStart start = open_.back();
    if (start.Depth != depth) {
      throw std::runtime_error("It ends loop depth " + std::to_string(depth) + ", but depth " +
                               std::to_string(start.Depth) + " is open here.");
    }
    open_.pop_back();
    return {static_cast<std::uint32_t>(start.Index), static_cast<std::uint32_t>(index)};
  }
  const std::vector<OpenStart>& GetOpen() const { return open_; }

  static constexpr const char* NoEnd = "The loop has no end.";

 private:
  std::vector<OpenStart> open_;
};

// The end of the list is a target, too. Throws std::runtime_error.
inline std::size_t BranchTarget(std::int64_t target, std::size_t commandCount) {
  if (target < 0 || static_cast<std::uint64_t>(target) > commandCount) {
    throw std::runtime_error("There is no command " + std::to_string(target) + " to branch to.");
  }
  return static_cast<std::size_t>(target);
}

}  // namespace VELTRO::KELVO::Simulation
