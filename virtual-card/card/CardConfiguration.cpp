#include "card/CardConfiguration.h"

#include <algorithm>
#include <stdexcept>

#include "card/PeripheralChecks.h"
#include "card/TimeZones.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

CardConfiguration::CardConfiguration(StateDirectory& directory)
    : Laser(directory),
      Scanner(directory),
      Variables(directory),
      System(directory, [](const ClientLib::SystemConfig& config) { FindTimeZone(config.TimeZone); }),
      Motf(directory),
      QuadratureDecoder(directory),
      Events(directory),
      Gpio(directory, CheckPorts),
      SerialPorts(directory, CheckSerialPorts),
      Spi(directory, CheckSpiModules),
      AdapterBoard(directory) {}

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

void CardConfiguration::Reset() {
  const MutexLock lock(mutex_);
  for (UpdateParticipant* record : AllRecords()) record->Reset();
}

bool CardConfiguration::IsSound() {
  return std::ranges::all_of(AllRecords(), &UpdateParticipant::IsSound);
}

}  // namespace VELTRO::KELVO::VirtualCard
