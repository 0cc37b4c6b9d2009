#include "kelvo/KelvoListAPI.h"

#include <algorithm>
#include <stdexcept>

#include "capi/CallersArray.h"
#include "capi/Frame.h"
#include "capi/TextBuffer.h"
#include "lists/CommandTextReader.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

// Takes the oldest value of a kind: 0, or 1 when there was none.
int32_t Wait(int32_t handle, ListEventKind kind, int32_t* value, const char* name, int32_t timeout_ms) {
  return OnConnection(handle, [&](ConnectionContext& connection) -> int32_t {
    NotNull(value, name);
    const auto timeout =
        timeout_ms < 0 ? ListAPI::Timeout() : ListAPI::Timeout(std::chrono::milliseconds(timeout_ms));
    const auto event = connection.GetListAPI().Wait(kind, timeout);
    if (!event) return 1;
    *value = *event;
    return 0;
  });
}

int32_t InterruptWait(int32_t handle, ListEventKind kind) {
  return OnConnection(handle,
                      [&](ConnectionContext& connection) { connection.GetListAPI().InterruptWait(kind); });
}

int32_t Register(int32_t handle, ListEventKind kind, vlListEventCallback callback, uint32_t* callback_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(callback_id, "callback_id");
    *callback_id = connection.GetListAPI().RegisterCallback(kind, NotNull(callback, "callback"));
  });
}

int32_t UnRegister(int32_t handle, ListEventKind kind, uint32_t callback_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    connection.GetListAPI().UnRegisterCallback(kind, callback_id);
  });
}

CommandList ReadList(const char* text) {
  try {
    return CommandList::FromString(text);
  } catch (const CommandTextError&) {
    throw std::runtime_error("Illegal list content!");
  }
}

}  // namespace

int64_t vlListAllocate(int32_t handle) {
  return OnConnection(handle, [](ConnectionContext& connection) { return connection.Lists.Allocate(); });
}

int64_t vlListAllocateFromString(int32_t handle, const char* text) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(text, "text");
    return connection.Lists.Allocate(ReadList(text));
  });
}

int32_t vlListReleaseHandle(int64_t list) {
  return OnConnection(ListTable::ConnectionOf(list),
                      [&](ConnectionContext& connection) { connection.Lists.Release(list); });
}

int32_t vlListDeleteHandle(int64_t list) {
  return OnConnection(ListTable::ConnectionOf(list),
                      [&](ConnectionContext& connection) { connection.Lists.Delete(list); });
}

int32_t vlListClear(int64_t list) {
  return OnList(list, [](CommandList& commands) { commands.Clear(); });
}

int32_t vlListCommandCount(int64_t list) {
  return OnList(list, [](CommandList& commands) { return static_cast<int32_t>(commands.GetCommandCount()); });
}

int32_t vlListAppendList(int64_t list, int64_t other) {
  return Guarded([&] {
    FindList(list);  // a fault of this one is told first
    const CommandList appended = CopyList(other);
    FindList(list).Use([&](CommandList& commands) { commands.Append(appended); });
  });
}

int32_t vlListAppendCommandFromString(int64_t list, const char* text) {
  return OnList(list, [&](CommandList& commands) {
    commands.Append(Command::FromString(NotNull(text, "text")).View());
  });
}

int64_t vlListStringLen(int64_t list) {
  return OnList(list, [](CommandList& commands) { return static_cast<int64_t>(commands.ToString().size()); });
}

int32_t vlListToString(int64_t list, char* buffer, uint32_t size, uint32_t* length) {
  return OnList(list, [&](CommandList& commands) { CopyText(commands.ToString(), buffer, size, length); });
}

int32_t vlListSet(int32_t handle, int32_t list_id, int64_t list, bool append, int32_t list_field) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    // A snapshot, which shares the commands' memory: no lock is held while the card is waited for.
    CommandList snapshot = connection.Lists.Get(list)->Use([&](CommandList& commands) {
      ListAPI::Prepare(commands, list_field);
      return commands;
    });
    connection.GetListAPI().Send(list_id, snapshot, append);
  });
}

int32_t vlListGet(int32_t handle, int32_t list_id, int64_t list) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    const auto entry = connection.Lists.Get(list);
    CommandList received = connection.GetListAPI().Get(list_id);
    entry->Use([&](CommandList& commands) { commands = std::move(received); });
  });
}

int32_t vlListDelete(int32_t handle, int32_t list_id, bool flag) {
  return OnConnection(handle,
                      [&](ConnectionContext& connection) { connection.GetListAPI().Delete(list_id, flag); });
}

int32_t vlListGetStoredListIDs(int32_t handle, int32_t* ids, uint32_t capacity, uint32_t* count) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    CallersArray array(ids, "ids", capacity, count);
    const auto stored = connection.GetListAPI().GetStoredListIDs();
    array.TellCount(stored.size());
    array.Fill(stored, "Buffer is too small.");
  });
}

