#include "capi/ListTable.h"

#include <stdexcept>
#include <utility>

namespace VELTRO::KELVO::ClientLib {

void ListTable::ThrowMissing() {
  throw std::runtime_error("List does not exist.");
}

void ListTable::Entry::Release() {
  const MutexLock lock(mutex_);
  released_ = true;
  list_ = CommandList();
}

std::int64_t ListTable::Allocate() {
  auto entry = std::make_shared<Entry>();
  const MutexLock lock(mutex_);
  const std::int64_t list = (std::int64_t{connection_} << 32) | ++lastNumber_;
  if (!entries_.emplace(list, std::move(entry)).second)
    throw std::runtime_error("List handle already occupied.");
  return list;
}

std::shared_ptr<ListTable::Entry> ListTable::Get(std::int64_t list) {
  const MutexLock lock(mutex_);
  const auto found = entries_.find(list);
  if (found == entries_.end()) ThrowMissing();
  return found->second;
}

bool ListTable::Release(std::int64_t list) {
  std::shared_ptr<Entry> entry;
  {
    const MutexLock lock(mutex_);
    const auto found = entries_.find(list);
    if (found == entries_.end()) return false;
    entry = std::move(found->second);
    entries_.erase(found);
  }
  entry->Release();
  return true;
}

void ListTable::Delete(std::int64_t list) {
  if (!Release(list)) ThrowMissing();
}

}  // namespace VELTRO::KELVO::ClientLib
