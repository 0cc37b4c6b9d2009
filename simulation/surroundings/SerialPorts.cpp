#include "surroundings/SerialPorts.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::Simulation {

using ClientLib::MutexLock;
using ClientLib::SerialPortLineEnd;

SerialPorts::SerialPorts(AbortSignal& waits) : waits_(waits) {
  Configure(ClientLib::SerialPortConfig());
}

void SerialPorts::Configure(const ClientLib::SerialPortConfig& config) noexcept {
  const MutexLock lock(mutex_);
  count_ = std::min(config.Ports.size(), MostPorts);
  for (std::size_t i = 0; i < count_; ++i) ports_[i].Config = config.Ports[i];
  for (std::size_t i = count_; i < MostPorts; ++i) ports_[i].Received.clear();
  if (line_ != nullptr) line_->Configure(ports_[0].Config);
}

void SerialPorts::Connect(SerialLine& line) {
  const MutexLock lock(mutex_);
  line_ = &line;
  line.Configure(ports_[0].Config);
}

void SerialPorts::Receive(std::span<const std::uint8_t> bytes) {
  {
    const MutexLock lock(mutex_);
    Keep(ports_[0], bytes);
  }
  waits_.Wake();
}

void SerialPorts::Keep(Port& port, std::span<const std::uint8_t> bytes) {
  bytes = bytes.last(std::min(bytes.size(), MostReceivedBytes));
  auto& received = port.Received;
  const std::size_t size = received.size() + bytes.size();
  const std::size_t surplus = size - std::min(size, MostReceivedBytes);
  received.erase(received.begin(), received.begin() + static_cast<std::ptrdiff_t>(surplus));
  received.insert(received.end(), bytes.begin(), bytes.end());
}

SerialPorts::Port& SerialPorts::Find(std::int32_t port) {
  if (port < 0 || static_cast<std::size_t>(port) >= count_) {
    throw std::runtime_error("There is no serial port " + std::to_string(port) + ".");
  }
  return ports_[static_cast<std::size_t>(port)];
}

void SerialPorts::Write(std::int32_t port, std::span<const std::uint8_t> bytes) {
  {
    const MutexLock lock(mutex_);
    Port& there = Find(port);
    if (port == 0 && line_ != nullptr) return line_->Send(bytes);
    Keep(there, bytes);
  }
  waits_.Wake();
}

SerialPorts::Bytes SerialPorts::Read(std::int32_t port, std::size_t most) {
  const MutexLock lock(mutex_);
  auto& received = Find(port).Received;
  const auto end = received.begin() + static_cast<std::ptrdiff_t>(std::min(most, received.size()));
  Bytes bytes(received.begin(), end);
  received.erase(received.begin(), end);
  return bytes;
}

void SerialPorts::Flush(std::int32_t port) {
  const MutexLock lock(mutex_);
  Find(port).Received.clear();
}

std::optional<SerialLineState> SerialPorts::GetLineState() {
  const MutexLock lock(mutex_);
  return line_ != nullptr ? std::optional(line_->GetState()) : std::nullopt;
}

std::string_view SerialPorts::GetLineEnd(std::int32_t port) {
  const MutexLock lock(mutex_);
  switch (Find(port).Config.LineEnd) {
    case SerialPortLineEnd::Lf:
      return "\n";
    case SerialPortLineEnd::Cr:
      return "\r";
    default:
      return "\r\n";
  }
}

std::uint32_t SerialPorts::GetResponseTimeout(std::int32_t port) {
  const MutexLock lock(mutex_);
  return Find(port).Config.ResponseTimeout;
}

}  // namespace VELTRO::KELVO::Simulation
