// The command line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "client/CardInfo.h"
#include "console/InputSetting.h"
#include "console/WireSetting.h"

namespace VELTRO::KELVO::VirtualCard {

struct Options {
  std::string Address;
  int Port = ClientLib::CardInfo::DefaultPort;
  bool Verbose = false;
  bool Ssdp = false;
  bool DrawAllRuns = false;
  bool IsStrictReplay = false;
  std::string Firmware = "Virtual 3.10";
  std::string Serial = "12345";
  double Speed = 1;     // simulated time per real time; infinite: no waiting
  std::string SvgFile;  // empty: none
  double Beam = 0.1;    // field units
  std::vector<InputSetting> Inputs;
  std::vector<Simulation::Wire> Wires;
  std::optional<std::int32_t> StandaloneList;
  std::string SerialPort;        // a terminal's path; empty: none
  std::string StateDirectory;    // empty: none
  std::size_t Queue = 16 << 20;  // bytes of notifications that wait for one client at most
  static constexpr std::int64_t MostConnections = 10000;
  std::size_t Connections = 64;
  std::size_t Memory = 256 << 20;   // bytes that clients may fill
  std::vector<std::string> Faults;  // texts that Faults::Set takes
  std::uint64_t FaultSeed = 0;      // one of chance, unless it is given
  std::optional<int> HttpPort;      // of the page; without it there is none
  std::string HttpAddress = "127.0.0.1";
  std::vector<std::string> HttpHosts;
  std::vector<std::string> SsdpInterfaces;  // none: all
  std::string ReplayFile;                   // empty: it is a card of its own
  double ReplaySpeed = 1;                   // recorded time per real time; infinite: no waiting
};

// Reads the command line. Nothing when the program is to end at once with `exitCode`: help was asked for (0),
// or an option is wrong (2) and stderr says which.
std::optional<Options> ParseOptions(int count, const char* const* arguments, int& exitCode);

}  // namespace VELTRO::KELVO::VirtualCard
