// The lists that the card holds.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "common/Mutex.h"
#include "execution/Executor.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. A run works on the list as it was when it was started; all the
// same, the list that is running cannot be changed.
class CardLists {
 public:
  // What GetStatus gives.
  enum Status : std::int32_t { NoSuchList = 0, Ready = 1, Running = 2 };

  explicit CardLists(Executor& executor) : executor_(executor) {}

  // Puts the list under its id, or with `append` its commands behind those that are there. Throws
  // std::runtime_error "List ID is running.".
  void Set(std::int32_t id, ClientLib::CommandList list, bool append);
  // Throws std::runtime_error "There is no list ID on the card.".
  ClientLib::CommandList Get(std::int32_t id);
  // Throws as both of the above.
  void Delete(std::int32_t id);
  std::vector<std::int32_t> GetIds();
  Status GetStatus(std::int32_t id);
  // Throws as Get and Executor::Start.
  void Execute(std::int32_t id);

 private:
  const ClientLib::CommandList& Find(std::int32_t id) KELVO_REQUIRES(mutex_);
  void CheckNotRunning(std::int32_t id);

  Executor& executor_;
  ClientLib::Mutex mutex_;
  std::map<std::int32_t, ClientLib::CommandList> lists_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
