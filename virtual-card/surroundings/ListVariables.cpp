#include "surroundings/ListVariables.h"

#include <stdexcept>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

namespace {

constexpr std::size_t Most = 65536;

// Before one of that name is made, in case it is not there.
void CheckRoom(const auto& variables, std::uint32_t name) {
  if (variables.size() >= Most && !variables.contains(name)) {
    throw std::runtime_error("There are too many variables.");
  }
}

}  // namespace

void ListVariables::SetBoolean(std::uint32_t name, bool value) {
  const MutexLock lock(mutex_);
  CheckRoom(booleans_, name);
  booleans_[name] = value;
}

bool ListVariables::GetBoolean(std::uint32_t name) {
  const MutexLock lock(mutex_);
  const auto found = booleans_.find(name);
  return found != booleans_.end() && found->second;
}

void ListVariables::SetInteger(std::uint32_t name, std::int32_t value) {
  const MutexLock lock(mutex_);
  CheckRoom(integers_, name);
  integers_[name] = static_cast<std::uint32_t>(value);
}

void ListVariables::Increment(std::uint32_t name) {
  const MutexLock lock(mutex_);
  CheckRoom(integers_, name);
  ++integers_[name];
}

std::int32_t ListVariables::GetInteger(std::uint32_t name) {
  const MutexLock lock(mutex_);
  const auto found = integers_.find(name);
  return found == integers_.end() ? 0 : static_cast<std::int32_t>(found->second);
}

void ListVariables::SetSignal(std::uint32_t name, bool isSet) {
  {
    const MutexLock lock(mutex_);
    if (isSet) {
      CheckRoom(signals_, name);
      signals_.insert(name);
    } else {
      signals_.erase(name);
    }
  }
  if (isSet) waits_.Wake();
}

bool ListVariables::IsSignalSet(std::uint32_t name) {
  const MutexLock lock(mutex_);
  return signals_.contains(name);
}

void ListVariables::Clear() {
  const MutexLock lock(mutex_);
  booleans_.clear();
  integers_.clear();
  signals_.clear();
}

}  // namespace VELTRO::KELVO::VirtualCard
