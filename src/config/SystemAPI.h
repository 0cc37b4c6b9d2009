// The card as a whole: its configuration, what it is, its state, and its clock.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/DateTime.h"
#include "config/RecordAPI.h"
#include "config/SystemConfig.h"
#include "config/TimeZone.h"

namespace VELTRO::KELVO::ClientLib {

class SystemAPI : public RecordAPI<SystemConfig> {
 public:
  using RecordAPI::RecordAPI;

  void ResetToDefaults() { caller_.Call("ResetToDefaults"); }
  std::string GetCardSerialNumber() { return caller_.Call<std::string>("GetCardSerialNumber"); }
  std::string GetOSVersion() { return caller_.Call<std::string>("GetOSVersion"); }
  std::string GetFpgaVersion() { return caller_.Call<std::string>("GetFpgaVersion"); }
  std::string GetFirmwareVersion() { return caller_.Call<std::string>("GetFirmwareVersion"); }
  std::string GetFirmwareProductVersion() { return caller_.Call<std::string>("GetFirmwareProductVersion"); }
  std::uint32_t GetConnectionLimit() { return caller_.Call<std::uint32_t>("GetConnectionLimit"); }
  // OperatingState flags.
  std::int32_t GetOperatingState() { return caller_.Call<std::int32_t>("GetOperatingState"); }
  void ResetOperatingState() { caller_.Call("ResetOperatingState"); }
  // In the card's time zone.
  DateTime GetTime() { return caller_.Call<DateTime>("GetTime"); }
  DateTime GetUniversalTime() { return caller_.Call<DateTime>("GetUniversalTime"); }
  // In UTC.
  void SetSystemTime(const DateTime& time) { caller_.Call("SetSystemTime", time); }
  std::vector<TimeZone> GetSupportedTimeZones() {
    return caller_.Call<std::vector<TimeZone>>("GetSupportedTimeZones");
  }
};

}  // namespace VELTRO::KELVO::ClientLib
