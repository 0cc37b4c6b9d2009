// The process-wide table of connection handles.
#pragma once

#include <unistd.h>

#include <atomic>
#include <limits>
#include <memory>
#include <unordered_map>

#include "capi/ConnectionContext.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::ClientLib {

class APIContext {
 public:
  // The instance, created on first use. The end of the process ends its connections.
  static APIContext& getInstance();

  // `lastHandle`: the handle issued last. `mostHandle`: the one after which they begin again with 1.
  explicit APIContext(int lastHandle = 0, int mostHandle = std::numeric_limits<int>::max())
      : mostHandle_(mostHandle), lastHandle_(lastHandle) {}

  // Makes a connection context and returns its handle, 1 or more. Throws std::runtime_error "Maximum number
  // of handles created. Disconnect has to be called to remove previous connections.".
  int CreateNew();
  // The connection of the handle, for a caller that knows that nobody removes it meanwhile. Throws
  // std::runtime_error "Illegal handle." or "There is no connection corresponding to this handle.".
  ClientAPI& Get(int handle) { return Share(handle)->Client; }
  // The same for everybody else: what is shared lives on while it is used, also when it is removed.
  std::shared_ptr<ConnectionContext> Share(int handle);
  // The same for ending the connection, which only the process that made it may. Throws also std::runtime_error "The
  // connection belongs to another process.".
  std::shared_ptr<ConnectionContext> ShareOwn(int handle);
  // The same without an exception: null when there is none.
  std::shared_ptr<ConnectionContext> Find(int handle);
  // Removes the handle, which destroys its context, not under the table's lock, once nobody uses it any more.
  // An unknown handle is ignored.
  void Remove(int handle);

 private:
  static void EndAtExit();
  // Whether this process has made connections. A child of fork has its parent's table, too, and its lock perhaps for
  // ever in the hands of a thread that it has not: so this is asked before the lock is taken.
  bool IsOwn() const { return process_ == getpid(); }

  const int mostHandle_;
  std::atomic<pid_t> process_{0};  // which made the latest connection
  Mutex mutex_;
  std::unordered_map<int, std::shared_ptr<ConnectionContext>> contexts_ KELVO_GUARDED_BY(mutex_);
  int lastHandle_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::ClientLib
