#include "kelvo/KelvoPowerCorrectionAPI.h"

#include "capi/FlatCorrection.h"
#include "services/PowerCorrectionAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlPowerCorrectionCreate(int32_t handle, const vlOpticalParameters* parameters) {
  return OnCorrections<PowerCorrectionAPI>(handle, [&](PowerCorrectionAPI& correction) {
    correction.Create(Flat::Taken<OpticalParameters>(parameters, "parameters"));
  });
}

int32_t vlPowerCorrectionSet(int32_t handle, const char* path) {
  return vlPowerCorrectionSetWithProgress(handle, path, nullptr, nullptr);
}

int32_t vlPowerCorrectionSetWithProgress(int32_t handle, const char* path, vlFileProgressCallback progress,
                                         void* user) {
  return OnCorrections<PowerCorrectionAPI>(handle, [&](PowerCorrectionAPI& correction) {
    correction.Set(NotNull(path, "path"), ProgressOf(progress, user));
  });
}

int32_t vlPowerCorrectionGet(int32_t handle, const char* path) {
  return vlPowerCorrectionGetWithProgress(handle, path, nullptr, nullptr);
}

int32_t vlPowerCorrectionGetWithProgress(int32_t handle, const char* path, vlFileProgressCallback progress,
                                         void* user) {
  return OnCorrections<PowerCorrectionAPI>(handle, [&](PowerCorrectionAPI& correction) {
    correction.Get(NotNull(path, "path"), ProgressOf(progress, user));
  });
}

int32_t vlPowerCorrectionLoad(int32_t handle) {
  return OnCorrections<PowerCorrectionAPI>(handle, [](PowerCorrectionAPI& correction) { correction.Load(); });
}

int32_t vlPowerCorrectionStore(int32_t handle) {
  return OnCorrections<PowerCorrectionAPI>(handle,
                                           [](PowerCorrectionAPI& correction) { correction.Store(); });
}

int32_t vlPowerCorrectionChangeValue(int32_t handle, double x, double y, double z, double value) {
  return OnCorrections<PowerCorrectionAPI>(handle, [&](PowerCorrectionAPI& correction) {
    correction.ChangeValue({{x, y, z}}, value);
  });
}

int32_t vlPowerCorrectionGetOpticalParameters(int32_t handle, vlOpticalParameters* parameters) {
  return OnCorrections<PowerCorrectionAPI>(handle, [&](PowerCorrectionAPI& correction) {
    Fetch(parameters, [&] { return correction.GetOpticalParameters(); });
  });
}
