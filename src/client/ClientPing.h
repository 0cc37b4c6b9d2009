// Finds cards by calling at the addresses that their serial numbers predict.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "client/CardInfo.h"

namespace VELTRO::KELVO::ClientLib {

class ClientPing {
 public:
  // Asks what is at an address for its serial number; empty when it does not tell. Called from several threads at once.
  using SerialReader = std::function<std::string(const IPAddress&)>;

  // The cards that answer, sorted, each of them once. Every address is pinged in every sweep, at most `maxParallel` at
  // once (less than 1 counts as 1); what answers is asked for its serial number. Throws std::runtime_error "Invalid
  // negative serial number.", or what Ping throws, as soon as the probes that are under way have ended.
  static std::vector<CardInfo> Discover(int firstSerial, int lastSerial, int sweeps, int timeoutMs,
                                        int maxParallel, const SerialReader& readSerial);
};

}  // namespace VELTRO::KELVO::ClientLib
