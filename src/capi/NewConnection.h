// Connections on their way into the table of handles.
#pragma once

#include "capi/Frame.h"

namespace VELTRO::KELVO::ClientLib {

// Makes a handle, connects with `connect(client, handle)` and returns the handle. When that fails the handle is gone
// again and the failure is passed on.
template <class Connect>
std::int32_t NewConnection(Connect&& connect) {
  APIContext& context = APIContext::getInstance();
  const int handle = context.CreateNew();
  // Shared: a disconnect from elsewhere may remove the handle while it connects.
  const auto connection = context.Share(handle);
  try {
    connect(connection->Client, handle);
    // Disconnected from elsewhere before it was connected: the handle names nothing any more.
    if (!context.Find(handle)) throw std::runtime_error("ConnectionAborted");
  } catch (...) {
    context.Remove(handle);
    throw;
  }
  return handle;
}

}  // namespace VELTRO::KELVO::ClientLib
