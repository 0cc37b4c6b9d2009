#include "card/CardLists.h"

#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandList;
using ClientLib::MutexLock;

const ListSnapshot& CardLists::Find(std::int32_t id) {
  const auto found = lists_.find(id);
  if (found == lists_.end()) {
    throw std::runtime_error("There is no list " + std::to_string(id) + " on the card.");
  }
  return found->second;
}

void CardLists::Put(std::int32_t id, CommandList list) {
  lists_.insert_or_assign(id, ListSnapshot{++version_, std::move(list)});
}

void CardLists::CheckNotRunning(std::int32_t id) {
  if (executor_.GetRunningList() == id) {
    throw std::runtime_error("List " + std::to_string(id) + " is running.");
  }
}

void CardLists::Set(std::int32_t id, CommandList list, bool append) {
  const MutexLock lock(mutex_);
  CheckNotRunning(id);
  const auto place = lists_.find(id);
  if (!append || place == lists_.end()) return Put(id, std::move(list));
  CommandList& commands = place->second.Commands;
  commands.Append(list);
  commands.SetListField(list.GetListField());
  place->second.Version = ++version_;
}

CommandList CardLists::Get(std::int32_t id) {
  CommandList list;
  {
    const MutexLock lock(mutex_);
    list = Find(id).Commands;
  }
  list.SetRange(0, list.GetCommandCount());  // all of it is what travels
  return list;
}

void CardLists::Store(std::int32_t id) {
  const MutexLock lock(mutex_);
  stored_.insert_or_assign(id, Find(id).Commands);
}

void CardLists::Load(std::int32_t id) {
  const MutexLock lock(mutex_);
  CheckNotRunning(id);
  const auto found = stored_.find(id);
  if (found == stored_.end()) {
    throw std::runtime_error("There is no stored list " + std::to_string(id) + " on the card.");
  }
  Put(id, found->second);
}

void CardLists::Delete(std::int32_t id, bool alsoStored) {
  const MutexLock lock(mutex_);
  if (!alsoStored || !stored_.contains(id)) Find(id);
  CheckNotRunning(id);
  lists_.erase(id);
  if (alsoStored) stored_.erase(id);
}

std::vector<std::int32_t> CardLists::GetIds() {
  const MutexLock lock(mutex_);
  std::set<std::int32_t> ids;
  for (const auto& [id, list] : lists_) ids.insert(id);
  for (const auto& [id, list] : stored_) ids.insert(id);
  return {ids.begin(), ids.end()};
}

CardLists::Status CardLists::GetStatus(std::int32_t id) {
  const MutexLock lock(mutex_);
  if (executor_.GetRunningList() == id || executor_.GetCaret(id) != Carets::NotThere) return Running;
  return lists_.contains(id) ? Ready : NoSuchList;
}

void CardLists::Execute(std::int32_t id) {
  const MutexLock lock(mutex_);
  executor_.Start(id, Find(id));
}

std::optional<ListSnapshot> CardLists::FindChanged(std::int32_t id, std::uint64_t known) {
  const MutexLock lock(mutex_);
  const ListSnapshot& list = Find(id);
  return list.Version == known ? std::nullopt : std::optional(list);
}

}  // namespace VELTRO::KELVO::VirtualCard
