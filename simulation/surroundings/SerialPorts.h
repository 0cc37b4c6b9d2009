// The card's serial ports: what lists and clients send and receive.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/Mutex.h"
#include "peripherals/SerialPortConfig.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::Simulation {

struct SerialLineState {
  std::string Name;
  bool IsConnected;
};

// What a serial port is connected with. Any thread may call anything at any time; nothing waits.
class SerialLine {
 public:
  virtual ~SerialLine() = default;
  // Nothing of it throws.
  virtual void Configure(const ClientLib::PortConfig& config) noexcept = 0;
  // Sends all of it, now or soon. Throws std::runtime_error "Serial port 0 does not take more." when too much is to be sent
  // already, or "Serial port 0 is not connected any more.".
  virtual void Send(std::span<const std::uint8_t> bytes) = 0;
  virtual SerialLineState GetState() = 0;
};

// Any thread may call anything at any time. Who names a port that there is not gets std::runtime_error "There is no serial
// port PORT.". A port without a line receives what it sends.
class SerialPorts {
 public:
  using Bytes = std::vector<std::uint8_t>;

  static constexpr std::size_t MostPorts = 4;
  static constexpr std::size_t MostReceivedBytes = 65536;  // of a port, not read yet; the oldest go

  // `waits` is woken by everything that is received.
  explicit SerialPorts(AbortSignal& waits);

  void Configure(const ClientLib::SerialPortConfig& config) noexcept;
  // Connects port 0. The line is told the configuration, now and whenever it changes, and outlives its use.
  void Connect(SerialLine& line);
  // What has come over the line of port 0.
  void Receive(std::span<const std::uint8_t> bytes);

  // Throws as SerialLine::Send.
  void Write(std::int32_t port, std::span<const std::uint8_t> bytes);
  // The oldest bytes that have been received, `most` at most.
  Bytes Read(std::int32_t port, std::size_t most);
  // Forgets what has been received.
  void Flush(std::int32_t port);

  // Of port 0; nothing when there is none.
  std::optional<SerialLineState> GetLineState();
  std::string_view GetLineEnd(std::int32_t port);
  std::uint32_t GetResponseTimeout(std::int32_t port);  // milliseconds

 private:
  struct Port {
    ClientLib::PortConfig Config;
    std::deque<std::uint8_t> Received;
  };

  Port& Find(std::int32_t port) KELVO_REQUIRES(mutex_);
  void Keep(Port& port, std::span<const std::uint8_t> bytes) KELVO_REQUIRES(mutex_);

  AbortSignal& waits_;
  ClientLib::Mutex mutex_;  // ahead of the line's own
  std::array<Port, MostPorts> ports_ KELVO_GUARDED_BY(mutex_);
  std::size_t count_ KELVO_GUARDED_BY(mutex_) = 0;
  SerialLine* line_ KELVO_GUARDED_BY(mutex_) = nullptr;
};

}  // namespace VELTRO::KELVO::Simulation
