#include "kelvo/KelvoSerialPortAPI.h"

#include <algorithm>

#include "capi/FlatRecord.h"
#include "capi/GivenArray.h"
#include "capi/WaitTime.h"
#include "peripherals/SerialPortAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlSerialPortInitConfig(vlSerialPortConfig* config) {
  return Flat::Init<SerialPortConfig>(config);
}

int32_t vlSerialPortGetConfig(int32_t handle, vlSerialPortConfig* config) {
  return Flat::Get<SerialPortAPI>(handle, config);
}

int32_t vlSerialPortSetConfig(int32_t handle, const vlSerialPortConfig* config) {
  return Flat::Set<SerialPortAPI, SerialPortConfig>(handle, config);
}

int32_t vlSerialPortLoadConfig(int32_t handle) {
  return Flat::Load<SerialPortAPI>(handle);
}

int32_t vlSerialPortStoreConfig(int32_t handle) {
  return Flat::Store<SerialPortAPI>(handle);
}

int32_t vlSerialPortToStringConfig(const vlSerialPortConfig* config, char* buffer, uint32_t size,
                                   uint32_t* length) {
  return Flat::ToString<SerialPortConfig>(config, buffer, size, length);
}

int32_t vlSerialPortWrite(int32_t handle, int32_t port, const uint8_t* bytes, uint32_t count) {
  return On<SerialPortAPI>(handle,
                           [&](SerialPortAPI& ports) { ports.Write(port, Given(bytes, count, "bytes")); });
}

int32_t vlSerialPortRead(int32_t handle, int32_t port, uint8_t* bytes, uint32_t capacity, uint32_t* count,
                         int32_t timeout_ms) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(bytes, "bytes"), NotNull(count, "count");
    if (capacity == 0) throw std::runtime_error("The buffer has no room.");
    SerialPortAPI ports(connection.Client);
    const auto received = ports.Read(port, capacity, WaitTime(connection, timeout_ms));
    if (received.size() > capacity) throw std::runtime_error("The card sent more than it was asked for.");
    std::ranges::copy(received, bytes);
    *count = static_cast<uint32_t>(received.size());
    return received.empty() ? int32_t{1} : int32_t{0};
  });
}

int32_t vlSerialPortFlush(int32_t handle, int32_t port) {
  return On<SerialPortAPI>(handle, [&](SerialPortAPI& ports) { ports.Flush(port); });
}
