// What the card tells of itself.
#pragma once

#include <vector>

#include "base/MemoryBudget.h"
#include "card/CardConfiguration.h"
#include "card/CardCounters.h"
#include "card/Notifier.h"
#include "card/StateDirectory.h"
#include "peripherals/Diagnostics.h"
#include "surroundings/SerialPorts.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
class CardDiagnostics {
 public:
  CardDiagnostics(const CardCounters& counters, const Notifier& clients, CardConfiguration& configuration,
                  const MemoryBudget& memory, StateDirectory& state, Simulation::SerialPorts& serial)
      : counters_(counters),
        clients_(clients),
        configuration_(configuration),
        memory_(memory),
        state_(state),
        serial_(serial) {}

  std::vector<ClientLib::Measurement> Measure() const;
  std::vector<ClientLib::SelfTestResult> RunSelfTest() const;

 private:
  ClientLib::SelfTestResult TestMemory() const;
  ClientLib::SelfTestResult TestStateDirectory() const;
  ClientLib::SelfTestResult TestSerialPort() const;

  const CardCounters& counters_;
  const Notifier& clients_;
  CardConfiguration& configuration_;
  const MemoryBudget& memory_;
  StateDirectory& state_;
  Simulation::SerialPorts& serial_;
};

}  // namespace VELTRO::KELVO::VirtualCard
