// The lists of one connection under their handles.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "common/Mutex.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::ClientLib {

// A list handle holds the connection's handle in the upper 32 bits and a number, counted from 1 and never
// used again, in the lower.
class ListTable {
 public:
  // A list, used by one thread at a time. It is shared: who uses it while it is released ends in peace.
  class Entry {
   public:
    // Calls `f` with the list, under the list's lock. Throws std::runtime_error "List does not exist." when
    // it was released meanwhile. `f` must neither wait for a card nor call out.
    template <class F>
    auto Use(F&& f) KELVO_EXCLUDES(mutex_) {
      const MutexLock lock(mutex_);
      if (released_) ThrowMissing();
      return f(list_);
    }
    void Release();

   private:
    Mutex mutex_;
    bool released_ KELVO_GUARDED_BY(mutex_) = false;
    CommandList list_ KELVO_GUARDED_BY(mutex_);
  };

  explicit ListTable(std::int32_t connection) : connection_(connection) {}

  static std::int32_t ConnectionOf(std::int64_t list) { return static_cast<std::int32_t>(list >> 32); }

  // Makes an empty list. Throws std::runtime_error "List handle already occupied.".
  std::int64_t Allocate();
  // Throws std::runtime_error "List does not exist.".
  std::shared_ptr<Entry> Get(std::int64_t list);
  // Removes the list; false when there is none.
  bool Release(std::int64_t list);
  // The same, but throws std::runtime_error "List does not exist." when there is none.
  void Delete(std::int64_t list);

 private:
  [[noreturn]] static void ThrowMissing();

  const std::int32_t connection_;
  Mutex mutex_;
  std::uint32_t lastNumber_ KELVO_GUARDED_BY(mutex_) = 0;
  std::unordered_map<std::int64_t, std::shared_ptr<Entry>> entries_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::ClientLib
