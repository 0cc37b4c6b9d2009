// The callback of a transfer that an application gives.
#pragma once

#include "kelvo/KelvoFileAPI.h"
#include "services/FileAPIVL.h"

namespace VELTRO::KELVO::ClientLib {

inline TransferProgress ProgressOf(vlFileProgressCallback progress, void* user) {
  if (progress == nullptr) return {};
  return [=](std::uint64_t moved, std::uint64_t whole) { return progress(user, moved, whole); };
}

}  // namespace VELTRO::KELVO::ClientLib
