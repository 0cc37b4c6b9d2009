#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandList;

std::span<const Method> ListMethods() {
  static constexpr Method Rows[] = {
      {"SetList", [](Card& card, std::int32_t id, CommandList list,
                     bool append) { card.Lists.Set(id, std::move(list), append); }},
      {"GetList", [](Card& card, std::int32_t id) { return card.Lists.Get(id); }},
      // The flag says whether what is stored of the list goes, too. The card stores none.
      {"DeleteList", [](Card& card, std::int32_t id, bool) { card.Lists.Delete(id); }},
      {"GetStoredListIDs", [](Card& card) { return card.Lists.GetIds(); }},
      {"GetListStatus",
       [](Card& card, std::int32_t id) { return static_cast<std::int32_t>(card.Lists.GetStatus(id)); }},
      {"ExecuteList", [](Card& card, std::int32_t id) { card.Lists.Execute(id); }},
      {"AbortExecution", [](Card& card) { card.Execution.Abort(); }},
      {"IsExecutionInProgress", [](Card& card) { return card.Execution.GetRunningList().has_value(); }},
      {"GetLastExecutionStats", [](Card& card) { return card.Execution.GetLastStats(); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
