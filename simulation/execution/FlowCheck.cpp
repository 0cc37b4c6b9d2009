#include "execution/FlowCheck.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "execution/Flow.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode2;
using ClientLib::CommandView;

namespace {

// Where the run may go from a command besides, or instead of, the next one.
struct Way {
  std::size_t From;
  bool GoesOn;                    // to the next command
  std::optional<std::size_t> To;  // in the list
};

enum class Kind { LoopStart, LoopEnd, LoopBreak, Goes, MayGo, Leaves };

struct FlowCode {
  std::int32_t Code;
  Kind What;
  bool IsRelative = false;
};

constexpr FlowCode FlowCodes[] = {
    {CommandCode2::LOOP_START, Kind::LoopStart},
    {CommandCode2::LOOP_END, Kind::LoopEnd},
    {CommandCode2::LOOP_BREAK, Kind::LoopBreak},
    {CommandCode2::BRANCH_ABS, Kind::Goes},
    {CommandCode2::BRANCH_ABS_COND, Kind::MayGo},
    {CommandCode2::BRANCH_ABS_COND_FLAG, Kind::MayGo},
    {CommandCode2::BRANCH_REL, Kind::Goes, true},
    {CommandCode2::BRANCH_REL_COND, Kind::MayGo, true},
    {CommandCode2::BRANCH_REL_COND_FLAG, Kind::MayGo, true},
    {CommandCode2::CASE_GOTO_ABS, Kind::MayGo},
    {CommandCode2::CASE_GOTO_REL, Kind::MayGo, true},
    {CommandCode2::DEFAULT_GOTO_ABS, Kind::MayGo},
    {CommandCode2::DEFAULT_GOTO_REL, Kind::MayGo, true},
    {CommandCode2::BRANCH_LIST, Kind::Leaves},
    {CommandCode2::GOTO_STANDALONE_LIST, Kind::Leaves},
    {CommandCode2::EXIT_LIST, Kind::Leaves},
};

const FlowCode* FindFlow(std::int32_t code) {
  const auto found = std::ranges::find(FlowCodes, code, &FlowCode::Code);
  return found == std::end(FlowCodes) ? nullptr : &*found;
}

class Check {
 public:
  explicit Check(const ClientLib::CommandList& list) : count_(list.GetCommandCount()) {
    std::size_t index = 0;
    list.ForEach([&](const CommandView& command) {
      // The codes of flow are neighbours; all others are passed quickly.
      if (command.Code >= Least && command.Code <= Most) Note(index, command);
      ++index;
    });
    for (const auto& open : matcher_.GetOpen()) AddFault(open.Index, LoopMatcher::NoEnd);
    std::ranges::stable_sort(faults_, {}, &FlowFault::First);
    if (areLoopsRight_) FindUnreached();
  }

  std::vector<FlowFault> TakeFaults() { return std::move(faults_); }

 private:
  static constexpr std::int32_t Least = std::ranges::min(FlowCodes, {}, &FlowCode::Code).Code;
  static constexpr std::int32_t Most = std::ranges::max(FlowCodes, {}, &FlowCode::Code).Code;

  void AddFault(std::size_t index, std::string text) { faults_.push_back({index, index, std::move(text)}); }

  void Note(std::size_t index, const CommandView& command) {
    const FlowCode* const flow = FindFlow(command.Code);
    if (flow == nullptr) return;
    const bool isLoop = flow->What == Kind::LoopStart || flow->What == Kind::LoopEnd;
    try {
      NoteWay(index, command, *flow);
    } catch (const std::exception& error) {
      AddFault(index, error.what());
      if (isLoop) areLoopsRight_ = false;
      ways_.push_back({index, flow->What != Kind::Goes, std::nullopt});
    }
  }

  void NoteWay(std::size_t index, const CommandView& command, const FlowCode& flow) {
    ClientLib::Command::CommandValueReader values(command.Payload);
    switch (flow.What) {
      case Kind::LoopStart: {
        const std::int32_t passes = values.AsInt32();
        matcher_.Start(index, LoopMatcher::DepthOf(command, true));
        ways_.push_back({index, passes > 0, std::nullopt});
        starts_.push_back(ways_.size() - 1);
        break;
      }
      case Kind::LoopEnd: {
        const Loop loop = matcher_.End(index, LoopMatcher::DepthOf(command, false));
        Way& start = ways_[starts_.back()];
        starts_.pop_back();
        if (!start.GoesOn) start.To = loop.End + 1;
        EndBreaks(loop);
        ways_.push_back({index, true, std::nullopt});
        break;
      }
      case Kind::LoopBreak:
        if (matcher_.GetOpen().empty()) throw std::runtime_error("No loop is open here.");
        breaks_.push_back(ways_.size());
        ways_.push_back({index, false, std::nullopt});
        break;
      case Kind::Goes:
      case Kind::MayGo: {
        const std::int64_t target =
            values.AsInt32() + (flow.IsRelative ? static_cast<std::int64_t>(index) : 0);
        ways_.push_back({index, flow.What == Kind::MayGo, BranchTarget(target, count_)});
        break;
      }
      case Kind::Leaves:
        ways_.push_back({index, false, std::nullopt});
        break;
    }
  }

  // The breaks in the loop lead behind its end.
  void EndBreaks(const Loop& loop) {
    while (!breaks_.empty() && ways_[breaks_.back()].From > loop.Start) {
      ways_[breaks_.back()].To = loop.End + 1;
      breaks_.pop_back();
    }
  }

  void FindUnreached() {
    std::vector<bool> isReached(count_ + 1);
    std::vector<std::size_t> begins{0};
    while (!begins.empty()) {
      std::size_t i = begins.back();
      begins.pop_back();
      auto way = std::ranges::lower_bound(ways_, i, {}, &Way::From);
      for (; i < count_ && !isReached[i]; ++i) {
        isReached[i] = true;
        if (way == ways_.end() || way->From != i) continue;
        if (way->To) begins.push_back(*way->To);
        if (!way->GoesOn) break;
        ++way;
      }
    }
    for (std::size_t i = 0; i < count_; ++i) {
      if (isReached[i]) continue;
      const std::size_t first = i;
      while (i + 1 < count_ && !isReached[i + 1]) ++i;
      faults_.push_back({first, i,
                         first == i ? "The command is never reached."
                                    : "The commands " + std::to_string(first) + " to " + std::to_string(i) +
                                          " are never reached."});
    }
  }

  const std::size_t count_;
  LoopMatcher matcher_;
  std::vector<Way> ways_;
  std::vector<std::size_t> starts_;  // in ways_, of the loops that are open
  std::vector<std::size_t> breaks_;  // in ways_, of the loops that are open
  bool areLoopsRight_ = true;
  std::vector<FlowFault> faults_;
};

}  // namespace

std::vector<FlowFault> CheckFlow(const ClientLib::CommandList& list) {
  return Check(list).TakeFaults();
}

}  // namespace VELTRO::KELVO::Simulation
