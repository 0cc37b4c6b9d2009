#include "kelvo/KelvoHeadCorrectionAPI.h"

#include "capi/FlatCorrection.h"
#include "services/HeadCorrectionAPI.h"

using namespace VELTRO::KELVO::ClientLib;

int32_t vlHeadCorrectionExists(int32_t handle, int32_t head, int32_t slot, bool* exists) {
  return OnCorrections<HeadCorrectionAPI>(handle, [&](HeadCorrectionAPI& corrections) {
    NotNull(exists, "exists");
    *exists = corrections.Exists(head, slot);
  });
}

int32_t vlHeadCorrectionDelete(int32_t handle, int32_t head, int32_t slot) {
  return OnCorrections<HeadCorrectionAPI>(
      handle, [&](HeadCorrectionAPI& corrections) { corrections.Delete(head, slot); });
}

int32_t vlHeadCorrectionSet(int32_t handle, int32_t head, int32_t slot, const char* path) {
  return vlHeadCorrectionSetWithProgress(handle, head, slot, path, nullptr, nullptr);
}

int32_t vlHeadCorrectionSetWithProgress(int32_t handle, int32_t head, int32_t slot, const char* path,
                                        vlFileProgressCallback progress, void* user) {
  return OnCorrections<HeadCorrectionAPI>(handle, [&](HeadCorrectionAPI& corrections) {
    corrections.Set(head, slot, NotNull(path, "path"), ProgressOf(progress, user));
  });
}

int32_t vlHeadCorrectionGet(int32_t handle, int32_t head, int32_t slot, const char* path) {
  return vlHeadCorrectionGetWithProgress(handle, head, slot, path, nullptr, nullptr);
}

int32_t vlHeadCorrectionGetWithProgress(int32_t handle, int32_t head, int32_t slot, const char* path,
                                        vlFileProgressCallback progress, void* user) {
  return OnCorrections<HeadCorrectionAPI>(handle, [&](HeadCorrectionAPI& corrections) {
    corrections.Get(head, slot, NotNull(path, "path"), ProgressOf(progress, user));
  });
}

int32_t vlHeadCorrectionLoad(int32_t handle) {
  return OnCorrections<HeadCorrectionAPI>(handle, [](HeadCorrectionAPI& corrections) { corrections.Load(); });
}

int32_t vlHeadCorrectionStore(int32_t handle) {
  return OnCorrections<HeadCorrectionAPI>(handle,
                                          [](HeadCorrectionAPI& corrections) { corrections.Store(); });
}

int32_t vlHeadCorrectionSelectCorrection(int32_t handle, int32_t head, int32_t slot) {
  return OnCorrections<HeadCorrectionAPI>(
      handle, [&](HeadCorrectionAPI& corrections) { corrections.SelectCorrection(head, slot); });
}

int32_t vlHeadCorrectionGetSelectedCorrection(int32_t handle, int32_t head, int32_t* slot) {
  return OnCorrections<HeadCorrectionAPI>(handle, [&](HeadCorrectionAPI& corrections) {
    NotNull(slot, "slot");
    *slot = corrections.GetSelectedCorrection(head);
  });
}

int32_t vlHeadCorrectionGetHash(int32_t handle, int32_t head, int32_t slot, char* buffer, uint32_t size,
                                uint32_t* length) {
  return OnCorrections<HeadCorrectionAPI>(handle, [&](HeadCorrectionAPI& corrections) {
    NotNull(length, "length"), NotNull(buffer, "buffer");
    CopyText(corrections.GetHash(head, slot), buffer, size, length);
  });
}

int32_t vlHeadCorrectionGetOpticalParameters(int32_t handle, int32_t head, int32_t slot,
                                             vlOpticalParameters* parameters) {
  return OnCorrections<HeadCorrectionAPI>(handle, [&](HeadCorrectionAPI& corrections) {
    Fetch(parameters, [&] { return corrections.GetOpticalParameters(head, slot); });
  });
}

int32_t vlHeadCorrectionInitOpticalParameters(vlOpticalParameters* parameters) {
  return Guarded([&] { Fetch(parameters, [] { return OpticalParameters(); }); });
}

int32_t vlOpticalParametersGetHashCode(const vlOpticalParameters* parameters, uint32_t* hash_code) {
  return Guarded([&] {
    const auto taken = Flat::Taken<OpticalParameters>(parameters, "parameters");
    *NotNull(hash_code, "hash_code") = taken.GetHashCode();
  });
}

int32_t vlOpticalParametersEqualLayers(const vlOpticalParameters* parameters,
                                       const vlOpticalParameters* other, bool* equal) {
  return Guarded([&] {
    const auto taken = Flat::Taken<OpticalParameters>(parameters, "parameters");
    *NotNull(equal, "equal") = taken.EqualLayers(Flat::Taken<OpticalParameters>(other, "other"));
  });
}

int32_t vlOpticalParametersToJson(const vlOpticalParameters* parameters, char* buffer, uint32_t size,
                                  uint32_t* length) {
  return Guarded([&] {
    CopyText(Flat::Taken<OpticalParameters>(parameters, "parameters").ToJsonText(), buffer, size, length);
  });
}

int32_t vlOpticalParametersFromJson(const char* json, vlOpticalParameters* parameters) {
  return Guarded([&] {
    NotNull(json, "json");
    Fetch(parameters, [&] { return OpticalParameters::FromJsonText(json); });
  });
}
