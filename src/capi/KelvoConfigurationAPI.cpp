#include "kelvo/KelvoConfigurationAPI.h"

#include "capi/Frame.h"
#include "config/ConfigurationAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlConfigurationBeginUpdate(int32_t handle) {
  return OnConnection(
      handle, [](ConnectionContext& connection) { ConfigurationAPI(connection.Client).BeginUpdate(); });
}

int32_t vlConfigurationEndUpdate(int32_t handle) {
  return OnConnection(handle,
                      [](ConnectionContext& connection) { ConfigurationAPI(connection.Client).EndUpdate(); });
}

int32_t vlConfigurationAbortUpdate(int32_t handle) {
  return OnConnection(
      handle, [](ConnectionContext& connection) { ConfigurationAPI(connection.Client).AbortUpdate(); });
}

int32_t vlConfigurationIsUpdateActive(int32_t handle, bool* active) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(active, "active");
    *active = ConfigurationAPI(connection.Client).IsUpdateActive();
  });
}
