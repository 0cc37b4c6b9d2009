#include "card/CardVariables.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

void CardVariables::SetBoolean(std::uint32_t name, bool value) {
  const MutexLock lock(mutex_);
  booleans_[name] = value;
}

bool CardVariables::GetBoolean(std::uint32_t name) {
  const MutexLock lock(mutex_);
  const auto found = booleans_.find(name);
  return found != booleans_.end() && found->second;
}

void CardVariables::SetInteger(std::uint32_t name, std::int32_t value) {
  const MutexLock lock(mutex_);
  integers_[name] = static_cast<std::uint32_t>(value);
}

void CardVariables::Increment(std::uint32_t name) {
  const MutexLock lock(mutex_);
  ++integers_[name];
}

std::int32_t CardVariables::GetInteger(std::uint32_t name) {
  const MutexLock lock(mutex_);
  const auto found = integers_.find(name);
  return found == integers_.end() ? 0 : static_cast<std::int32_t>(found->second);
}

void CardVariables::SetSignal(std::uint32_t name, bool isSet) {
  {
    const MutexLock lock(mutex_);
    if (isSet) {
      signals_.insert(name);
    } else {
      signals_.erase(name);
    }
  }
  if (isSet) waits_.Wake();
}

bool CardVariables::IsSignalSet(std::uint32_t name) {
  const MutexLock lock(mutex_);
  return signals_.contains(name);
}

void CardVariables::Clear() {
  const MutexLock lock(mutex_);
  booleans_.clear();
  integers_.clear();
  signals_.clear();
}

}  // namespace VELTRO::KELVO::VirtualCard
