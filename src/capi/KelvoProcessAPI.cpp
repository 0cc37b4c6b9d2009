#include "kelvo/KelvoProcessAPI.h"

#include "capi/FlatRecord.h"
#include "common/WobbleShape.h"
#include "config/ProcessAPI.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

constexpr const char* VariablesName = "variables";

int32_t SetWobble(vlWobbleSettings* wobble, const WobbleShape& shape) {
  return Guarded([&] { Flat::FromRecord(WobbleSettings(shape), *NotNull(wobble, "wobble")); });
}

}  // namespace

int32_t vlProcessInitVariables(vlProcessVariables* variables) {
  return Flat::Init<ProcessVariables>(variables, VariablesName);
}

int32_t vlProcessGetVariables(int32_t handle, vlProcessVariables* variables) {
  return Flat::Get<ProcessAPI>(handle, variables, VariablesName);
}

int32_t vlProcessSetVariables(int32_t handle, const vlProcessVariables* variables) {
  return Flat::Set<ProcessAPI, ProcessVariables>(handle, variables, VariablesName);
}

int32_t vlProcessLoadVariables(int32_t handle) {
  return Flat::Load<ProcessAPI>(handle);
}

int32_t vlProcessStoreVariables(int32_t handle) {
  return Flat::Store<ProcessAPI>(handle);
}

int32_t vlProcessToStringVariables(const vlProcessVariables* variables, char* buffer, uint32_t size,
                                   uint32_t* length) {
  return Flat::ToString<ProcessVariables>(variables, buffer, size, length, VariablesName);
}

int32_t vlProcessGetSpeedScale(int32_t handle, double* scale) {
  return On<ProcessAPI>(handle, [&](ProcessAPI& process) {
    NotNull(scale, "scale");
    *scale = process.GetSpeedScale();
  });
}

int32_t vlProcessSetSpeedScale(int32_t handle, double scale) {
  return On<ProcessAPI>(handle, [&](ProcessAPI& process) { process.SetSpeedScale(scale); });
}

int32_t vlProcessGetTransformation(int32_t handle, vlTransform3D* transformation) {
  return On<ProcessAPI>(handle, [&](ProcessAPI& process) {
    NotNull(transformation, "transformation");
    Flat::FromRecord(process.GetTransformation(), *transformation);
  });
}

int32_t vlProcessSetTransformation(int32_t handle, const vlTransform3D* transformation) {
  return On<ProcessAPI>(handle, [&](ProcessAPI& process) {
    process.SetTransformation(Flat::Taken<Transform3D>(transformation, "transformation"));
  });
}

int32_t vlProcessWobbleSetCircle(vlWobbleSettings* wobble, double amplitude, double frequency) {
  return SetWobble(wobble, WobbleShape::Circle(amplitude, frequency));
}

int32_t vlProcessWobbleSetEight(vlWobbleSettings* wobble, double amplitude_x, double amplitude_y,
                                double frequency) {
  return SetWobble(wobble, WobbleShape::Eight({amplitude_x, amplitude_y}, frequency));
}
