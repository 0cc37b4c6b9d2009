// The variables and signals of lists. They outlive runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "common/Mutex.h"
#include "peripherals/Variables.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::Simulation {

// Any thread may call anything at any time. A boolean, an integer and a signal of one name are three things; a
// counter is an integer. There may be 65536 of each of these; who makes another one gets std::runtime_error "There are too
// many variables.".
class ListVariables {
 public:
  // `waits` is woken when a signal is set.
  explicit ListVariables(AbortSignal& waits) : waits_(waits) {}

  // For those who know them by name, which is remembered when it is set by. Throw std::runtime_error "The name of a
  // variable has 1 to 255 bytes.".
  void SetBoolean(const std::string& name, bool value);
  void SetInteger(const std::string& name, std::int32_t value);
  bool GetBoolean(const std::string& name);
  std::int32_t GetInteger(const std::string& name);
  // Says how the integer is counted from now on. One that is outside the range, or is new, goes to the start. Throws
  // std::runtime_error also for a counter that cannot be.
  void SetCounter(const std::string& name, const ClientLib::MarkCounter& counter);
  // Throw std::runtime_error also "There is no mark counter 'NAME'.".
  ClientLib::MarkCounter GetCounter(const std::string& name);
  void ResetCounter(const std::string& name);
  // All booleans, integers and counters, in the order of their kinds and ids.
  std::vector<ClientLib::CardVariable> GetAll();

  // The signals that are set, by their ids, ascending.
  std::vector<std::uint32_t> GetSignals();

  void SetBoolean(std::uint32_t id, bool value);
  bool GetBoolean(std::uint32_t id);  // false until it is set
  void SetInteger(std::uint32_t id, std::int32_t value);
  // By the counter's step, and where that leaves its range, to the other end of it. Without a counter by 1; the largest is
  // followed by the smallest then.
  void Increment(std::uint32_t id);
  std::int32_t GetInteger(std::uint32_t id);  // 0 until it is set
  void SetSignal(std::uint32_t id, bool isSet);
  bool IsSignalSet(std::uint32_t id);
  // All as at first, but counters stay, each at its start.
  void Clear();

 private:
  struct Integer {
    std::uint32_t Value = 0;
    std::optional<ClientLib::MarkCounter> Counter = {};
  };

  void Remember(std::uint32_t id, const std::string& name) KELVO_REQUIRES(mutex_);
  Integer& FindCounter(const std::string& name) KELVO_REQUIRES(mutex_);

  AbortSignal& waits_;
  ClientLib::Mutex mutex_;
  std::unordered_map<std::uint32_t, bool> booleans_ KELVO_GUARDED_BY(mutex_);
  std::unordered_map<std::uint32_t, Integer> integers_ KELVO_GUARDED_BY(mutex_);
  std::unordered_set<std::uint32_t> signals_ KELVO_GUARDED_BY(mutex_);
  std::unordered_map<std::uint32_t, std::string> names_ KELVO_GUARDED_BY(mutex_);  // of what is there
};

}  // namespace VELTRO::KELVO::Simulation
