#include "card/CardDiagnostics.h"

#include <chrono>
#include <exception>
#include <string>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Measurement;
using ClientLib::SelfTestResult;

std::vector<Measurement> CardDiagnostics::Measure() const {
  constexpr double VirtualTemperature = 42;  // there is nothing to be measured
  const std::chrono::duration<double> uptime = std::chrono::steady_clock::now() - counters_.Start;
  const auto count = [](std::uint64_t number) { return static_cast<double>(number); };
  return {{"Connections", count(counters_.Connections), ""},
          {"Calls", count(counters_.Calls), ""},
          {"Failed calls", count(counters_.FailedCalls), ""},
          {"Runs", count(counters_.Runs), ""},
          {"Aborted runs", count(counters_.AbortedRuns), ""},
          {"List commands", count(counters_.ListCommands), ""},
          {"Notifications", count(clients_.GetCount()), ""},
          {"Uptime", uptime.count(), "s"},
          {"Card temperature", VirtualTemperature, "C"}};
}

std::vector<SelfTestResult> CardDiagnostics::RunSelfTest() const {
  const bool isSound = configuration_.IsSound();
  const char* const finding =
      isSound ? "All that is stored could be read." : "Not all that is stored could be read.";
  return {{"Configuration", isSound, finding}, TestMemory(), TestStateDirectory(), TestSerialPort()};
}

SelfTestResult CardDiagnostics::TestMemory() const {
  const double share = memory_.GetFreeShare();
  return {"Memory", share > 0, std::to_string(static_cast<int>(share * 100)) + " % is free."};
}

SelfTestResult CardDiagnostics::TestStateDirectory() const {
  if (!state_.GetHost().IsThere()) return {"State directory", true, "There is none."};
  try {
    state_.TryToWrite();
    return {"State directory", true, "It can be written to."};
  } catch (const std::exception& error) {
    return {"State directory", false, error.what()};
  }
}

SelfTestResult CardDiagnostics::TestSerialPort() const {
  const auto line = serial_.GetLineState();
  if (!line) return {"Serial port 0", true, "It receives what it sends."};
  return {"Serial port 0", line->IsConnected,
          line->IsConnected ? "It is connected with '" + line->Name + "'."
                            : "The other side of '" + line->Name + "' has gone."};
}

}  // namespace VELTRO::KELVO::VirtualCard
