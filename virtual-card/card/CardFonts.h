// The fonts that the card holds.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "base/MemoryBudget.h"
#include "card/StoredFiles.h"
#include "common/Mutex.h"
#include "services/Font.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. A font that was found stays as it is while it is held: setting,
// loading or deleting it puts another in its place.
//
// A stored font is a copy beside the loaded ones. It survives the deletion of its loaded one, so that it can be
// loaded again, and is replaced by the next that is stored under its id.
class CardFonts {
 public:
  using Snapshot = std::shared_ptr<const ClientLib::Font>;

  // Takes the fonts that were stored.
  CardFonts(MemoryBudget& memory, StateDirectory& state);

  // Puts the font under its own id, in place of the one that is there. Throws as MemoryCharge does.
  void Set(ClientLib::Font font);
  // Throws std::runtime_error "There is no font ID on the card.".
  Snapshot Find(std::int32_t id);
  // Throws as Find. Without the active font none is active.
  void Delete(std::int32_t id);
  // Throws as Find, or as StoredFiles::Write.
  void Store(std::int32_t id);
  // Puts the stored font in place of the loaded one, if any. Throws std::runtime_error "There is no stored
  // font ID on the card.".
  void Load(std::int32_t id);

  // Throws as Find.
  void SetActive(std::int32_t id);
  // The active font as it is now, with its id; null when none is active.
  Snapshot GetActive();

 private:
  const Snapshot& Loaded(std::int32_t id) KELVO_REQUIRES(mutex_);

  MemoryBudget& memory_;
  ClientLib::Mutex storing_;  // ahead of mutex_, which nobody has to wait for while files are written
  StoredFiles files_ KELVO_GUARDED_BY(storing_);
  ClientLib::Mutex mutex_;
  std::map<std::int32_t, Snapshot> loaded_ KELVO_GUARDED_BY(mutex_);
  std::map<std::int32_t, Snapshot> stored_ KELVO_GUARDED_BY(mutex_);
  std::optional<std::int32_t> active_ KELVO_GUARDED_BY(mutex_);  // the id of a loaded font
};

}  // namespace VELTRO::KELVO::VirtualCard
