// Lists on the card: upload, execution, status, and the events of a run. A thin facade over a connection.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "lists/CommandList.h"
#include "lists/ListEvents.h"
#include "lists/ListExecutionStats.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

class ListAPI {
 public:
  ListAPI(RpcCaller& caller, ListEvents& events) : caller_(caller), events_(events) {}

  // Uploads the list in as many pieces as it needs: Prepare and Send.
  void Set(std::int32_t listId, CommandList& list, bool append, std::int32_t listField) {
    Prepare(list, listField);
    Send(listId, list, append);
  }
  // Makes the list ready: resolves its labels, gives it its field. Throws as LabelList does, or
  // std::runtime_error "There are open loops inside the list!" or, for a command that fits no upload,
  // "Command INDEX is too large to be uploaded.".
  static void Prepare(CommandList& list, std::int32_t listField);
  // Sends a list that is ready.
  void Send(std::int32_t listId, const CommandList& list, bool append);
  CommandList Get(std::int32_t listId) { return caller_.Call<CommandList>("GetList", listId); }
  CommandList GetList(std::int32_t listId) { return Get(listId); }
  std::vector<std::int32_t> GetStoredListIDs() {
    return caller_.Call<std::vector<std::int32_t>>("GetStoredListIDs");
  }
  void Load(std::int32_t listId) { caller_.Call("LoadList", listId); }
  void Store(std::int32_t listId) { caller_.Call("StoreList", listId); }
  void Delete(std::int32_t listId, bool flag) { caller_.Call("DeleteList", listId, flag); }
  void Execute(std::int32_t listId) { caller_.Call("ExecuteList", listId); }
  void AbortExecution() { caller_.Call("AbortExecution"); }
  void ResetExecution() { caller_.Call("ResetExecution"); }
  bool IsExecutionInProgress() { return caller_.Call<bool>("IsExecutionInProgress"); }
  std::int32_t GetListStatus(std::int32_t listId) {
    return caller_.Call<std::int32_t>("GetListStatus", listId);
  }
  std::int32_t GetListCaret(std::int32_t listId) {
    return caller_.Call<std::int32_t>("GetListCaret", listId);
  }
  void SetExecutionLimit(std::int32_t limit) { caller_.Call("SetExecutionLimit", limit); }
  std::int32_t GetExecutionLimit() { return caller_.Call<std::int32_t>("GetExecutionLimit"); }
  ListExecutionStats GetLastExecutionStats() {
    return caller_.Call<ListExecutionStats>("GetLastExecutionStats");
  }

  // ---- Local: the events of this connection's lists (ListEvents)

  // Waits for the oldest value of the kind, up to `timeout` or else the connection's time-out; nothing when
  // none came in time or the wait was interrupted (ListEvents::Wait).
  using Timeout = std::optional<std::chrono::milliseconds>;
  std::optional<std::int32_t> Wait(ListEventKind kind, Timeout timeout);
  std::optional<std::int32_t> WaitForProgress(Timeout t = {}) { return Wait(ListEventKind::Progress, t); }
  std::optional<std::int32_t> WaitForListIdle(Timeout t = {}) { return Wait(ListEventKind::ListIdle, t); }
  std::optional<std::int32_t> WaitForListDone(Timeout t = {}) { return Wait(ListEventKind::ListDone, t); }
  void InterruptWait(ListEventKind kind) { events_.InterruptWait(kind); }
  void InterruptWaitForProgress() { InterruptWait(ListEventKind::Progress); }
  void InterruptWaitForListIdle() { InterruptWait(ListEventKind::ListIdle); }
  void InterruptWaitForListDone() { InterruptWait(ListEventKind::ListDone); }

  // Registering returns the id under which the callback is unregistered.
  using EventCallback = ListEvents::EventCallback;
  std::uint32_t RegisterCallback(ListEventKind kind, EventCallback callback) {
    return events_.RegisterCallback(kind, std::move(callback));
  }
  void UnRegisterCallback(ListEventKind kind, std::uint32_t id) { events_.UnRegisterCallback(kind, id); }
  std::uint32_t RegisterProgressCallback(EventCallback callback) {
    return RegisterCallback(ListEventKind::Progress, std::move(callback));
  }
  std::uint32_t RegisterListIdleCallback(EventCallback callback) {
    return RegisterCallback(ListEventKind::ListIdle, std::move(callback));
  }
  std::uint32_t RegisterListDoneCallback(EventCallback callback) {
    return RegisterCallback(ListEventKind::ListDone, std::move(callback));
  }
  std::uint32_t RegisterErrorEventCallback(ListEvents::ErrorCallback callback) {
    return events_.RegisterErrorEventCallback(std::move(callback));
  }
  void UnRegisterProgressCallback(std::uint32_t id) { UnRegisterCallback(ListEventKind::Progress, id); }
  void UnRegisterListIdleCallback(std::uint32_t id) { UnRegisterCallback(ListEventKind::ListIdle, id); }
  void UnRegisterListDoneCallback(std::uint32_t id) { UnRegisterCallback(ListEventKind::ListDone, id); }
  void UnRegisterErrorEventCallback(std::uint32_t id) { events_.UnRegisterErrorEventCallback(id); }

  // Discards the values that are pending, those that have arrived but are not yet read included as far as that goes.
  void ClearPendingEvents();

 private:
  RpcCaller& caller_;
  ListEvents& events_;
};

}  // namespace VELTRO::KELVO::ClientLib
