#include "kelvo/KelvoMotfAPI.h"

#include "capi/FlatRecord.h"
#include "config/MotfAPI.h"
#include "config/QuadratureDecoderAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlMotfInitConfig(vlMotfConfig* config) {
  return Flat::Init<MotfConfig>(config);
}

int32_t vlMotfGetConfig(int32_t handle, vlMotfConfig* config) {
  return Flat::Get<MotfAPI>(handle, config);
}

int32_t vlMotfSetConfig(int32_t handle, const vlMotfConfig* config) {
  return Flat::Set<MotfAPI, MotfConfig>(handle, config);
}

int32_t vlMotfLoadConfig(int32_t handle) {
  return Flat::Load<MotfAPI>(handle);
}

int32_t vlMotfStoreConfig(int32_t handle) {
  return Flat::Store<MotfAPI>(handle);
}

int32_t vlMotfToStringConfig(const vlMotfConfig* config, char* buffer, uint32_t size, uint32_t* length) {
  return Flat::ToString<MotfConfig>(config, buffer, size, length);
}

int32_t vlMotfConfigSetDirectionFromAngle(vlMotfConfig* config, double angle) {
  return Guarded([&] {
    NotNull(config, "config");
    MotfConfig directed;
    directed.SetDirectionFromAngle(angle);
    Flat::FromRecord(directed.MainDirection, config->MainDirection);
    Flat::FromRecord(directed.CompensationDirection, config->CompensationDirection);
  });
}

int32_t vlMotfResetState(int32_t handle) {
  return On<MotfAPI>(handle, [](MotfAPI& motf) { motf.ResetState(); });
}

int32_t vlMotfGetPendingParts(int32_t handle, int32_t* parts) {
  return On<MotfAPI>(handle, [&](MotfAPI& motf) {
    NotNull(parts, "parts");
    *parts = motf.GetPendingParts();
  });
}

int32_t vlGetFactor1xSpeed(int32_t handle, double* factor) {
  return On<MotfAPI>(handle, [&](MotfAPI& motf) {
    NotNull(factor, "factor");
    *factor = motf.GetFactor1xSpeed();
  });
}

int32_t vlSetFactor1xSpeed(int32_t handle, double factor) {
  return On<MotfAPI>(handle, [&](MotfAPI& motf) { motf.SetFactor1xSpeed(factor); });
}

int32_t vlMotfQuadratureDecoderInitConfig(vlQuadratureDecoderConfig* config) {
  return Flat::Init<QuadratureDecoderConfig>(config);
}

int32_t vlMotfQuadratureDecoderGetConfig(int32_t handle, vlQuadratureDecoderConfig* config) {
  return Flat::Get<QuadratureDecoderAPI>(handle, config);
}

int32_t vlMotfQuadratureDecoderSetConfig(int32_t handle, const vlQuadratureDecoderConfig* config) {
  return Flat::Set<QuadratureDecoderAPI, QuadratureDecoderConfig>(handle, config);
}

int32_t vlMotfQuadratureDecoderLoadConfig(int32_t handle) {
  return Flat::Load<QuadratureDecoderAPI>(handle);
}

int32_t vlMotfQuadratureDecoderStoreConfig(int32_t handle) {
  return Flat::Store<QuadratureDecoderAPI>(handle);
}

int32_t vlMotfQuadratureDecoderToStringConfig(const vlQuadratureDecoderConfig* config, char* buffer,
                                              uint32_t size, uint32_t* length) {
  return Flat::ToString<QuadratureDecoderConfig>(config, buffer, size, length);
}

int32_t vlMotfQuadratureDecoderResetEncoderPosition(int32_t handle, int32_t module) {
  return On<QuadratureDecoderAPI>(
      handle, [&](QuadratureDecoderAPI& decoders) { decoders.ResetEncoderPosition(module); });
}

int32_t vlMotfQuadratureDecoderReadEncoderPosition(int32_t handle, int32_t module, int32_t* position) {
  return On<QuadratureDecoderAPI>(handle, [&](QuadratureDecoderAPI& decoders) {
    NotNull(position, "position");
    *position = decoders.ReadEncoderPosition(module);
  });
}
