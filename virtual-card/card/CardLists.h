// The lists that the card holds, and those that it has stored.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/MemoryBudget.h"
#include "card/Executor.h"
#include "card/StoredFiles.h"
#include "common/Mutex.h"
#include "lists/CommandList.h"
#include "lists/ListStatus.h"
#include "surroundings/ListSource.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. The list that was started cannot be changed while it runs. Those
// that it calls can: a call that is under way goes on with the list as it was, the next one takes the new list.
class CardLists : public Simulation::ListSource {
 public:
  // Takes the lists that were stored.
  CardLists(Executor& executor, MemoryBudget& memory, StateDirectory& state);

  // Puts the list under its id, or with `append` its commands behind those that are there. Throws
  // std::runtime_error "List ID is running.", or as MemoryCharge does.
  void Set(std::int32_t id, ClientLib::CommandList list, bool append);
  // Throws std::runtime_error "There is no list ID on the card.".
  ClientLib::CommandList Get(std::int32_t id);
  // Stores the list as it is now. Throws as Get, or as StoredFiles::Write.
  void Store(std::int32_t id);
  // Puts the stored list under its id. Throws as Set, or std::runtime_error "There is no stored list ID on the
  // card.".
  void Load(std::int32_t id);
  // With `alsoStored` what is stored of it goes, too. Throws as Set and Get, or as StoredFiles::Remove.
  void Delete(std::int32_t id, bool alsoStored);
  // Of the lists that are there or stored, ascending.
  std::vector<std::int32_t> GetIds();
  struct View {
    std::int32_t Id;
    bool IsThere;
    std::size_t Commands;  // of what is there
    bool IsStored;
  };
  // The first `most` of them, and how many there are.
  std::pair<std::vector<View>, std::size_t> Look(std::size_t most);
  // A list that is called is running, too.
  ClientLib::ListStatus GetStatus(std::int32_t id);
  // Throws as Get and Executor::Start.
  void Execute(std::int32_t id);

  std::optional<Simulation::ListSnapshot> FindChanged(std::int32_t id, std::uint64_t known) override;

 private:
  // A list and what it costs, as long as anybody has a snapshot of it.
  struct Held {
    std::uint64_t Version;
    ClientLib::CommandList Commands;
    std::shared_ptr<MemoryCharge> Charge;

    Simulation::ListSnapshot Snapshot() const { return {Version, Commands, Charge}; }
  };

  const Held& Find(std::int32_t id) KELVO_REQUIRES(mutex_);
  void Put(std::int32_t id, Held list) KELVO_REQUIRES(mutex_);
  void CheckNotRunning(std::int32_t id);

  Executor& executor_;
  MemoryBudget& memory_;
  ClientLib::Mutex storing_;  // ahead of mutex_, which nobody has to wait for while files are written
  StoredFiles files_ KELVO_GUARDED_BY(storing_);
  ClientLib::Mutex mutex_;
  std::map<std::int32_t, Held> lists_ KELVO_GUARDED_BY(mutex_);
  std::map<std::int32_t, Held> stored_ KELVO_GUARDED_BY(mutex_);
  std::uint64_t version_ KELVO_GUARDED_BY(mutex_) = 0;  // of the latest change
};

}  // namespace VELTRO::KELVO::VirtualCard
