#include "faults/Fault.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

#include "base/TrimmedText.h"
#include "rpc/Packet.h"
#include "rpc/RemoteMethods.h"
#include "rpc/RpcEvents.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Packet;
using ClientLib::PacketType;
using ClientLib::RpcEventType;

namespace {

constexpr std::chrono::microseconds MostDelay = std::chrono::hours(1);
constexpr std::chrono::microseconds UsualReorder = std::chrono::seconds(1);
constexpr double LeastRate = 1, MostRate = 1e9;

struct Kind {
  std::string_view Name;
  std::int32_t Event;
};
constexpr Kind Kinds[] = {{"ListIdle", RpcEventType::ListIdle},
                          {"ListDone", RpcEventType::ListDone},
                          {"Progress", RpcEventType::Progress},
                          {"Error", RpcEventType::Error}};

bool IsNotification(std::string_view target) {
  return target == Fault::AllNotifications ||
         std::ranges::find(Kinds, target, &Kind::Name) != std::end(Kinds);
}

[[noreturn]] void RefusePart(std::string_view part, std::string_view wanted) {
  throw std::invalid_argument("'" + std::string(part) + "' in a fault: " + std::string(wanted));
}

struct Unit {
  std::string_view Name;
  double Factor;
};
constexpr Unit NoUnits[] = {{"", 1}};
constexpr Unit Parts[] = {{"", 1}, {"%", 0.01}};
constexpr Unit Times[] = {{"us", 1}, {"ms", 1e3}, {"s", 1e6}, {"min", 6e7}};
constexpr Unit Rates[] = {{"B/s", 1}, {"kB/s", 1e3}, {"MB/s", 1e6}};

// A number and one of the units; nothing when it is none, or not from `least` to `most`.
std::optional<double> Measure(std::string_view text, std::span<const Unit> units, double least, double most) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  const std::string_view name(end, static_cast<std::size_t>(text.data() + text.size() - end));
  const auto unit = std::ranges::find(units, name, &Unit::Name);
  if (unit == units.end()) return std::nullopt;
  const double value = number * unit->Factor;
  return value >= least && value <= most ? std::optional(value) : std::nullopt;
}

// One thing that stands between two colons; Read returns false when the value is not what is wanted.
struct Part {
  std::string_view Name;
  std::string_view Wanted;
  bool (*Read)(Fault& fault, std::string_view value);
};

template <std::uint64_t Fault::*Member>
bool ReadCount(Fault& fault, std::string_view value) {
  constexpr double Most = 1e15;
  const auto number = Measure(value, NoUnits, 1, Most);
  if (!number || *number != std::floor(*number)) return false;
  fault.*Member = static_cast<std::uint64_t>(*number);
  return true;
}

bool ReadChance(Fault& fault, std::string_view value) {
  const auto chance = Measure(value, Parts, 0, 1);
  fault.Chance = chance.value_or(1);
  return chance.has_value();
}

bool ReadSide(Fault& fault, std::string_view value) {
  fault.Side = value == "answer" ? FaultSide::Answer : FaultSide::Request;
  return value == "answer" || value == "request";
}

bool ReadNothing(Fault&, std::string_view value) {
  return value.empty();
}

bool ReadError(Fault& fault, std::string_view value) {
  fault.ErrorText = value;
  return !value.empty();
}

bool ReadDelay(Fault& fault, std::string_view value) {
  const auto delay = Measure(value, Times, 0, static_cast<double>(MostDelay.count()));
  fault.Delay = std::chrono::microseconds(std::llround(delay.value_or(0)));
  return delay.has_value();
}

bool ReadReorder(Fault& fault, std::string_view value) {
  fault.Delay = UsualReorder;
  return value.empty() || ReadDelay(fault, value);
}

bool ReadRate(Fault& fault, std::string_view value) {
  const auto rate = Measure(value, Rates, LeastRate, MostRate);
  fault.Rate = rate.value_or(0);
  return rate.has_value();
}

constexpr std::string_view WantedCount = "takes a whole number from 1 on";
constexpr std::string_view WantedTime = "takes a time of at most an hour, such as 150ms, 2s or 1min";
constexpr std::string_view WantedNothing = "takes no value";

constexpr Part Conditions[] = {
    {"connection", WantedCount, ReadCount<&Fault::Connection>},
    {"from", WantedCount, ReadCount<&Fault::From>},
    {"count", WantedCount, ReadCount<&Fault::Count>},
    {"chance", "takes a number from 0 to 1, or 0% to 100%", ReadChance},
    {"direction", "takes 'request' or 'answer'", ReadSide},
};

