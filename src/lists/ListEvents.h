// A connection's list notifications: queues them for waiting callers and passes them to callbacks.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/Mutex.h"

namespace VELTRO::KELVO::ClientLib {

enum class ListEventKind { Progress, ListIdle, ListDone };
inline constexpr std::size_t ListEventKinds = 3;

struct RpcErrorEventArgs {
  std::int32_t Code = 0;
  std::string Message;
};

// The callbacks of one kind, under the ids 2 to 6. Deliberate oddity: the attempt with id 7 fails but leaves
// its entry in place, which is called like the others until it is unregistered.
template <class Callback>
class CallbackRegistry {
 public:
  // Returns the id. Throws std::runtime_error "Unable to register callback!".
  std::uint32_t Register(Callback callback);
  void UnRegister(std::uint32_t id);
  // Calls every callback, with no lock held. For the receive thread only.
  template <class... Args>
  void CallAll(const Args&... args);

 private:
  static constexpr std::uint32_t FirstId = 2;
  static constexpr std::uint32_t FailingId = 7;

  Mutex mutex_;
  std::map<std::uint32_t, Callback> callbacks_ KELVO_GUARDED_BY(mutex_);
  std::atomic<std::uint64_t> version_{0};
  std::vector<Callback> called_;  // the receive thread's copy of callbacks_, as of calledVersion_
  std::uint64_t calledVersion_ = 0;
};

class ListEvents {
 public:
  using EventCallback = std::function<void(std::int32_t connection, std::int32_t value)>;
  using ErrorCallback =
      std::function<void(std::int32_t connection, std::int32_t code, const char* text, std::uint32_t length)>;

  // Of more values that nobody takes the oldest go first.
  static constexpr std::size_t MostPending = 1048576;

  // From here on waits wait. Forgets what an earlier connection left.
  void Connected(std::int32_t connectionId);
  // Ends every wait, now and to come, once the values that are there are taken.
  void ConnectionLost();

  // The receive thread's side: queues a value and wakes the waits; calls the callbacks.
  void AppendEvent(ListEventKind kind, std::int32_t value);
  void OnReceived(ListEventKind kind, std::int32_t value);
  void AppendProgressEvent(std::int32_t value) { AppendEvent(ListEventKind::Progress, value); }
  void AppendListIdleEvent(std::int32_t listId) { AppendEvent(ListEventKind::ListIdle, listId); }
  void AppendListDoneEvent(std::int32_t listId) { AppendEvent(ListEventKind::ListDone, listId); }
  void OnProgressReceived(std::int32_t value) { OnReceived(ListEventKind::Progress, value); }
  void OnListIdleReceived(std::int32_t listId) { OnReceived(ListEventKind::ListIdle, listId); }
  void OnListDoneReceived(std::int32_t listId) { OnReceived(ListEventKind::ListDone, listId); }
  // Keeps the error as the last one and calls the error callbacks.
  void OnErrorReceived(const RpcErrorEventArgs& error);

  // Waits for the oldest value of the kind. Nothing on time-out or interruption. Throws std::runtime_error
  // "ConnectionAborted" when the connection is lost, "Connection not active!" when there never was one.
  std::optional<std::int32_t> Wait(ListEventKind kind, std::chrono::milliseconds timeout);
  // Ends the kind's waits that are running.
  void InterruptWait(ListEventKind kind);

  std::uint32_t RegisterCallback(ListEventKind kind, EventCallback callback);
  void UnRegisterCallback(ListEventKind kind, std::uint32_t id);
  std::uint32_t RegisterErrorEventCallback(ErrorCallback callback);
  void UnRegisterErrorEventCallback(std::uint32_t id);

  // Discards what is pending, the stored error too.
  void ClearPendingEvents();
  void ClearError();
  // Whether an error was stored; clears it.
  bool CheckAndClearError();

 private:
  struct Channel {
    std::deque<std::int32_t> Pending;
    std::uint64_t Interruptions = 0;
    unsigned Waiting = 0;
  };
  enum class Link { NeverUp, Up, Lost };

  static std::size_t Index(ListEventKind kind) { return static_cast<std::size_t>(kind); }
  void clearEventQueues() KELVO_REQUIRES(mutex_);

  Mutex mutex_;
  CondVar changed_;
  std::array<Channel, ListEventKinds> channels_ KELVO_GUARDED_BY(mutex_);
  Link link_ KELVO_GUARDED_BY(mutex_) = Link::NeverUp;
  std::optional<RpcErrorEventArgs> lastError_ KELVO_GUARDED_BY(mutex_);
  std::atomic<std::int32_t> connectionId_{0};

  std::array<CallbackRegistry<EventCallback>, ListEventKinds> callbacks_;
  CallbackRegistry<ErrorCallback> errorCallbacks_;
};

template <class Callback>
std::uint32_t CallbackRegistry<Callback>::Register(Callback callback) {
  const MutexLock lock(mutex_);
  std::uint32_t id = FirstId;
  while (!callbacks_.emplace(id, callback).second && id != FailingId) ++id;
  ++version_;
  if (id == FailingId) throw std::runtime_error("Unable to register callback!");
  return id;
}

template <class Callback>
void CallbackRegistry<Callback>::UnRegister(std::uint32_t id) {
  const MutexLock lock(mutex_);
  callbacks_.erase(id);
  ++version_;
}

template <class Callback>
template <class... Args>
void CallbackRegistry<Callback>::CallAll(const Args&... args) {
  if (calledVersion_ != version_.load(std::memory_order_acquire)) {
    const MutexLock lock(mutex_);
    called_.clear();
    for (const auto& [id, callback] : callbacks_) called_.push_back(callback);
    calledVersion_ = version_.load(std::memory_order_relaxed);
  }
  for (const Callback& callback : called_) callback(args...);
}

}  // namespace VELTRO::KELVO::ClientLib
