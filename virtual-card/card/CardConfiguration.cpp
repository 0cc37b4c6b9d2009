#include "card/CardConfiguration.h"

#include <stdexcept>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

void CardConfiguration::BeginUpdate() {
  const MutexLock lock(mutex_);
  if (updating_) throw std::runtime_error("An update is already active.");
  updating_ = true;
  for (UpdateParticipant* record : AllRecords()) record->BeginUpdate();
}

void CardConfiguration::EndUpdate(bool keep) {
  const MutexLock lock(mutex_);
  if (!updating_) throw std::runtime_error("No update is active.");
  updating_ = false;
  for (UpdateParticipant* record : AllRecords()) record->EndUpdate(keep);
}

bool CardConfiguration::IsUpdateActive() {
  const MutexLock lock(mutex_);
  return updating_;
}

}  // namespace VELTRO::KELVO::VirtualCard
