// The variables and signals of lists. They outlive runs.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "common/Mutex.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::VirtualCard {

// The number by which a variable or signal of that name is known: FNV-1a, 32 bits.
constexpr std::uint32_t NameHash(std::string_view name) {
  std::uint32_t hash = 0x811C9DC5;
  for (const char character : name) hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
  return hash;
}

// Any thread may call anything at any time. A boolean, an integer and a signal of one name are three things; a
// counter is an integer. There may be 65536 of each of these; who makes another one gets std::runtime_error "There are too
// many variables.".
class ListVariables {
 public:
  // `waits` is woken when a signal is set.
  explicit ListVariables(AbortSignal& waits) : waits_(waits) {}

  void SetBoolean(std::uint32_t name, bool value);
  bool GetBoolean(std::uint32_t name);  // false until it is set
  void SetInteger(std::uint32_t name, std::int32_t value);
  void Increment(std::uint32_t name);           // the largest is followed by the smallest
  std::int32_t GetInteger(std::uint32_t name);  // 0 until it is set
  void SetSignal(std::uint32_t name, bool isSet);
  bool IsSignalSet(std::uint32_t name);
  // All as at first.
  void Clear();

 private:
  AbortSignal& waits_;
  ClientLib::Mutex mutex_;
  std::unordered_map<std::uint32_t, bool> booleans_ KELVO_GUARDED_BY(mutex_);
  std::unordered_map<std::uint32_t, std::uint32_t> integers_ KELVO_GUARDED_BY(mutex_);
  std::unordered_set<std::uint32_t> signals_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
