#include "kelvo/KelvoLaserAPI.h"

#include <algorithm>

#include "capi/CallersArray.h"
#include "capi/FlatRecord.h"
#include "config/LaserAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlLaserInitConfig(vlLaserConfig* config) {
  return Flat::Init<LaserConfig>(config);
}

int32_t vlLaserGetConfig(int32_t handle, vlLaserConfig* config) {
  return Flat::Get<LaserAPI>(handle, config);
}

int32_t vlLaserSetConfig(int32_t handle, const vlLaserConfig* config) {
  return Flat::Set<LaserAPI, LaserConfig>(handle, config);
}

int32_t vlLaserLoadConfig(int32_t handle) {
  return Flat::Load<LaserAPI>(handle);
}

int32_t vlLaserStoreConfig(int32_t handle) {
  return Flat::Store<LaserAPI>(handle);
}

int32_t vlLaserToStringConfig(const vlLaserConfig* config, char* buffer, uint32_t size, uint32_t* length) {
  return Flat::ToString<LaserConfig>(config, buffer, size, length);
}

int32_t vlLaserLaserOn(int32_t handle) {
  return On<LaserAPI>(handle, [](LaserAPI& laser) { laser.LaserOn(); });
}

int32_t vlLaserLaserOff(int32_t handle) {
  return On<LaserAPI>(handle, [](LaserAPI& laser) { laser.LaserOff(); });
}

int32_t vlLaserIsPilotEnabled(int32_t handle, bool* enabled) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    NotNull(enabled, "enabled");
    *enabled = laser.IsPilotEnabled();
  });
}

int32_t vlLaserEnablePilot(int32_t handle, uint32_t enable) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) { laser.EnablePilot(enable != 0); });
}

int32_t vlLaserIsLaserArmed(int32_t handle, bool* armed) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    NotNull(armed, "armed");
    *armed = laser.IsLaserArmed();
  });
}

int32_t vlLaserArmLaser(int32_t handle, uint32_t arm) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) { laser.ArmLaser(arm != 0); });
}

int32_t vlLaserReadLaserStatus(int32_t handle, uint32_t* status) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    NotNull(status, "status");
    *status = static_cast<uint32_t>(laser.ReadLaserStatus());
  });
}

int32_t vlLaserGetPowerScale(int32_t handle, uint32_t target, double* scale) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    NotNull(scale, "scale");
    *scale = laser.GetPowerScale(static_cast<int>(target));
  });
}

int32_t vlLaserSetPowerScale(int32_t handle, uint32_t target, double scale) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) { laser.SetPowerScale(static_cast<int>(target), scale); });
}

int32_t vlLaserCreatePowerCalibration(int32_t handle, uint32_t engine) {
  return On<LaserAPI>(handle,
                      [&](LaserAPI& laser) { laser.CreatePowerCalibration(static_cast<int>(engine)); });
}

int32_t vlLaserLoadPowerCalibration(int32_t handle, uint32_t engine) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) { laser.LoadPowerCalibration(static_cast<int>(engine)); });
}

int32_t vlLaserStorePowerCalibration(int32_t handle, uint32_t engine) {
  return On<LaserAPI>(handle,
                      [&](LaserAPI& laser) { laser.StorePowerCalibration(static_cast<int>(engine)); });
}

int32_t vlLaserGetPowerCalibration(int32_t handle, uint32_t engine, uint32_t* buffer, uint32_t capacity,
                                   uint32_t* count) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    CallersArray array(buffer, "buffer", capacity, count);
    const LaserAPI::Calibration values = laser.GetPowerCalibration(static_cast<int>(engine));
    array.TellCount(values.size());
    array.Fill(values, "Buffer is too small");
  });
}

int32_t vlLaserSetPowerCalibration(int32_t handle, uint32_t engine, const uint32_t* values, int32_t count) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    if (count < 0) throw std::runtime_error("The count must not be negative.");
    if (count > 0) NotNull(values, "values");
    laser.SetPowerCalibration(LaserAPI::Calibration(values, values + count), static_cast<int>(engine));
  });
}

int32_t vlLaserPowerCalibrationGet(int32_t handle, uint32_t engine, const char* path) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    laser.GetPowerCalibration(std::string(NotNull(path, "path")), static_cast<int>(engine));
  });
}

int32_t vlLaserPowerCalibrationSet(int32_t handle, uint32_t engine, const char* path) {
  return On<LaserAPI>(handle, [&](LaserAPI& laser) {
    laser.SetPowerCalibration(std::string(NotNull(path, "path")), static_cast<int>(engine));
  });
}
