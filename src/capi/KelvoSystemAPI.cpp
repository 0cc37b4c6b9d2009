#include "kelvo/KelvoSystemAPI.h"

#include <cstring>

#include "capi/FlatRecord.h"
#include "config/SystemAPI.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

int32_t GetText(int32_t handle, std::string (SystemAPI::*get)(), char* buffer, uint32_t size,
                uint32_t* length) {
  return On<SystemAPI>(
      handle, [&](SystemAPI& system) { TellText(buffer, size, length, [&] { return (system.*get)(); }); });
}

int32_t GetSeconds(int32_t handle, DateTime (SystemAPI::*get)(), uint64_t* seconds) {
  return On<SystemAPI>(handle, [&](SystemAPI& system) {
    NotNull(seconds, "seconds");
    *seconds = static_cast<uint64_t>((system.*get)().ToSeconds());
  });
}

// The names, each with its terminating zero.
std::string JoinedNames(const std::vector<TimeZone>& zones) {
  std::string names;
  for (const TimeZone& zone : zones) {
    if (zone.Name.find('\0') != std::string::npos)
      throw std::runtime_error("Error converting TimeZone data.");
    names.append(zone.Name).push_back('\0');
  }
  return names;
}

}  // namespace

int32_t vlSystemInitConfig(vlSystemConfig* config) {
  return Flat::Init<SystemConfig>(config);
}

int32_t vlSystemGetConfig(int32_t handle, vlSystemConfig* config) {
  return Flat::Get<SystemAPI>(handle, config);
}

int32_t vlSystemSetConfig(int32_t handle, const vlSystemConfig* config) {
  return Flat::Set<SystemAPI, SystemConfig>(handle, config);
}

int32_t vlSystemLoadConfig(int32_t handle) {
  return Flat::Load<SystemAPI>(handle);
}

int32_t vlSystemStoreConfig(int32_t handle) {
  return Flat::Store<SystemAPI>(handle);
}

int32_t vlSystemToStringConfig(const vlSystemConfig* config, char* buffer, uint32_t size, uint32_t* length) {
  return Flat::ToString<SystemConfig>(config, buffer, size, length);
}

int32_t vlSystemResetToDefaults(int32_t handle) {
  return On<SystemAPI>(handle, [](SystemAPI& system) { system.ResetToDefaults(); });
}

int32_t vlSystemGetFirmwareVersion(int32_t handle, char* buffer, uint32_t size, uint32_t* length) {
  return GetText(handle, &SystemAPI::GetFirmwareVersion, buffer, size, length);
}

int32_t vlSystemGetFirmwareProductVersion(int32_t handle, char* buffer, uint32_t size, uint32_t* length) {
  return GetText(handle, &SystemAPI::GetFirmwareProductVersion, buffer, size, length);
}

int32_t vlSystemGetFPGAVersion(int32_t handle, char* buffer, uint32_t size, uint32_t* length) {
  return GetText(handle, &SystemAPI::GetFpgaVersion, buffer, size, length);
}

int32_t vlSystemGetOSVersion(int32_t handle, char* buffer, uint32_t size, uint32_t* length) {
  return GetText(handle, &SystemAPI::GetOSVersion, buffer, size, length);
}

int32_t vlSystemGetCardSerialNumber(int32_t handle, char* buffer, uint32_t size, uint32_t* length) {
  return GetText(handle, &SystemAPI::GetCardSerialNumber, buffer, size, length);
}

int32_t vlSystemGetConnectionLimit(int32_t handle, uint32_t* limit) {
  return On<SystemAPI>(handle, [&](SystemAPI& system) {
    NotNull(limit, "limit");
    *limit = system.GetConnectionLimit();
  });
}

int32_t vlSystemGetOperatingState(int32_t handle, uint32_t* state) {
  return On<SystemAPI>(handle, [&](SystemAPI& system) {
    NotNull(state, "state");
    *state = static_cast<uint32_t>(system.GetOperatingState());
  });
}

int32_t vlSystemResetOperatingState(int32_t handle) {
  return On<SystemAPI>(handle, [](SystemAPI& system) { system.ResetOperatingState(); });
}

int32_t vlSystemGetTime(int32_t handle, uint64_t* seconds) {
  return GetSeconds(handle, &SystemAPI::GetTime, seconds);
}

int32_t vlSystemGetUniversalTime(int32_t handle, uint64_t* seconds) {
  return GetSeconds(handle, &SystemAPI::GetUniversalTime, seconds);
}

int32_t vlSystemSetSystemTime(int32_t handle, uint64_t seconds) {
  return On<SystemAPI>(handle,
                       [&](SystemAPI& system) { system.SetSystemTime(DateTime::FromSeconds(seconds)); });
}

int32_t vlSystemGetSupportedTimeZones(int32_t handle, uint32_t* buffer, uint32_t size, uint32_t* count) {
  return On<SystemAPI>(handle, [&](SystemAPI& system) {
    NotNull(count, "count");
    if (size > 0) NotNull(buffer, "buffer");
    const std::vector<TimeZone> zones = system.GetSupportedTimeZones();
    const std::string names = JoinedNames(zones);
    if (names.size() > size * sizeof *buffer) throw std::runtime_error("Error converting TimeZone data.");
    if (!names.empty()) std::memcpy(buffer, names.data(), names.size());
    *count = static_cast<uint32_t>(zones.size());
  });
}
