#include "kelvo/KelvoEventAPI.h"

#include "capi/FlatRecord.h"
#include "services/EventAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlEventInitConfig(vlEventConfig* config) {
  return Flat::Init<EventConfig>(config);
}

int32_t vlEventGetConfig(int32_t handle, vlEventConfig* config) {
  return Flat::Get<EventAPI>(handle, config);
}

int32_t vlEventSetConfig(int32_t handle, const vlEventConfig* config) {
  return Flat::Set<EventAPI, EventConfig>(handle, config);
}

int32_t vlEventLoadConfig(int32_t handle) {
  return Flat::Load<EventAPI>(handle);
}

int32_t vlEventStoreConfig(int32_t handle) {
  return Flat::Store<EventAPI>(handle);
}
