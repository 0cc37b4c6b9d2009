#include "kelvo/KelvoInternalAPI.h"

#include "capi/CallersArray.h"
#include "capi/FlatRecord.h"
#include "peripherals/InternalAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlInternalGetMethodSupport(int32_t handle, const char* method, int32_t* support) {
  return On<InternalAPI>(handle, [&](InternalAPI& card) {
    NotNull(method, "method"), NotNull(support, "support");
    *support = card.GetMethodSupport(method)._to_integral();
  });
}

int32_t vlInternalGetMeasurements(int32_t handle, vlMeasurement* measurements, uint32_t capacity,
                                  uint32_t* count) {
  return On<InternalAPI>(handle, [&](InternalAPI& card) {
    CallersArray array(measurements, "measurements", capacity, count);
    Flat::FillArray(array, card.GetMeasurements(), "Buffer is too small.");
  });
}

int32_t vlInternalGetLog(int32_t handle, char* buffer, uint32_t size, uint32_t* length) {
  return On<InternalAPI>(
      handle, [&](InternalAPI& card) { TellText(buffer, size, length, [&] { return card.GetLog(); }); });
}

int32_t vlInternalRunSelfTest(int32_t handle, vlSelfTestResult* results, uint32_t capacity, uint32_t* count) {
  return On<InternalAPI>(handle, [&](InternalAPI& card) {
    CallersArray array(results, "results", capacity, count);
    Flat::FillArray(array, card.RunSelfTest(), "Buffer is too small.");
  });
}
