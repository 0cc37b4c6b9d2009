#include "card/CardLists.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandList;
using ClientLib::MutexLock;

const CommandList& CardLists::Find(std::int32_t id) {
  const auto found = lists_.find(id);
  if (found == lists_.end()) {
    throw std::runtime_error("There is no list " + std::to_string(id) + " on the card.");
  }
  return found->second;
}

void CardLists::CheckNotRunning(std::int32_t id) {
  if (executor_.GetRunningList() == id) {
    throw std::runtime_error("List " + std::to_string(id) + " is running.");
  }
}

void CardLists::Set(std::int32_t id, CommandList list, bool append) {
  const MutexLock lock(mutex_);
  CheckNotRunning(id);
  const auto [place, isNew] = lists_.try_emplace(id);
  if (append && !isNew) {
    place->second.Append(list);
    place->second.SetListField(list.GetListField());
  } else {
    place->second = std::move(list);
  }
}

CommandList CardLists::Get(std::int32_t id) {
  CommandList list;
  {
    const MutexLock lock(mutex_);
    list = Find(id);
  }
  list.SetRange(0, list.GetCommandCount());  // all of it is what travels
  return list;
}

void CardLists::Delete(std::int32_t id) {
  const MutexLock lock(mutex_);
  Find(id);
  CheckNotRunning(id);
  lists_.erase(id);
}

std::vector<std::int32_t> CardLists::GetIds() {
  const MutexLock lock(mutex_);
  std::vector<std::int32_t> ids;
  for (const auto& [id, list] : lists_) ids.push_back(id);
  return ids;
}

CardLists::Status CardLists::GetStatus(std::int32_t id) {
  const MutexLock lock(mutex_);
  if (executor_.GetRunningList() == id) return Running;
  return lists_.contains(id) ? Ready : NoSuchList;
}

void CardLists::Execute(std::int32_t id) {
  const MutexLock lock(mutex_);
  executor_.Start(id, Find(id));
}

}  // namespace VELTRO::KELVO::VirtualCard
