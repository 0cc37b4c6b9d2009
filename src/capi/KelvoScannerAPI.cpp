#include "kelvo/KelvoScannerAPI.h"

#include <algorithm>

#include "capi/CallersArray.h"
#include "capi/FlatRecord.h"
#include "capi/GivenArray.h"
#include "config/ScannerAPI.h"
#include "services/ScannerCommunicationAPI.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

template <class T>
T& Out(T* result) {
  if (result == nullptr) throw std::runtime_error("Out parameter must not be null");
  return *result;
}

// Writes what `query` tells of a format, which may be none; a null result is told before that.
template <class Result, class Query>
int32_t Tell(int32_t format, Result* result, Query query) {
  return Guarded([&] {
    Result& out = Out(result);
    out = query(static_cast<ScanHeadFormat::_enumerated>(format));
  });
}

int32_t Read(int32_t handle, vlScannerPositions* positions, ScannerPositions (ScannerAPI::*read)()) {
  return On<ScannerAPI>(handle, [&](ScannerAPI& scanner) {
    Out(positions);
    vlScannerPositions flat{};
    Flat::FromRecord((scanner.*read)(), flat);
    *positions = flat;
  });
}

// Sends what `call` sends, and takes its answer.
template <class T, class Call>
int32_t Answer(int32_t handle, T* answer, uint32_t capacity, uint32_t* count, Call&& call) {
  return On<ScannerCommunicationAPI>(handle, [&](ScannerCommunicationAPI& heads) {
    CallersArray array(answer, "answer", capacity, count);
    array.Fill(call(heads), "Buffer is too small");
  });
}

constexpr int32_t Head(uint32_t head) {
  return static_cast<int32_t>(head);
}

constexpr Axes Set(uint32_t axes) {
  return static_cast<Axes::_enumerated>(axes);
}

}  // namespace

int32_t vlScannerInitConfig(vlScannerConfig* config) {
  return Flat::Init<ScannerConfig>(config);
}

int32_t vlScannerGetConfig(int32_t handle, vlScannerConfig* config) {
  return Flat::Get<ScannerAPI>(handle, config);
}

int32_t vlScannerSetConfig(int32_t handle, const vlScannerConfig* config) {
  return Flat::Set<ScannerAPI, ScannerConfig>(handle, config);
}

int32_t vlScannerLoadConfig(int32_t handle) {
  return Flat::Load<ScannerAPI>(handle);
}

int32_t vlScannerStoreConfig(int32_t handle) {
  return Flat::Store<ScannerAPI>(handle);
}

int32_t vlScannerToStringConfig(const vlScannerConfig* config, char* buffer, uint32_t size,
                                uint32_t* length) {
  return Flat::ToString<ScannerConfig>(config, buffer, size, length);
}

int32_t vlScannerConfigSetHeadFormat(vlScannerConfig* config, int32_t format) {
  return Guarded([&] {
    vlScannerConfig flat = *NotNull(config, "config");
    flat.HeadFormat = ScanHeadFormat::SL2_Single3D;  // any
    auto record = Flat::Taken<ScannerConfig>(&flat);
    record.SetHeadFormat(static_cast<ScanHeadFormat::_enumerated>(format));
    flat = {};
    Flat::FromRecord(record, flat);
    *config = flat;
  });
}

int32_t vlScannerGetNominalPosition(int32_t handle, double* x, double* y, double* z) {
  return On<ScannerAPI>(handle, [&](ScannerAPI& scanner) {
    NotNull(x, "x"), NotNull(y, "y"), NotNull(z, "z");
    const Point3D position = scanner.GetNominalPosition();
    *x = position.X(), *y = position.Y(), *z = position.Z();
  });
}

int32_t vlScannerReadPositions(int32_t handle, vlScannerPositions* positions) {
  return Read(handle, positions, &ScannerAPI::ReadPositions);
}

int32_t vlScannerReadLastPositions(int32_t handle, vlScannerPositions* positions) {
  return Read(handle, positions, &ScannerAPI::ReadLastPositions);
}

int32_t vlScannerGetHeadBias(int32_t handle, uint32_t head, vlPoint3D* bias) {
  return On<ScannerAPI>(handle, [&](ScannerAPI& scanner) {
    NotNull(bias, "bias");
    Flat::FromRecord(scanner.GetHeadBias(Head(head)), *bias);
  });
}

