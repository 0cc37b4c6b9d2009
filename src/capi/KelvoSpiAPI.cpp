#include "kelvo/KelvoSpiAPI.h"

#include <algorithm>

#include "capi/FlatRecord.h"
#include "capi/GivenArray.h"
#include "peripherals/SpiAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlSpiInitConfig(vlSpiConfig* config) {
  return Flat::Init<SpiConfig>(config);
}

int32_t vlSpiGetConfig(int32_t handle, vlSpiConfig* config) {
  return Flat::Get<SpiAPI>(handle, config);
}

int32_t vlSpiSetConfig(int32_t handle, const vlSpiConfig* config) {
  return Flat::Set<SpiAPI, SpiConfig>(handle, config);
}

int32_t vlSpiLoadConfig(int32_t handle) {
  return Flat::Load<SpiAPI>(handle);
}

int32_t vlSpiStoreConfig(int32_t handle) {
  return Flat::Store<SpiAPI>(handle);
}

int32_t vlSpiToStringConfig(const vlSpiConfig* config, char* buffer, uint32_t size, uint32_t* length) {
  return Flat::ToString<SpiConfig>(config, buffer, size, length);
}

int32_t vlSpiTransfer(int32_t handle, int32_t module, const uint8_t* sent, uint32_t count,
                      uint8_t* received) {
  return On<SpiAPI>(handle, [&](SpiAPI& modules) {
    if (count > 0) NotNull(received, "received");
    const auto answer = modules.Transfer(module, Given(sent, count, "sent"));
    if (answer.size() != count) throw std::runtime_error("The card sent another number of bytes.");
    std::ranges::copy(answer, received);
  });
}
