// Time-outs of waits, as callers give them.
#pragma once

#include <chrono>
#include <cstdint>

#include "capi/ConnectionContext.h"

namespace VELTRO::KELVO::ClientLib {

// In milliseconds; a negative one is that of the connection.
inline std::chrono::milliseconds WaitTime(const ConnectionContext& connection, std::int32_t timeout) {
  return std::chrono::milliseconds(timeout < 0 ? std::int64_t{connection.Client.GetTimeout()} : timeout);
}

}  // namespace VELTRO::KELVO::ClientLib
