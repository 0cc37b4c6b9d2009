#include "surroundings/ListVariables.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "lists/VariableId.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CardVariable;
using ClientLib::MarkCounter;
using ClientLib::MutexLock;
using ClientLib::VariableKind;

namespace {

constexpr std::size_t Most = 65536;
constexpr std::size_t MostVariableNameBytes = 255;

// Before one of that name is made, in case it is not there.
void CheckRoom(const auto& variables, std::uint32_t id) {
  if (variables.size() >= Most && !variables.contains(id)) {
    throw std::runtime_error("There are too many variables.");
  }
}

std::uint32_t IdOf(const std::string& name) {
  if (name.empty() || name.size() > MostVariableNameBytes) {
    throw std::runtime_error("The name of a variable has 1 to 255 bytes.");
  }
  return ClientLib::VariableId(name);
}

bool IsIn(const MarkCounter& counter, std::int64_t value) {
  return value >= counter.Minimum && value <= counter.Maximum;
}

void CheckCounter(const MarkCounter& counter) {
  if (counter.Minimum > counter.Maximum) {
    throw std::runtime_error("The counter's minimum is greater than its maximum.");
  }
  if (!IsIn(counter, counter.Start)) {
    throw std::runtime_error("The counter's start is not from its minimum to its maximum.");
  }
  if (counter.Step == 0) throw std::runtime_error("The counter's step must not be 0.");
}

std::int32_t Next(const MarkCounter& counter, std::int32_t value) {
  const std::int64_t next = std::int64_t{value} + counter.Step;
  if (IsIn(counter, next)) return static_cast<std::int32_t>(next);
  return counter.Step > 0 ? counter.Minimum : counter.Maximum;
}

}  // namespace

void ListVariables::Remember(std::uint32_t id, const std::string& name) {
  std::string& kept = names_[id];
  if (kept != name) kept = name;
}

void ListVariables::SetBoolean(const std::string& name, bool value) {
  const std::uint32_t id = IdOf(name);
  SetBoolean(id, value);
  const MutexLock lock(mutex_);
  if (booleans_.contains(id)) Remember(id, name);
}

void ListVariables::SetInteger(const std::string& name, std::int32_t value) {
  const std::uint32_t id = IdOf(name);
  SetInteger(id, value);
  const MutexLock lock(mutex_);
  if (integers_.contains(id)) Remember(id, name);
}

bool ListVariables::GetBoolean(const std::string& name) {
  return GetBoolean(IdOf(name));
}

std::int32_t ListVariables::GetInteger(const std::string& name) {
  return GetInteger(IdOf(name));
}

void ListVariables::SetCounter(const std::string& name, const MarkCounter& counter) {
  const std::uint32_t id = IdOf(name);
  CheckCounter(counter);
  const MutexLock lock(mutex_);
  CheckRoom(integers_, id);
  Remember(id, name);
  const auto [place, isNew] = integers_.try_emplace(id);
  Integer& integer = place->second;
  integer.Counter = counter;
  if (isNew || !IsIn(counter, static_cast<std::int32_t>(integer.Value))) {
    integer.Value = static_cast<std::uint32_t>(counter.Start);
  }
}

ListVariables::Integer& ListVariables::FindCounter(const std::string& name) {
  const auto found = integers_.find(IdOf(name));
  if (found == integers_.end() || !found->second.Counter) {
    throw std::runtime_error("There is no mark counter '" + name + "'.");
  }
  return found->second;
}

MarkCounter ListVariables::GetCounter(const std::string& name) {
  const MutexLock lock(mutex_);
  return *FindCounter(name).Counter;
}

void ListVariables::ResetCounter(const std::string& name) {
  const MutexLock lock(mutex_);
  Integer& integer = FindCounter(name);
  integer.Value = static_cast<std::uint32_t>(integer.Counter->Start);
}

std::vector<CardVariable> ListVariables::GetAll() {
  std::vector<CardVariable> all;
  {
    const MutexLock lock(mutex_);
    all.reserve(booleans_.size() + integers_.size());
    const auto add = [&](std::uint32_t id, VariableKind kind, std::int32_t value) KELVO_REQUIRES(mutex_) {
      const auto name = names_.find(id);
      all.push_back({id, kind, value, name == names_.end() ? std::string() : name->second});
    };
    for (const auto& [id, value] : booleans_) add(id, VariableKind::Boolean, value ? 1 : 0);
    for (const auto& [id, integer] : integers_) {
      add(id, integer.Counter ? VariableKind::MarkCounter : VariableKind::Integer,
          static_cast<std::int32_t>(integer.Value));
    }
  }
  std::ranges::sort(all, {}, [](const CardVariable& v) { return std::pair(v.Kind._to_integral(), v.Id); });
  return all;
}

std::vector<std::uint32_t> ListVariables::GetSignals() {
  std::vector<std::uint32_t> all;
  {
    const MutexLock lock(mutex_);
    all.assign(signals_.begin(), signals_.end());
  }
  std::ranges::sort(all);
  return all;
}

void ListVariables::SetBoolean(std::uint32_t id, bool value) {
  const MutexLock lock(mutex_);
  CheckRoom(booleans_, id);
  booleans_[id] = value;
}

bool ListVariables::GetBoolean(std::uint32_t id) {
  const MutexLock lock(mutex_);
  const auto found = booleans_.find(id);
  return found != booleans_.end() && found->second;
}

void ListVariables::SetInteger(std::uint32_t id, std::int32_t value) {
  const MutexLock lock(mutex_);
  CheckRoom(integers_, id);
  integers_[id].Value = static_cast<std::uint32_t>(value);
}

void ListVariables::Increment(std::uint32_t id) {
  const MutexLock lock(mutex_);
  CheckRoom(integers_, id);
  Integer& integer = integers_[id];
  if (integer.Counter) {
    const std::int32_t next = Next(*integer.Counter, static_cast<std::int32_t>(integer.Value));
    integer.Value = static_cast<std::uint32_t>(next);
  } else {
    ++integer.Value;
  }
}

std::int32_t ListVariables::GetInteger(std::uint32_t id) {
  const MutexLock lock(mutex_);
  const auto found = integers_.find(id);
  return found == integers_.end() ? 0 : static_cast<std::int32_t>(found->second.Value);
}

void ListVariables::SetSignal(std::uint32_t id, bool isSet) {
  {
    const MutexLock lock(mutex_);
    if (isSet) {
      CheckRoom(signals_, id);
      signals_.insert(id);
    } else {
      signals_.erase(id);
    }
  }
  if (isSet) waits_.Wake();
}

bool ListVariables::IsSignalSet(std::uint32_t id) {
  const MutexLock lock(mutex_);
  return signals_.contains(id);
}

void ListVariables::Clear() {
  const MutexLock lock(mutex_);
  booleans_.clear();
  signals_.clear();
  std::erase_if(integers_, [](const auto& entry) { return !entry.second.Counter; });
  for (auto& [id, integer] : integers_) integer.Value = static_cast<std::uint32_t>(integer.Counter->Start);
  std::erase_if(
      names_, [this](const auto& entry) KELVO_REQUIRES(mutex_) { return !integers_.contains(entry.first); });
}

}  // namespace VELTRO::KELVO::Simulation
