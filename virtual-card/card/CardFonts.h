// The fonts that the card holds.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "base/MemoryBudget.h"
#include "card/StoredFiles.h"
#include "common/Mutex.h"
#include "services/Font.h"
#include "surroundings/FontSource.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. Setting, loading or deleting a font leaves what was found as it is.
//
// A stored font is a copy beside the loaded ones. It survives the deletion of its loaded one, so that it can be
// loaded again, and is replaced by the next that is stored under its id.
class CardFonts : public Simulation::FontSource {
 public:
  // Takes the fonts that were stored.
  CardFonts(MemoryBudget& memory, StateDirectory& state);

  // Puts the font under its own id, in place of the one that is there. Throws as MemoryCharge does.
  void Set(ClientLib::Font font);
  Simulation::FontSnapshot Find(std::int32_t id) override;
  // Throws as Find. Without the active font none is active.
  void Delete(std::int32_t id);
  // Throws as Find, or as StoredFiles::Write.
  void Store(std::int32_t id);
  // Puts the stored font in place of the loaded one, if any. Throws std::runtime_error "There is no stored
  // font ID on the card.".
  void Load(std::int32_t id);

  // Throws as Find.
  void SetActive(std::int32_t id);
  Simulation::FontSnapshot GetActive() override;

 private:
  const Simulation::FontSnapshot& Loaded(std::int32_t id) KELVO_REQUIRES(mutex_);

  MemoryBudget& memory_;
  ClientLib::Mutex storing_;  // ahead of mutex_, which nobody has to wait for while files are written
  StoredFiles files_ KELVO_GUARDED_BY(storing_);
  ClientLib::Mutex mutex_;
  std::map<std::int32_t, Simulation::FontSnapshot> loaded_ KELVO_GUARDED_BY(mutex_);
  std::map<std::int32_t, Simulation::FontSnapshot> stored_ KELVO_GUARDED_BY(mutex_);
  std::optional<std::int32_t> active_ KELVO_GUARDED_BY(mutex_);  // the id of a loaded font
};

}  // namespace VELTRO::KELVO::VirtualCard
