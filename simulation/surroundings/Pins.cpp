#include "surroundings/Pins.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::Simulation {

using ClientLib::GpioConfig;
using ClientLib::MutexLock;
using ClientLib::PinAction;

Pins::Pins(AbortSignal& waits) : waits_(waits) {
  Configure(GpioConfig());
}

void Pins::Configure(const GpioConfig& config) noexcept {
  {
    const MutexLock lock(mutex_);
    for (std::size_t i = 0; i < std::min(config.Ports.size(), PortCount); ++i) {
      ports_[i].IsOutput = config.Ports[i].Direction == ClientLib::IODirection::Output;
      ports_[i].IsInverted = config.Ports[i].PinPolarity == ClientLib::Polarity::ActiveLow;
    }
  }
  waits_.Wake();
}

void Pins::Connect(std::vector<Wire> wires) {
  const MutexLock lock(mutex_);
  wires_ = std::move(wires);
}

void Pins::SetLevels(std::int32_t port, std::uint32_t levels) {
  {
    const MutexLock lock(mutex_);
    if (IsThere(port)) {
      Port& there = ports_[static_cast<std::size_t>(port)];
      there.Levels = levels;
      if (there.IsOutput) there.Written = there.Others(levels);
    } else {
      others_[port] = levels;
    }
  }
  waits_.Wake();
}

void Pins::SetLevel(Pin pin, bool isHigh) {
  constexpr std::int32_t PinCount = 32;
  if (!IsThere(pin.Port) || pin.Number < 0 || pin.Number >= PinCount) return;
  {
    const MutexLock lock(mutex_);
    Port& there = ports_[static_cast<std::size_t>(pin.Port)];
    const std::uint32_t mask = std::uint32_t{1} << pin.Number;
    there.Levels = isHigh ? there.Levels | mask : there.Levels & ~mask;
  }
  waits_.Wake();
}

std::array<Pins::PortView, Pins::PortCount> Pins::Look() {
  std::array<PortView, PortCount> views{};
  const MutexLock lock(mutex_);
  for (std::size_t i = 0; i < PortCount; ++i) {
    const std::uint32_t active = ActiveOn(i);
    views[i] = {ports_[i].IsOutput, ports_[i].Others(active), active, 0};
  }
  for (const Wire& wire : wires_) {
    PortView& to = views[static_cast<std::size_t>(wire.To.Port)];
    const bool counts = views[static_cast<std::size_t>(wire.From.Port)].IsOutput && !to.IsOutput;
    if (counts) to.Wired |= std::uint32_t{1} << wire.To.Number;
  }
  return views;
}

std::uint32_t Pins::Get(std::int32_t port) {
  const MutexLock lock(mutex_);
  if (IsThere(port)) return ActiveOn(static_cast<std::size_t>(port));
  const auto found = others_.find(port);
  return found == others_.end() ? 0 : found->second;
}

std::uint32_t Pins::ActiveOn(std::size_t port) {
  const Port& there = ports_[port];
  if (there.IsOutput) return there.Written;
  std::uint32_t levels = there.Levels;
  for (const Wire& wire : wires_) {
    const Port& from = ports_[static_cast<std::size_t>(wire.From.Port)];
    if (static_cast<std::size_t>(wire.To.Port) != port || !from.IsOutput) continue;
    const std::uint32_t level = from.Others(from.Written) >> wire.From.Number & 1;
    levels = (levels & ~(std::uint32_t{1} << wire.To.Number)) | level << wire.To.Number;
  }
  return there.Others(levels);
}

void Pins::Check(std::int32_t port) {
  if (!IsThere(port)) throw std::runtime_error("There is no port " + std::to_string(port) + ".");
}

std::uint32_t Pins::Read(std::int32_t port) {
  Check(port);
  return Get(port);
}

Pins::Port& Pins::Output(std::int32_t port) {
  Check(port);
  Port& there = ports_[static_cast<std::size_t>(port)];
  if (!there.IsOutput) throw std::runtime_error("Port " + std::to_string(port) + " is an input.");
  return there;
}

void Pins::Write(std::int32_t port, std::int32_t action, std::uint32_t pins) {
  {
    const MutexLock lock(mutex_);
    Port& output = Output(port);
    switch (action) {
      case PinAction::Write:
        output.Written = pins;
        pins = ~std::uint32_t{0};
        break;
      case PinAction::Set:
        output.Written |= pins;
        break;
      case PinAction::Clear:
        output.Written &= ~pins;
        break;
      case PinAction::Toggle:
        output.Written ^= pins;
        break;
      default:
        throw std::runtime_error("There is no action " + std::to_string(action) + ".");
    }
    EndPulses(static_cast<std::size_t>(port), pins);
  }
  waits_.Wake();
}

std::uint32_t Pins::EndPulses(std::size_t port, std::uint32_t pins) {
  std::uint32_t ended = 0;
  for (auto& [number, pulse] : pulses_) {
    if (pulse.Port == port) ended |= std::exchange(pulse.Mask, pulse.Mask & ~pins) & pins;
  }
  return ended;
}

std::uint64_t Pins::BeginPulse(std::int32_t port, std::uint32_t pins) {
  std::uint64_t number = 0;
  {
    const MutexLock lock(mutex_);
    Port& output = Output(port);
    const auto index = static_cast<std::size_t>(port);
    number = ++latestPulse_;
    pulses_.emplace(number, Pulse{index, 0});
    output.Written ^= pins & ~EndPulses(index, pins);
    pulses_[number].Mask = pins;
  }
  waits_.Wake();
  return number;
}

void Pins::EndPulse(std::uint64_t number) {
  {
    const MutexLock lock(mutex_);
    const auto pulse = pulses_.find(number);
    if (pulse == pulses_.end()) return;
    ports_[pulse->second.Port].Written ^= pulse->second.Mask;
    pulses_.erase(pulse);
  }
  waits_.Wake();
}

}  // namespace VELTRO::KELVO::Simulation
