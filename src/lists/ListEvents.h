// A connection's list notifications: queues them for waiting callers and passes them to callbacks.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "common/Mutex.h"
#include "lists/CallbackRegistry.h"

namespace VELTRO::KELVO::ClientLib {

enum class ListEventKind { Progress, ListIdle, ListDone };
inline constexpr std::size_t ListEventKinds = 3;

struct RpcErrorEventArgs {
  std::int32_t Code = 0;
  std::string Message;
};

class ListEvents {
 public:
  using EventCallback = std::function<void(std::int32_t connection, std::int32_t value)>;
  using ErrorCallback =
      std::function<void(std::int32_t connection, std::int32_t code, const char* text, std::uint32_t length)>;

  // Of more values that nobody takes the oldest go first.
  static constexpr std::size_t MostPending = 1048576;

  // From here on waits wait. Forgets what an earlier connection left. `link` tells this one from those before.
  void Connected(std::int32_t connectionId, std::uint64_t link = 0);
  // Ends every wait, now and to come, once the values that are there are taken; nothing happens if the link is not the
  // one that is connected.
  void ConnectionLost(std::uint64_t link = 0);
  // For the end of the process: nobody waits for a running callback any more.
  void Abandon();

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
  // Throws as CallbackRegistry::UnRegister.
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
  std::uint64_t linkNumber_ KELVO_GUARDED_BY(mutex_) = 0;
  std::optional<RpcErrorEventArgs> lastError_ KELVO_GUARDED_BY(mutex_);
  std::atomic<std::int32_t> connectionId_{0};

  std::array<CallbackRegistry<EventCallback>, ListEventKinds> callbacks_;
  CallbackRegistry<ErrorCallback> errorCallbacks_;
};

}  // namespace VELTRO::KELVO::ClientLib
