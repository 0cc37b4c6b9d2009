#include "lists/ListAPI.h"

#include <stdexcept>
#include <thread>

namespace VELTRO::KELVO::ClientLib {

void ListAPI::Prepare(CommandList& list, std::int32_t listField) {
  list.ResolveBranchesAndLabels();
  list.SetListField(listField);
  if (list.GetLoopDepth() != 0) throw std::runtime_error("There are open loops inside the list!");
  list.CheckEachFits();
}

void ListAPI::Send(std::int32_t listId, const CommandList& list, bool append) {
  std::size_t start = 0;
  do {  // an empty list is sent, too: as one call without commands
    const std::size_t end = list.FindChunkEnd(start);
    caller_.Call("SetList", listId, ListPiece{list, start, end}, append);
    append = true;  // what follows extends the list
    start = end;
  } while (start < list.GetCommandCount());
}

std::optional<std::int32_t> ListAPI::Wait(ListEventKind kind, Timeout timeout) {
  static constexpr const char* Names[ListEventKinds] = {"WaitForProgress", "WaitForListIdle",
                                                        "WaitForListDone"};
  caller_.Log(Names[static_cast<std::size_t>(kind)]);
  const CallbackWait waiting = caller_.BeginWait();
  return events_.Wait(kind, timeout.value_or(std::chrono::milliseconds(caller_.GetTimeout())));
}

void ListAPI::ClearPendingEvents() {
  // What has arrived but is not yet read is older than this call, too: let it come in first.
  if (caller_.IsDataPending()) std::this_thread::yield();
  events_.ClearPendingEvents();
}

}  // namespace VELTRO::KELVO::ClientLib
