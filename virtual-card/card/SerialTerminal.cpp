#include "card/SerialTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "base/Log.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;
using ClientLib::PortConfig;
using ClientLib::SerialPortHandshake;
using ClientLib::SerialPortParity;
using ClientLib::SerialPortStopBits;

namespace {

constexpr std::size_t MostWaitingBytes = 1 << 20;

constexpr std::pair<std::int32_t, speed_t> Speeds[] = {
    {300, B300},         {600, B600},         {1200, B1200},       {1800, B1800},       {2400, B2400},
    {4800, B4800},       {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},   {576000, B576000},
    {921600, B921600},   {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000}, {2000000, B2000000},
    {2500000, B2500000}, {3000000, B3000000}, {3500000, B3500000}, {4000000, B4000000}};

[[noreturn]] void FailToOpen(const std::string& path) {
  throw std::runtime_error("Cannot open '" + path + "': " + std::generic_category().message(errno) + ".");
}

// Bytes go through as they are.
bool MakeRaw(int terminal) {
  termios settings{};
  if (tcgetattr(terminal, &settings) != 0) return false;
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  return tcsetattr(terminal, TCSANOW, &settings) == 0;
}

void SetFlag(tcflag_t& flags, tcflag_t flag, bool isOn) {
  flags = isOn ? flags | flag : flags & ~flag;
}

}  // namespace

SerialTerminal::SerialTerminal(const std::string& path, Simulation::SerialPorts& ports)
    : path_(path), ports_(ports) {
  path == Pseudo ? OpenPseudoTerminal() : OpenTerminal();
  ports_.Connect(*this);
  thread_ = std::thread([this] { Work(); });
}

SerialTerminal::~SerialTerminal() {
  {
    const MutexLock lock(mutex_);
    stopping_ = true;
  }
  wake_.Signal();
  thread_.join();
}

void SerialTerminal::OpenTerminal() {
  terminal_ = Descriptor(open(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!terminal_.IsOpen() || !MakeRaw(terminal_.Get())) FailToOpen(path_);
}

void SerialTerminal::OpenPseudoTerminal() {
  terminal_ = Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  char name[64];
  if (!terminal_.IsOpen() || grantpt(terminal_.Get()) != 0 || unlockpt(terminal_.Get()) != 0 ||
      ptsname_r(terminal_.Get(), name, sizeof name) != 0) {
    FailToOpen(path_);
  }
  path_ = name;
  otherSide_ = Descriptor(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!otherSide_.IsOpen() || !MakeRaw(otherSide_.Get())) FailToOpen(path_);
}

void SerialTerminal::Configure(const PortConfig& config) noexcept {
  if (otherSide_.IsOpen()) return;  // what it is set to is up to those who open it
  termios settings{};
  if (tcgetattr(terminal_.Get(), &settings) != 0) return;
  constexpr tcflag_t Sizes[] = {CS5, CS6, CS7, CS8};
  settings.c_cflag = (settings.c_cflag & ~tcflag_t{CSIZE}) | Sizes[std::clamp(config.DataBits, 5, 8) - 5];
  SetFlag(settings.c_cflag, PARENB, config.Parity != SerialPortParity::None);
  SetFlag(settings.c_cflag, PARODD, config.Parity == SerialPortParity::Odd);
  SetFlag(settings.c_cflag, CSTOPB, config.StopBits == SerialPortStopBits::Two);
  SetFlag(settings.c_cflag, CRTSCTS, config.Handshake == SerialPortHandshake::RtsCts);
  SetFlag(settings.c_iflag, IXON | IXOFF, config.Handshake == SerialPortHandshake::XOnXOff);
  const auto* const speed =
      std::ranges::find(Speeds, config.BaudRate, &std::pair<std::int32_t, speed_t>::first);
  if (speed != std::end(Speeds)) cfsetspeed(&settings, speed->second);
  if (speed == std::end(Speeds) || tcsetattr(terminal_.Get(), TCSANOW, &settings) != 0) {
    LogLine({"Serial port 0: '", path_, "' does not take all of the port's settings."});
  }
}

Simulation::SerialLineState SerialTerminal::GetState() {
  const MutexLock lock(mutex_);
  return {path_, !isGone_};
}

void SerialTerminal::Send(std::span<const std::uint8_t> bytes) {
  bool isAll = true;
  {
    const MutexLock lock(mutex_);
    if (isGone_) throw std::runtime_error("Serial port 0 is not connected any more.");
    if (bytes.size() > MostWaitingBytes - waiting_.size()) {
      throw std::runtime_error("Serial port 0 does not take more.");
    }
    waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
    isAll = SendWaiting() && waiting_.empty();
  }
  if (!isAll) wake_.Signal();
}

bool SerialTerminal::SendWaiting() {
  while (!waiting_.empty()) {
    std::uint8_t bytes[4096];
    const auto count = static_cast<std::ptrdiff_t>(std::min(waiting_.size(), sizeof bytes));
    std::copy_n(waiting_.begin(), count, bytes);
    const ssize_t sent = write(terminal_.Get(), bytes, static_cast<std::size_t>(count));
    if (sent > 0) {
      waiting_.erase(waiting_.begin(), waiting_.begin() + sent);
    } else if (sent == 0 || errno == EAGAIN) {
      return true;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool SerialTerminal::ReceiveAll() {
  for (;;) {
    std::uint8_t bytes[4096];
    const ssize_t count = read(terminal_.Get(), bytes, sizeof bytes);
    if (count > 0) {
      try {
        ports_.Receive({bytes, static_cast<std::size_t>(count)});
      } catch (const std::bad_alloc&) {
        LogLine("Serial port 0: There was no memory for what was received.");
      }
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
      return false;
    } else if (errno == EAGAIN) {
      return true;
    }
  }
}

void SerialTerminal::Work() {
  for (bool isThere = true; isThere;) {
    pollfd entries[] = {{terminal_.Get(), POLLIN, 0}, {wake_.Get(), POLLIN, 0}};
    {
      const MutexLock lock(mutex_);
      if (stopping_) return;
      if (!waiting_.empty()) entries[0].events = POLLIN | POLLOUT;
    }
    if (poll(entries, 2, -1) <= 0) continue;
    wake_.Clear();
    if ((entries[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) isThere = ReceiveAll();
    const MutexLock lock(mutex_);
    isThere = SendWaiting() && isThere;
    isGone_ = !isThere;
    if (isGone_) waiting_.clear();
  }
  LogLine({"Serial port 0: the other side of '", path_, "' has gone."});
}

}  // namespace VELTRO::KELVO::VirtualCard
