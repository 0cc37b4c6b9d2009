#include "card/ListMemory.h"
#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandList;

std::span<const Method> ListMethods() {
  static constexpr Method Rows[] = {
      {"SetList", [](Card& card, std::int32_t id, CommandList list,
                     bool append) { card.Lists.Set(id, std::move(list), append); }},
      {"GetList",
       [](CardClient& client, std::int32_t id) {
         CommandList list = client.Owner.Lists.Get(id);
         client.Work.Take(MemoryOf(list));
         return list;
       }},
      {"LoadList", [](Card& card, std::int32_t id) { card.Lists.Load(id); }},
      {"StoreList", [](Card& card, std::int32_t id) { card.Lists.Store(id); }},
      {"DeleteList", [](Card& card, std::int32_t id, bool alsoStored) { card.Lists.Delete(id, alsoStored); }},
      {"GetStoredListIDs", [](Card& card) { return card.Lists.GetIds(); }},
      {"GetListStatus",
       [](Card& card, std::int32_t id) { return static_cast<std::int32_t>(card.Lists.GetStatus(id)); }},
      {"GetListCaret", [](Card& card, std::int32_t id) { return card.Execution.GetCaret(id); }},
      {"ExecuteList", [](Card& card, std::int32_t id) { card.Lists.Execute(id); }},
      {"AbortExecution", [](Card& card) { card.Execution.Abort(); }},
      {"ResetExecution",
       [](Card& card) {
         card.Execution.Abort();
         card.Variables.Clear();
       }},
      {"SetExecutionLimit",
       [](Card& card, std::int32_t milliseconds) { card.Execution.SetExecutionLimit(milliseconds); }},
      {"GetExecutionLimit", [](Card& card) { return card.Execution.GetExecutionLimit(); }},
      {"IsExecutionInProgress", [](Card& card) { return card.Execution.GetRunningList().has_value(); }},
      {"GetLastExecutionStats", [](Card& card) { return card.Execution.GetLastStats(); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
