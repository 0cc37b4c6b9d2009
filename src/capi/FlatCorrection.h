// What head and power corrections share: their files, and the optical parameters as a plain struct.
#pragma once

#include "capi/FlatRecord.h"
#include "capi/Progress.h"
#include "kelvo/KelvoHeadCorrectionAPI.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::ClientLib {

// On the corrections of a kind, which HeadCorrectionAPI and PowerCorrectionAPI are.
template <class API, class Work>
std::int32_t OnCorrections(std::int32_t handle, Work&& work) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    FileAPIVL files(connection.Client);
    API corrections(connection.Client, files);
    work(corrections);
  });
}

// Writes what `get` gives, when it gives something.
template <class Get>
void Fetch(vlOpticalParameters* parameters, Get&& get) {
  NotNull(parameters, "parameters");
  vlOpticalParameters flat{};
  Flat::FromRecord(get(), flat);
  *parameters = flat;
}

}  // namespace VELTRO::KELVO::ClientLib
