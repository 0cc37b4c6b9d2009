// A terminal that a serial port of the card is connected with.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <thread>

#include "base/Wake.h"
#include "common/Mutex.h"
#include "surroundings/SerialPorts.h"

namespace VELTRO::KELVO::VirtualCard {

// A thread of its own receives, and sends what the terminal does not take at once. When the other side has gone, it says so
// on stderr, and nothing more is sent or received.
class SerialTerminal : public Simulation::SerialLine {
 public:
  static constexpr const char* Pseudo = "pty";  // as a path: a pseudo-terminal of its own

  // Becomes the line of port 0. Throws std::runtime_error "Cannot open 'PATH': REASON.".
  SerialTerminal(const std::string& path, Simulation::SerialPorts& ports);
  ~SerialTerminal() override;
  SerialTerminal(const SerialTerminal&) = delete;
  SerialTerminal& operator=(const SerialTerminal&) = delete;

  // The path of the terminal, or of the side of the pseudo-terminal that others open.
  const std::string& GetPath() const { return path_; }

  void Configure(const ClientLib::PortConfig& config) noexcept override;
  void Send(std::span<const std::uint8_t> bytes) override;
  Simulation::SerialLineState GetState() override;

 private:
  void OpenTerminal();
  void OpenPseudoTerminal();
  void Work();
  // Both return false when the other side has gone.
  bool ReceiveAll();
  bool SendWaiting() KELVO_REQUIRES(mutex_);

  std::string path_;
  Simulation::SerialPorts& ports_;
  Descriptor terminal_;
  Descriptor otherSide_;  // of a pseudo-terminal: as long as it is open, nobody's going is an end
  Wake wake_;
  ClientLib::Mutex mutex_;
  std::deque<std::uint8_t> waiting_ KELVO_GUARDED_BY(mutex_);  // to be sent
  bool isGone_ KELVO_GUARDED_BY(mutex_) = false;
  bool stopping_ KELVO_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
