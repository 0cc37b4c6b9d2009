#include "card/CardFonts.h"

#include <stdexcept>
#include <string>
#include <utility>

#include "card/ListMemory.h"
#include "card/StoredForm.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Font;
using ClientLib::MutexLock;

namespace {

constexpr std::size_t MostFontFileBytes = std::size_t{64} << 20;

// A font and what it costs, as long as anybody has it.
struct ChargedFont {
  ChargedFont(Font font, MemoryBudget& memory) : Content(std::move(font)), Charge(memory) {}

  Font Content;
  MemoryCharge Charge;
};

Simulation::FontSnapshot Charged(Font font, MemoryBudget& memory) {
  const std::size_t bytes = MemoryOf(font);
  const auto charged = std::make_shared<ChargedFont>(std::move(font), memory);
  charged->Charge.Add(bytes);
  return {charged, &charged->Content};
}

}  // namespace

CardFonts::CardFonts(MemoryBudget& memory, StateDirectory& state)
    : memory_(memory), files_(state, "Font", MostFontFileBytes) {
  const MutexLock storing(storing_);
  files_.ReadAll([this](std::int32_t id, std::string_view bytes) {
    auto font = FromStored<Font>(bytes);
    font.Id = id;
    const Simulation::FontSnapshot snapshot = Charged(std::move(font), memory_);
    const MutexLock lock(mutex_);
    stored_[id] = snapshot;
  });
}

const Simulation::FontSnapshot& CardFonts::Loaded(std::int32_t id) {
  const auto found = loaded_.find(id);
  if (found == loaded_.end()) {
    throw std::runtime_error("There is no font " + std::to_string(id) + " on the card.");
  }
  return found->second;
}

void CardFonts::Set(Font font) {
  const Simulation::FontSnapshot snapshot = Charged(std::move(font), memory_);
  const MutexLock lock(mutex_);
  loaded_[snapshot->Id] = snapshot;
}

Simulation::FontSnapshot CardFonts::Find(std::int32_t id) {
  const MutexLock lock(mutex_);
  return Loaded(id);
}

void CardFonts::Delete(std::int32_t id) {
  const MutexLock lock(mutex_);
  Loaded(id);
  loaded_.erase(id);
  if (active_ == id) active_.reset();
}

void CardFonts::Store(std::int32_t id) {
  const MutexLock storing(storing_);
  const Simulation::FontSnapshot font = Find(id);
  files_.Write(id, [&font] { return ToStored(*font); });
  const MutexLock lock(mutex_);
  stored_[id] = font;
}

void CardFonts::Load(std::int32_t id) {
  const MutexLock lock(mutex_);
  const auto found = stored_.find(id);
  if (found == stored_.end()) {
    throw std::runtime_error("There is no stored font " + std::to_string(id) + " on the card.");
  }
  loaded_[id] = found->second;
}

void CardFonts::SetActive(std::int32_t id) {
  const MutexLock lock(mutex_);
  Loaded(id);
  active_ = id;
}

Simulation::FontSnapshot CardFonts::GetActive() {
  const MutexLock lock(mutex_);
  return active_ ? Loaded(*active_) : nullptr;
}

}  // namespace VELTRO::KELVO::VirtualCard
