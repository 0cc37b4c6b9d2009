#include "card/CardLists.h"

#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "card/ListMemory.h"
#include "card/StoredForm.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandList;
using ClientLib::ListStatus;
using ClientLib::MutexLock;

namespace {

constexpr std::size_t MostListFileBytes = std::size_t{256} << 20;

}  // namespace

CardLists::CardLists(Executor& executor, MemoryBudget& memory, StateDirectory& state)
    : executor_(executor), memory_(memory), files_(state, "List", MostListFileBytes) {
  const MutexLock storing(storing_);
  files_.ReadAll([this](std::int32_t id, std::string_view bytes) {
    auto list = FromStored<CommandList>(bytes);
    auto charge = std::make_shared<MemoryCharge>(memory_, MemoryOf(list));
    const MutexLock lock(mutex_);
    stored_.insert_or_assign(id, Held{0, std::move(list), std::move(charge)});
  });
}

const CardLists::Held& CardLists::Find(std::int32_t id) {
  const auto found = lists_.find(id);
  if (found == lists_.end()) {
    throw std::runtime_error("There is no list " + std::to_string(id) + " on the card.");
  }
  return found->second;
}

void CardLists::Put(std::int32_t id, Held list) {
  list.Version = ++version_;
  lists_.insert_or_assign(id, std::move(list));
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
  const std::size_t bytes = MemoryOf(list);
  if (!append || place == lists_.end()) {
    return Put(id, {0, std::move(list), std::make_shared<MemoryCharge>(memory_, bytes)});
  }
  CommandList& commands = place->second.Commands;
  auto& charge = place->second.Charge;
  if (charge.use_count() == 1) {
    charge->Add(bytes);
  } else {  // a run or the stored list goes on with the commands as they are: these become others
    charge = std::make_shared<MemoryCharge>(memory_, MemoryOf(commands) + bytes);
  }
  commands.Append(list);
  commands.SetListField(list.GetListField());
  place->second.Version = ++version_;
}

CommandList CardLists::Get(std::int32_t id) {
  const MutexLock lock(mutex_);
  return Find(id).Commands;
}

void CardLists::Store(std::int32_t id) {
  const MutexLock storing(storing_);
  Held list;
  {
    const MutexLock lock(mutex_);
    list = Find(id);
  }
  files_.Write(id, [&] { return ToStored(list.Commands); });
  const MutexLock lock(mutex_);
  stored_.insert_or_assign(id, std::move(list));
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
  const MutexLock storing(storing_);
  {
    const MutexLock lock(mutex_);
    if (!alsoStored || !stored_.contains(id)) Find(id);
    CheckNotRunning(id);
    lists_.erase(id);
  }
  if (!alsoStored) return;
  files_.Remove(id);
  const MutexLock lock(mutex_);
  stored_.erase(id);
}

std::vector<std::int32_t> CardLists::GetIds() {
  const MutexLock lock(mutex_);
  std::set<std::int32_t> ids;
  for (const auto& [id, list] : lists_) ids.insert(id);
  for (const auto& [id, list] : stored_) ids.insert(id);
  return {ids.begin(), ids.end()};
}

std::pair<std::vector<CardLists::View>, std::size_t> CardLists::Look(std::size_t most) {
  const MutexLock lock(mutex_);
  std::set<std::int32_t> ids;
  for (const auto& [id, list] : lists_) ids.insert(id);
  for (const auto& [id, list] : stored_) ids.insert(id);
  std::vector<View> views;
  for (const std::int32_t id : ids) {
    if (views.size() == most) break;
    const auto there = lists_.find(id);
    const bool isThere = there != lists_.end();
    views.push_back(
        {id, isThere, isThere ? there->second.Commands.GetCommandCount() : 0, stored_.contains(id)});
  }
  return {std::move(views), ids.size()};
}

ListStatus CardLists::GetStatus(std::int32_t id) {
  const MutexLock lock(mutex_);
  if (executor_.GetRunningList() == id || executor_.GetCaret(id) != Simulation::Carets::NotThere) {
    return ListStatus::Running;
  }
  return lists_.contains(id) ? ListStatus::Ready : ListStatus::NoSuchList;
}

void CardLists::Execute(std::int32_t id) {
  const MutexLock lock(mutex_);
  executor_.Start(id, Find(id).Snapshot());
}

std::optional<Simulation::ListSnapshot> CardLists::FindChanged(std::int32_t id, std::uint64_t known) {
  const MutexLock lock(mutex_);
  const Held& list = Find(id);
  return list.Version == known ? std::nullopt : std::optional(list.Snapshot());
}

}  // namespace VELTRO::KELVO::VirtualCard