int32_t vlListLoad(int32_t handle, int32_t list_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) { connection.GetListAPI().Load(list_id); });
}

int32_t vlListStore(int32_t handle, int32_t list_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) { connection.GetListAPI().Store(list_id); });
}

int32_t vlListExecute(int32_t handle, int32_t list_id) {
  return OnConnection(handle,
                      [&](ConnectionContext& connection) { connection.GetListAPI().Execute(list_id); });
}

int32_t vlListAbortExecution(int32_t handle) {
  return OnConnection(handle,
                      [](ConnectionContext& connection) { connection.GetListAPI().AbortExecution(); });
}

int32_t vlListResetExecution(int32_t handle) {
  return OnConnection(handle,
                      [](ConnectionContext& connection) { connection.GetListAPI().ResetExecution(); });
}

int32_t vlListIsExecutionInProgress(int32_t handle, bool* in_progress) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(in_progress, "in_progress");
    *in_progress = connection.GetListAPI().IsExecutionInProgress();
  });
}

int32_t vlListGetListStatus(int32_t handle, int32_t list_id, int32_t* status) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(status, "status");
    *status = connection.GetListAPI().GetListStatus(list_id);
  });
}

int32_t vlListGetListCaret(int32_t handle, int32_t list_id, int32_t* caret) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(caret, "caret");
    *caret = connection.GetListAPI().GetListCaret(list_id);
  });
}

int32_t vlListSetExecutionLimit(int32_t handle, int32_t limit) {
  return OnConnection(
      handle, [&](ConnectionContext& connection) { connection.GetListAPI().SetExecutionLimit(limit); });
}

int32_t vlListGetExecutionLimit(int32_t handle, int32_t* limit) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(limit, "limit");
    *limit = connection.GetListAPI().GetExecutionLimit();
  });
}

int32_t vlListGetLastExecutionStats(int32_t handle, vlListExecutionStats* stats) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(stats, "stats");
    const ListExecutionStats received = connection.GetListAPI().GetLastExecutionStats();
    *stats = {received.MacroVectors, received.MicroVectors, received.ComputationTime, received.ExecutionTime,
              received.ComputationTimePerMicroVector};
  });
}

int32_t vlListWaitForProgress(int32_t handle, int32_t* value, int32_t timeout_ms) {
  return Wait(handle, ListEventKind::Progress, value, "value", timeout_ms);
}

int32_t vlListWaitForListDone(int32_t handle, int32_t* list_id, int32_t timeout_ms) {
  return Wait(handle, ListEventKind::ListDone, list_id, "list_id", timeout_ms);
}

int32_t vlListWaitForListIdle(int32_t handle, int32_t* list_id, int32_t timeout_ms) {
  return Wait(handle, ListEventKind::ListIdle, list_id, "list_id", timeout_ms);
}

int32_t vlListInterruptWaitForProgress(int32_t handle) {
  return InterruptWait(handle, ListEventKind::Progress);
}

int32_t vlListInterruptWaitForListDone(int32_t handle) {
  return InterruptWait(handle, ListEventKind::ListDone);
}

int32_t vlListInterruptWaitForListIdle(int32_t handle) {
  return InterruptWait(handle, ListEventKind::ListIdle);
}

int32_t vlListRegisterProgressCallback(int32_t handle, vlListEventCallback callback, uint32_t* callback_id) {
  return Register(handle, ListEventKind::Progress, callback, callback_id);
}

int32_t vlListRegisterListDoneCallback(int32_t handle, vlListEventCallback callback, uint32_t* callback_id) {
  return Register(handle, ListEventKind::ListDone, callback, callback_id);
}

int32_t vlListRegisterListIdleCallback(int32_t handle, vlListEventCallback callback, uint32_t* callback_id) {
  return Register(handle, ListEventKind::ListIdle, callback, callback_id);
}

int32_t vlListRegisterErrorEventCallback(int32_t handle, vlErrorEventCallback callback,
                                         uint32_t* callback_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(callback_id, "callback_id");
    *callback_id = connection.GetListAPI().RegisterErrorEventCallback(NotNull(callback, "callback"));
  });
}

int32_t vlListUnRegisterProgressCallback(int32_t handle, uint32_t callback_id) {
  return UnRegister(handle, ListEventKind::Progress, callback_id);
}

int32_t vlListUnRegisterListDoneCallback(int32_t handle, uint32_t callback_id) {
  return UnRegister(handle, ListEventKind::ListDone, callback_id);
}

int32_t vlListUnRegisterListIdleCallback(int32_t handle, uint32_t callback_id) {
  return UnRegister(handle, ListEventKind::ListIdle, callback_id);
}

int32_t vlListUnRegisterErrorEventCallback(int32_t handle, uint32_t callback_id) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    connection.GetListAPI().UnRegisterErrorEventCallback(callback_id);
  });
}

int32_t vlListClearPendingEvents(int32_t handle) {
  return OnConnection(handle,
                      [](ConnectionContext& connection) { connection.GetListAPI().ClearPendingEvents(); });
}
