#include "capi/HandleTable.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::ClientLib {

template <class Kind>
void HandleTable<Kind>::ThrowMissing() {
  throw std::runtime_error(std::string(Kind::Name) + " does not exist.");
}

template <class Kind>
void HandleTable<Kind>::Entry::Release() {
  Object gone;  // destroyed after the lock
  const MutexLock lock(mutex_);
  released_ = true;
  std::swap(gone, object_);
}

template <class Kind>
std::int64_t HandleTable<Kind>::Allocate(Object object) {
  auto entry = std::make_shared<Entry>(std::move(object));
  const MutexLock lock(mutex_);
  const std::int64_t handle = (std::int64_t{connection_} << 32) | ++lastNumber_;
  if (!entries_.emplace(handle, std::move(entry)).second)
    throw std::runtime_error(std::string(Kind::Name) + " handle already occupied.");
  return handle;
}

template <class Kind>
std::shared_ptr<typename HandleTable<Kind>::Entry> HandleTable<Kind>::Get(std::int64_t handle) {
  const MutexLock lock(mutex_);
  const auto found = entries_.find(handle);
  if (found == entries_.end()) ThrowMissing();
  return found->second;
}

template <class Kind>
bool HandleTable<Kind>::Release(std::int64_t handle) {
  std::shared_ptr<Entry> entry;
  {
    const MutexLock lock(mutex_);
    const auto found = entries_.find(handle);
    if (found == entries_.end()) return false;
    entry = std::move(found->second);
    entries_.erase(found);
  }
  entry->Release();
  return true;
}

template <class Kind>
void HandleTable<Kind>::Delete(std::int64_t handle) {
  if (!Release(handle)) ThrowMissing();
}

template <class Kind>
void HandleTable<Kind>::ReleaseAll() {
  std::unordered_map<std::int64_t, std::shared_ptr<Entry>> released;
  {
    const MutexLock lock(mutex_);
    released.swap(entries_);
  }
  for (const auto& [handle, entry] : released) entry->Release();
}

template class HandleTable<ListKind>;
template class HandleTable<FontKind>;

}  // namespace VELTRO::KELVO::ClientLib
