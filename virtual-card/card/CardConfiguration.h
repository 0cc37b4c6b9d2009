// The configuration of the card: its records, and groups of settings of them.
#pragma once

#include <vector>

#include "card/KeptRecord.h"
#include "common/Mutex.h"
#include "config/LaserConfig.h"
#include "config/MotfConfig.h"
#include "config/ProcessVariables.h"
#include "config/QuadratureDecoderConfig.h"
#include "config/ScannerConfig.h"
#include "config/SystemConfig.h"
#include "peripherals/AdapterBoardConfig.h"
#include "peripherals/GpioConfig.h"
#include "peripherals/SerialPortConfig.h"
#include "peripherals/SpiConfig.h"
#include "services/EventConfig.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class CardConfiguration {
 public:
  // What is stored becomes active.
  explicit CardConfiguration(StateDirectory& directory);

  KeptRecord<ClientLib::LaserConfig> Laser;
  KeptRecord<ClientLib::ScannerConfig> Scanner;
  KeptRecord<ClientLib::ProcessVariables> Variables;
  KeptRecord<ClientLib::SystemConfig> System;
  KeptRecord<ClientLib::MotfConfig> Motf;
  KeptRecord<ClientLib::QuadratureDecoderConfig> QuadratureDecoder;
  KeptRecord<ClientLib::EventConfig> Events;
  KeptRecord<ClientLib::GpioConfig> Gpio;
  KeptRecord<ClientLib::SerialPortConfig> SerialPorts;
  KeptRecord<ClientLib::SpiConfig> Spi;
  KeptRecord<ClientLib::AdapterBoardConfig> AdapterBoard;

  // Throws std::runtime_error "An update is already active.".
  void BeginUpdate();
  // Throws std::runtime_error "No update is active.".
  void EndUpdate(bool keep);
  bool IsUpdateActive();

  // The defaults of every record become active; what is stored stays.
  void Reset();
  // Whether all that was stored could be read.
  bool IsSound();

 private:
  // Every record there is: settings of all of them can be grouped.
  std::vector<UpdateParticipant*> AllRecords() {
    return {&Laser,  &Scanner, &Variables,   &System, &Motf,        &QuadratureDecoder,
            &Events, &Gpio,    &SerialPorts, &Spi,    &AdapterBoard};
  }

  ClientLib::Mutex mutex_;
  bool updating_ KELVO_GUARDED_BY(mutex_) = false;
};

}  // namespace VELTRO::KELVO::VirtualCard