int32_t vlScannerSetHeadBias(int32_t handle, uint32_t head, uint32_t axes, const double* values,
                             uint32_t count) {
  return On<ScannerAPI>(handle, [&](ScannerAPI& scanner) {
    scanner.SetHeadBias(Head(head), Set(axes), Given(values, count, "values"));
  });
}

int32_t vlScannerHeadFormatGetHeadCount(int32_t format, int32_t* count) {
  return Tell(format, count, &GetHeadCount);
}

int32_t vlScannerHeadFormatGetAxisCount(int32_t format, int32_t* count) {
  return Tell(format, count, &GetAxisCount);
}

int32_t vlScannerHeadFormatGetIndexOfAxis(int32_t format, int32_t axis, int32_t* index) {
  return Tell(format, index,
              [&](ScanHeadFormat known) { return GetIndexOfAxis(known, Axis::_from_integral(axis)); });
}

int32_t vlScannerHeadFormatGetAxisAtIndex(int32_t format, int32_t index, int32_t* axis) {
  return Tell(format, axis, [&](ScanHeadFormat known) { return GetAxisAtIndex(known, index); });
}

int32_t vlScannerHeadFormatGetDimensions(int32_t format, int32_t* dimensions) {
  return Tell(format, dimensions, &GetDimensions);
}

int32_t vlScannerHeadFormatGetAxes(int32_t format, int32_t* axes) {
  return Tell(format, axes, &GetAxes);
}

int32_t vlScannerHeadFormatHasOpticalZoom(int32_t format, bool* zoom) {
  return Tell(format, zoom, &HasOpticalZoom);
}

int32_t vlScannerHeadFormatHasAuxiliary(int32_t format, bool* auxiliary) {
  return Tell(format, auxiliary, &HasAuxiliary);
}

int32_t vlScannerHeadFormatIsExtended(int32_t format, bool* extended) {
  return Tell(format, extended, &IsExtended);
}

int32_t vlScannerCommunicationTransmitVeltro(int32_t handle, uint32_t head, uint32_t axis,
                                             const uint8_t* message, uint32_t length, uint32_t timeout) {
  return On<ScannerCommunicationAPI>(handle, [&](ScannerCommunicationAPI& heads) {
    heads.TransmitVeltro(Head(head), Axis::_from_integral(axis), Given(message, length, "message"), timeout);
  });
}

int32_t vlScannerCommunicationTransceiveVeltro(int32_t handle, uint32_t head, uint32_t axis,
                                               const uint8_t* message, uint32_t length, uint8_t* answer,
                                               uint32_t capacity, uint32_t* count, uint32_t timeout) {
  return Answer(handle, answer, capacity, count, [&](ScannerCommunicationAPI& heads) {
    return heads.TransceiveVeltro(Head(head), Axis::_from_integral(axis), Given(message, length, "message"),
                                  timeout);
  });
}

int32_t vlScannerCommunicationTransmitEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                               const uint32_t* commands, uint32_t length, uint32_t timeout) {
  return On<ScannerCommunicationAPI>(handle, [&](ScannerCommunicationAPI& heads) {
    heads.TransmitEnhanced(Head(head), Set(axes), Given(commands, length, "commands"), timeout);
  });
}

int32_t vlScannerCommunicationReceiveEnhanced(int32_t handle, uint32_t head, uint32_t axes, uint32_t* answer,
                                              uint32_t capacity, uint32_t* count, uint32_t timeout) {
  return Answer(handle, answer, capacity, count, [&](ScannerCommunicationAPI& heads) {
    return heads.ReceiveEnhanced(Head(head), Set(axes), timeout);
  });
}

int32_t vlScannerCommunicationTransceiveEnhanced(int32_t handle, uint32_t head, uint32_t axes,
                                                 const uint32_t* commands, uint32_t length, uint32_t* answer,
                                                 uint32_t capacity, uint32_t* count, uint32_t timeout) {
  return Answer(handle, answer, capacity, count, [&](ScannerCommunicationAPI& heads) {
    return heads.TransceiveEnhanced(Head(head), Set(axes), Given(commands, length, "commands"), timeout);
  });
}
