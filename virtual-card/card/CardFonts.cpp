#include "card/CardFonts.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Font;
using ClientLib::MutexLock;

const CardFonts::Snapshot& CardFonts::Loaded(std::int32_t id) {
  const auto found = loaded_.find(id);
  if (found == loaded_.end()) {
    throw std::runtime_error("There is no font " + std::to_string(id) + " on the card.");
  }
  return found->second;
}

void CardFonts::Set(Font font) {
  const auto snapshot = std::make_shared<const Font>(std::move(font));
  const MutexLock lock(mutex_);
  loaded_[snapshot->Id] = snapshot;
}

CardFonts::Snapshot CardFonts::Find(std::int32_t id) {
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
  const MutexLock lock(mutex_);
  stored_[id] = Loaded(id);
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

CardFonts::Snapshot CardFonts::GetActive() {
  const MutexLock lock(mutex_);
  return active_ ? Loaded(*active_) : nullptr;
}

}  // namespace VELTRO::KELVO::VirtualCard
