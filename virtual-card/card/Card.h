// The card: what it is, what it holds, what it does. Each area is a part of it with a room of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/Activity.h"
#include "base/MemoryBudget.h"
#include "card/CardConfiguration.h"
#include "card/CardCounters.h"
#include "card/CardDiagnostics.h"
#include "card/CardFiles.h"
#include "card/CardFonts.h"
#include "card/CardHeadCorrections.h"
#include "card/CardLaser.h"
#include "card/CardLists.h"
#include "card/CardModules.h"
#include "card/CardMotf.h"
#include "card/CardPowerCorrection.h"
#include "card/CardScanner.h"
#include "card/CardSystem.h"
#include "card/Executor.h"
#include "card/Notifier.h"
#include "card/PendingWork.h"
#include "faults/Faults.h"
#include "surroundings/ListVariables.h"
#include "surroundings/MarkTimeFormat.h"
#include "surroundings/Pins.h"
#include "surroundings/RunInputs.h"
#include "surroundings/SerialPorts.h"

namespace VELTRO::KELVO::VirtualCard {

struct CardIdentity {
  std::string FirmwareVersion;
  std::string SerialNumber;
  std::uint32_t ConnectionLimit = 0;
};

struct CardSettings {
  CardIdentity Identity;
  ExecutorSettings Execution;
  std::string StateDirectory;  // empty: what is stored ends with the card
  std::size_t Memory = 0;      // bytes for lists, fonts and, without a state directory, files
  std::uint64_t FaultSeed = 0;
};

// Any thread may use any part at any time.
class Card {
 public:
  // Throws as Plotter, StateDirectory and CardFiles do.
  Card(CardSettings settings, Notifier& clients);

 private:
  Simulation::AbortSignal runSignal_;
  StateDirectory state_;
  MemoryBudget memory_;

 public:
  const CardIdentity Identity;
  CardCounters Counters;
  Activity Doings;
  Faults FaultsOnRequest;  // which befall requests as they come, and what is sent
  CardConfiguration Configuration;
  CardSystem System;
  CardLaser Laser;
  CardMotf Motf;
  Simulation::RunInputs Inputs;
  Simulation::Pins Ports;
  Simulation::SerialPorts Serial;
  PendingWork Pending;
  Simulation::ListVariables Variables;
  Simulation::MarkTimeFormat TimeFormat;
  CardFonts Fonts;
  CardFiles Files;
  CardHeadCorrections HeadCorrections;
  CardPowerCorrection PowerCorrection;
  CardLists Lists;
  CardScanner Scanner;
  CardModules Modules;
  CardDiagnostics Diagnostics;
  Executor Execution;  // the last, so that no run outlives what it acts upon
};

}  // namespace VELTRO::KELVO::VirtualCard
