#include "card/Card.h"

#include <utility>

namespace VELTRO::KELVO::VirtualCard {

Card::Card(CardSettings settings, Notifier& clients)
    : state_(settings.StateDirectory),
      memory_(settings.Memory),
      Identity(std::move(settings.Identity)),
      FaultsOnRequest(settings.FaultSeed),
      Configuration(state_),
      System(Configuration),
      Laser(state_),
      Motf(Configuration.QuadratureDecoder),
      Inputs(runSignal_),
      Ports(runSignal_),
      Serial(runSignal_),
      Pending(runSignal_),
      Variables(runSignal_),
      Fonts(memory_, state_),
      Files(state_.GetHost(), memory_),
      HeadCorrections(Files, Configuration, state_),
      PowerCorrection(Files),
      Lists(Execution, memory_, state_),
      Scanner(Configuration, Execution),
      Modules(Configuration, Execution),
      Diagnostics(Counters, clients, Configuration, memory_, state_, Serial),
      Execution(settings.Execution,
                {runSignal_, Inputs, Ports, Serial, Variables, TimeFormat, Lists, Fonts,
                 [this] { return Configuration.Variables.Get(); },
                 [this] { return ClientLib::DateTime(System.GetTime()); },
                 [&clients](std::int32_t value) { clients.NotifyProgress(value); },
                 [this](std::int32_t module) { Modules.CheckSpi(module); }},
                clients, Counters) {
  clients.ShowTo(Doings);
  Configuration.Gpio.Follow([this](const ClientLib::GpioConfig& config) { Ports.Configure(config); });
  Configuration.SerialPorts.Follow(
      [this](const ClientLib::SerialPortConfig& config) { Serial.Configure(config); });
}

}  // namespace VELTRO::KELVO::VirtualCard