struct ActionPart : Part {
  FaultAction Action;
  FaultSide UsualSide;
  bool IsOfRequests;
};
constexpr ActionPart Actions[] = {
    {{"error", "takes a text", ReadError}, FaultAction::Error, FaultSide::Request, true},
    {{"delay", WantedTime, ReadDelay}, FaultAction::Delay, FaultSide::Request, true},
    {{"drop", WantedNothing, ReadNothing}, FaultAction::Drop, FaultSide::Request, true},
    {{"silent", WantedNothing, ReadNothing}, FaultAction::Silent, FaultSide::Request, true},
    {{"slow", "takes 1B/s to 1000MB/s, such as 1kB/s", ReadRate}, FaultAction::Slow, FaultSide::Answer, true},
    {{"garbage", WantedNothing, ReadNothing}, FaultAction::Garbage, FaultSide::Answer, false},
    {{"truncate", WantedNothing, ReadNothing}, FaultAction::Truncate, FaultSide::Answer, false},
    {{"reorder", WantedTime, ReadReorder}, FaultAction::Reorder, FaultSide::Answer, false},
};

template <class Rows>
std::string NamesOf(const Rows& rows) {
  std::string names;
  for (const auto& row : rows) names.append(names.empty() ? "" : ", ").append(row.Name);
  return names;
}

// Takes what stands ahead of the next colon off the text.
std::string_view TakePart(std::string_view& text) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  const std::string_view part = text.substr(0, colon);
  text.remove_prefix(std::min(colon + 1, text.size()));
  return part;
}

// Its text may hold colons, so it is all that is left. What was meant as a condition must not end up in it unnoticed.
void CheckErrorText(std::string_view text) {
  while (!text.empty()) {
    const std::string_view part = TakePart(text);
    const std::string_view name = part.substr(0, part.find('='));
    if (name != part && std::ranges::find(Conditions, name, &Part::Name) != std::end(Conditions)) {
      RefusePart(part, "conditions stand ahead of error, whose text is all the rest.");
    }
  }
}

void Read(const Part& row, std::string_view part, Fault& fault) {
  const std::size_t equals = std::min(part.find('='), part.size());
  const std::string_view value = part.substr(std::min(equals + 1, part.size()));
  if (!row.Read(fault, value)) {
    RefusePart(part, std::string(row.Name) + " " + std::string(row.Wanted) + ".");
  }
}

void CheckSide(const ActionPart& action, const Fault& fault) {
  if (fault.Side == FaultSide::Answer) return;
  if (IsNotification(fault.Target)) RefusePart("direction=request", "notifications are no requests.");
  if (!action.IsOfRequests) {
    RefusePart("direction=request", std::string(action.Name) + " is of answers and notifications only.");
  }
}

}  // namespace

void CheckFaultTarget(std::string_view target) {
  if (target == Fault::AllRequests || IsNotification(target) ||
      ClientLib::FindRemoteMethod(target) < std::size(ClientLib::RemoteMethods)) {
    return;
  }
  RefusePart(target,
             "that is nothing to have a fault. There are the methods of the card, * for all of them, " +
                 NamesOf(Kinds) + ", and notification for all of those.");
}

Fault ParseFault(std::string_view text) {
  if (text.size() > MostFaultBytes) {
    throw std::invalid_argument("A fault has at most " + std::to_string(MostFaultBytes) + " characters.");
  }
  Fault fault;
  fault.Text = text;
  fault.Target = TakePart(text);
  CheckFaultTarget(fault.Target);
  const ActionPart* action = nullptr;
  std::optional<FaultSide> side;
  while (!text.empty()) {
    const std::string_view left = text;
    std::string_view part = TakePart(text);
    const std::string_view name = part.substr(0, part.find('='));
    if (const auto row = std::ranges::find(Conditions, name, &Part::Name); row != std::end(Conditions)) {
      Read(*row, part, fault);
      if (name == "direction") side = fault.Side;
      continue;
    }
    const auto row = std::ranges::find(Actions, name, &Part::Name);
    if (row == std::end(Actions)) {
      RefusePart(part, "there are the conditions " + NamesOf(Conditions) + " and the actions " +
                           NamesOf(Actions) + ".");
    }
    if (action != nullptr) RefusePart(part, "it has its action already, " + std::string(action->Name) + ".");
    if (row->Action == FaultAction::Error) {
      CheckErrorText(std::exchange(text, {}));
      part = left;
    }
    Read(*row, part, fault);
    action = row;
  }
  if (action == nullptr) {
    RefusePart(fault.Text,
               "it has no action. A fault is TARGET[:CONDITION...]:ACTION, such as "
               "SetList:count=2:error=Out of memory; the actions are " +
                   NamesOf(Actions) + ".");
  }
  fault.Action = action->Action;
  const FaultSide usual = IsNotification(fault.Target) ? FaultSide::Answer : action->UsualSide;
  fault.Side = side.value_or(usual);
  CheckSide(*action, fault);
  return fault;
}

std::string_view NotificationTarget(const unsigned char* frame, std::size_t size) {
  constexpr std::size_t EventAt = Packet::FullHeaderLen + 1;  // behind the array's head; each is one byte
  const bool isError = frame[1] == static_cast<unsigned char>(PacketType::ErrorNotification);
  std::int32_t event = RpcEventType::Error;
  if (!isError && size > EventAt) event = frame[EventAt];
  const auto kind = std::ranges::find(Kinds, event, &Kind::Event);
  return kind == std::end(Kinds) ? Fault::AllNotifications : kind->Name;
}

}  // namespace VELTRO::KELVO::VirtualCard
