// The card's pins: what is on them from outside, what lists and clients write, and the wires between them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "common/Mutex.h"
#include "peripherals/GpioConfig.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::Simulation {

struct Pin {
  std::int32_t Port;
  std::int32_t Number;

  bool operator==(const Pin&) const = default;
};

// From an output to an input.
struct Wire {
  Pin From, To;
};

// The ports 0 to 7 have a direction and a polarity. Their pins are set when they are active, at whatever level that is.
// Other ports have neither: they are mere bits from outside. Any thread may call anything at any time.
class Pins {
 public:
  static constexpr std::size_t PortCount = 8;

  // `waits` is woken by every change.
  explicit Pins(AbortSignal& waits);

  // Takes over the directions and polarities of as many ports. Nothing of it throws.
  void Configure(const ClientLib::GpioConfig& config) noexcept;
  // Before anything else. A wire counts while its ends have their directions; then nothing else sets its input. No two
  // of them lead to one pin.
  void Connect(std::vector<Wire> wires);

  // Sets the levels of a port from outside; on an output, until it is written.
  void SetLevels(std::int32_t port, std::uint32_t levels);
  // The level of one pin, the others stay. Of ports and pins that there are; others are left alone.
  void SetLevel(Pin pin, bool isHigh);
  struct PortView {
    bool IsOutput;
    std::uint32_t Levels;  // on its pins, whoever sets them
    std::uint32_t Active;
    std::uint32_t Wired;  // inputs that a wire drives
  };
  // All ports, as they are at one moment.
  std::array<PortView, PortCount> Look();
  // The pins that are active; 0 on a port of which nothing is known.
  std::uint32_t Get(std::int32_t port);

  // The same of a port that there is: throws std::runtime_error "There is no port PORT.".
  std::uint32_t Read(std::int32_t port);
  // The port takes the value, or the pins in it are set, cleared or toggled, as the number of a PinAction says. Throws as
  // Read, or std::runtime_error "Port PORT is an input." or "There is no action ACTION.".
  void Write(std::int32_t port, std::int32_t action, std::uint32_t pins);
  // Toggles pins until the pulse is ended; a later write to a pin ends it for that one. Those that are in a pulse already
  // stay as they are, and go over to this one. Returns the pulse's number. Throws as Write.
  std::uint64_t BeginPulse(std::int32_t port, std::uint32_t pins);
  void EndPulse(std::uint64_t number);

 private:
  struct Port {
    bool IsOutput = false;
    bool IsInverted = false;
    std::uint32_t Levels = 0;   // from outside
    std::uint32_t Written = 0;  // as they are active
    std::uint32_t Others(std::uint32_t levels) const { return IsInverted ? ~levels : levels; }
  };
  struct Pulse {
    std::size_t Port;
    std::uint32_t Mask;
  };

  static bool IsThere(std::int32_t port) { return port >= 0 && port < static_cast<std::int32_t>(PortCount); }
  static void Check(std::int32_t port);
  Port& Output(std::int32_t port) KELVO_REQUIRES(mutex_);
  std::uint32_t ActiveOn(std::size_t port) KELVO_REQUIRES(mutex_);
  // Takes these pins out of all pulses; returns those that were in one.
  std::uint32_t EndPulses(std::size_t port, std::uint32_t pins) KELVO_REQUIRES(mutex_);

  AbortSignal& waits_;
  ClientLib::Mutex mutex_;
  std::array<Port, PortCount> ports_ KELVO_GUARDED_BY(mutex_);
  std::map<std::int32_t, std::uint32_t> others_ KELVO_GUARDED_BY(mutex_);
  std::vector<Wire> wires_ KELVO_GUARDED_BY(mutex_);
  std::map<std::uint64_t, Pulse> pulses_ KELVO_GUARDED_BY(mutex_);
  std::uint64_t latestPulse_ KELVO_GUARDED_BY(mutex_) = 0;
};

}  // namespace VELTRO::KELVO::Simulation
