// The configuration of the card: its records, and groups of settings of them.
#pragma once

#include <vector>

#include "card/KeptRecord.h"
#include "common/Mutex.h"
#include "config/LaserConfig.h"
#include "config/ScannerConfig.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class CardConfiguration {
 public:
  // What is stored becomes active. Throws as KeptRecord does.
  explicit CardConfiguration(StateDirectory& directory)
      : Laser("LaserConfig", directory), Scanner("ScannerConfig", directory) {}

  KeptRecord<ClientLib::LaserConfig> Laser;
  KeptRecord<ClientLib::ScannerConfig> Scanner;

  // Throws std::runtime_error "An update is already active.".
  void BeginUpdate();
  // Throws std::runtime_error "No update is active.".
  void EndUpdate(bool keep);
  bool IsUpdateActive();

 private:
  // Every record there is: settings of all of them can be grouped.
  std::vector<UpdateParticipant*> AllRecords() { return {&Laser, &Scanner}; }

  ClientLib::Mutex mutex_;
  bool updating_ KELVO_GUARDED_BY(mutex_) = false;
};

}  // namespace VELTRO::KELVO::VirtualCard
