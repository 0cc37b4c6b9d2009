// The lists and the fonts of one connection under their handles.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>

#include "common/Mutex.h"
#include "lists/CommandList.h"
#include "services/Font.h"

namespace VELTRO::KELVO::ClientLib {

// What handles stand for: the kind's objects, its name in error texts, and the number before its first.
struct ListKind {
  using Object = CommandList;
  static constexpr const char* Name = "List";
  static constexpr std::uint32_t NumberBeforeFirst = 0;
};
// Fonts count apart from lists: no font's handle is the handle of a list.
struct FontKind {
  using Object = Font;
  static constexpr const char* Name = "Font";
  static constexpr std::uint32_t NumberBeforeFirst = 0x80000000;
};

// A handle holds the connection's handle in the upper 32 bits and a number, counted from the kind's first and
// never used again, in the lower.
template <class Kind>
class HandleTable {
 public:
  using Object = typename Kind::Object;

  // An object, used by one thread at a time. It is shared: who uses it while it is released ends in peace.
  class Entry {
   public:
    explicit Entry(Object object) : object_(std::move(object)) {}
    // Calls `f` with the object, under the object's lock. Throws std::runtime_error "NAME does not exist."
    // when it was released meanwhile. `f` must neither wait for a card nor call out.
    template <class F>
    auto Use(F&& f) KELVO_EXCLUDES(mutex_) {
      const MutexLock lock(mutex_);
      if (IsReleased()) ThrowMissing();
      return f(object_);
    }
    void Release();
    // For a look without the lock: what it says may be over by the time it is read.
    bool IsReleased() const { return released_.load(std::memory_order_relaxed); }

   private:
    Mutex mutex_;
    std::atomic<bool> released_ = false;  // set under the mutex
    Object object_ KELVO_GUARDED_BY(mutex_);
  };

  explicit HandleTable(std::int32_t connection) : connection_(connection) {}

  static std::int32_t ConnectionOf(std::int64_t handle) { return static_cast<std::int32_t>(handle >> 32); }

  // Takes the object over. Throws std::runtime_error "NAME handle already occupied.".
  std::int64_t Allocate(Object object = Object());
  // Throws std::runtime_error "NAME does not exist.".
  std::shared_ptr<Entry> Get(std::int64_t handle);
  // Removes the object; false when there is none.
  bool Release(std::int64_t handle);
  // The same, but throws std::runtime_error "NAME does not exist." when there is none.
  void Delete(std::int64_t handle);
  // Releases every object there is: who still holds an entry finds it released.
  void ReleaseAll();

 private:
  [[noreturn]] static void ThrowMissing();

  const std::int32_t connection_;
  Mutex mutex_;
  std::uint32_t lastNumber_ KELVO_GUARDED_BY(mutex_) = Kind::NumberBeforeFirst;
  std::unordered_map<std::int64_t, std::shared_ptr<Entry>> entries_ KELVO_GUARDED_BY(mutex_);
};

using ListTable = HandleTable<ListKind>;
using FontTable = HandleTable<FontKind>;

}  // namespace VELTRO::KELVO::ClientLib
