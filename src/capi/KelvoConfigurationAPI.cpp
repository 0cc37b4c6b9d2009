#include "kelvo/KelvoConfigurationAPI.h"

#include "capi/Frame.h"
#include "config/ConfigurationAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlConfigurationBeginUpdate(int32_t handle) {
  return On<ConfigurationAPI>(handle, [](ConfigurationAPI& configuration) { configuration.BeginUpdate(); });
}

int32_t vlConfigurationEndUpdate(int32_t handle) {
  return On<ConfigurationAPI>(handle, [](ConfigurationAPI& configuration) { configuration.EndUpdate(); });
}

int32_t vlConfigurationAbortUpdate(int32_t handle) {
  return On<ConfigurationAPI>(handle, [](ConfigurationAPI& configuration) { configuration.AbortUpdate(); });
}

int32_t vlConfigurationIsUpdateActive(int32_t handle, bool* active) {
  return On<ConfigurationAPI>(handle, [&](ConfigurationAPI& configuration) {
    NotNull(active, "active");
    *active = configuration.IsUpdateActive();
  });
}
