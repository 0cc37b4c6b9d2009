#include <bit>

#include "execution/CommandTable.h"
#include "execution/Conditions.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::CommandCode2;

namespace {

void StartLoop(Run& run, std::int32_t count) {
  Frame& frame = run.Calls.Top();
  const std::size_t end = frame.Commands->LoopEndOf(frame.Current);
  if (count > 0) {
    frame.Loops.push_back({frame.Current, end, count});
  } else {
    frame.Next = end + 1;
  }
}

// The innermost loop that is running.
Frame::Loop& OpenLoop(Frame& frame) {
  if (frame.Loops.empty()) throw std::runtime_error("No loop is open here.");
  return frame.Loops.back();
}

void EndLoop(Run& run) {
  Frame& frame = run.Calls.Top();
  Frame::Loop& loop = OpenLoop(frame);
  // A branch may have led into a loop past its start.
  if (loop.End != frame.Current) throw std::runtime_error("Its loop is not open here.");
  if (--loop.PassesLeft > 0) {
    frame.Next = loop.Start + 1;
  } else {
    frame.Loops.pop_back();
  }
}

void BreakLoop(Run& run) {
  Frame& frame = run.Calls.Top();
  frame.Next = OpenLoop(frame).End + 1;
  frame.Loops.pop_back();
}

// Leaves the loops that the target is not in. The end of the list is a target, too.
void GoTo(Frame& frame, std::int64_t target) {
  frame.Next = BranchTarget(target, frame.Commands->GetCommandCount());
  const auto isLeft = [&](const Frame::Loop& loop) {
    return frame.Next <= loop.Start || frame.Next > loop.End;
  };
  while (!frame.Loops.empty() && isLeft(frame.Loops.back())) frame.Loops.pop_back();
}

void BranchAbs(Run& run, std::int32_t target) {
  GoTo(run.Calls.Top(), target);
}

void BranchRel(Run& run, std::int32_t offset) {
  Frame& frame = run.Calls.Top();
  GoTo(frame, static_cast<std::int64_t>(frame.Current) + offset);
}

void BranchList(Run& run, std::int32_t listId) {
  run.Calls.Replace(run.Prepared.FindList(listId));
}

void CallList(Run& run, std::int32_t listId) {
  run.Calls.Enter(run.Prepared.FindList(listId));
}

void BranchStandaloneList(Run& run) {
  if (!run.StandaloneList) throw std::runtime_error("The card has no standalone list.");
  BranchList(run, *run.StandaloneList);
}

void ExitList(Run& run) {
  Frame& frame = run.Calls.Top();
  frame.Next = frame.Commands->GetCommandCount();
}

void StartSwitch(Run& run, std::int32_t value) {
  run.Calls.Top().Choice = Frame::Switch{value};
}

void SwitchInput(Run& run, std::int32_t port, bool isShifted, std::uint32_t mask) {
  const std::uint32_t bits = run.Around.Ports.Get(port) & mask;
  StartSwitch(run, static_cast<std::int32_t>(isShifted && mask != 0 ? bits >> std::countr_zero(mask) : bits));
}

// Whether the case, or the default without a value, is the one that acts: the first that fits.
bool Decide(Run& run, std::optional<std::int32_t> value) {
  auto& choice = run.Calls.Top().Choice;
  if (!choice) throw std::runtime_error("There was no switch before it.");
  if (choice->IsDecided || (value && *value != choice->Value)) return false;
  return choice->IsDecided = true;
}

// The ways to do something: always, on a condition, in a case of a switch, or in none of its cases.
template <auto Act>
constexpr auto Always = [](Run& run, std::int32_t target) { Act(run, target); };
template <auto Act, class Condition>
constexpr auto If = [](Run& run, std::int32_t target, Condition condition) {
  if (condition.Holds(run)) Act(run, target);
};
template <auto Act>
constexpr auto Case = [](Run& run, std::int32_t target, std::int32_t value) {
  if (Decide(run, value)) Act(run, target);
};
template <auto Act>
constexpr auto Default = [](Run& run, std::int32_t target) {
  if (Decide(run, {})) Act(run, target);
};

template <class Condition>
constexpr auto ExitIf = [](Run& run, Condition condition) {
  if (condition.Holds(run)) ExitList(run);
};

}  // namespace

std::span<const CommandRow> FlowCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::NOOP, [](Run&) {}},
      {CommandCode2::LOOP_START, [](Run& run, std::int32_t count, std::int32_t) { StartLoop(run, count); }},
      {CommandCode2::LOOP_END, [](Run& run, std::int32_t) { EndLoop(run); }},
      {CommandCode2::LOOP_BREAK, [](Run& run) { BreakLoop(run); }},
      {CommandCode2::BRANCH_ABS, Always<BranchAbs>},
      {CommandCode2::BRANCH_ABS_COND, If<BranchAbs, InputCondition>},
      {CommandCode2::BRANCH_ABS_COND_FLAG, If<BranchAbs, FlagCondition>},
      {CommandCode2::BRANCH_REL, Always<BranchRel>},
      {CommandCode2::BRANCH_REL_COND, If<BranchRel, InputCondition>},
      {CommandCode2::BRANCH_REL_COND_FLAG, If<BranchRel, FlagCondition>},
      {CommandCode2::BRANCH_LIST, Always<BranchList>},
      {CommandCode2::BRANCH_LIST_COND, If<BranchList, InputCondition>},
      {CommandCode2::BRANCH_LIST_COND_FLAG, If<BranchList, FlagCondition>},
      {CommandCode2::CALL_LIST, Always<CallList>},
      {CommandCode2::CALL_LIST_COND, If<CallList, InputCondition>},
      {CommandCode2::CALL_LIST_COND_FLAG, If<CallList, FlagCondition>},
      {CommandCode2::EXIT_LIST, [](Run& run) { ExitList(run); }},
      {CommandCode2::EXIT_LIST_CONDITION, ExitIf<InputCondition>},
      {CommandCode2::EXIT_LIST_FLAG, ExitIf<FlagCondition>},
      {CommandCode2::GOTO_STANDALONE_LIST, [](Run& run) { BranchStandaloneList(run); }},
      {CommandCode2::SWITCH, [](Run& run, std::int32_t port, bool isShifted,
                                std::uint32_t mask) { SwitchInput(run, port, isShifted, mask); }},
      {CommandCode2::SWITCH_VALUE,
       [](Run& run, std::int32_t, std::uint32_t name) {
         StartSwitch(run, run.Around.Variables.GetInteger(name));
       }},
      {CommandCode2::CASE_GOTO_ABS, Case<BranchAbs>},
      {CommandCode2::CASE_GOTO_REL, Case<BranchRel>},
      {CommandCode2::CASE_BRANCH_LIST, Case<BranchList>},
      {CommandCode2::CASE_CALL_LIST, Case<CallList>},
      {CommandCode2::DEFAULT_GOTO_ABS, Default<BranchAbs>},
      {CommandCode2::DEFAULT_GOTO_REL, Default<BranchRel>},
      {CommandCode2::DEFAULT_BRANCH_LIST, Default<BranchList>},
      {CommandCode2::DEFAULT_CALL_LIST, Default<CallList>},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
