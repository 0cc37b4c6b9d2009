// Notifications as they travel from the receive thread to the adapter.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "common/ReflectiveEnum.h"
#include "rpc/MsgPack.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib {

KELVO_ENUM(RpcEventType, std::int32_t, None = 0, ListIdle = 0x01, ListDone = 0x02, Progress = 0x11,
           Unknown = -1, ListError = -3, Error = -4, Exception = -5)

struct RpcClientEvent {
  std::int32_t EventType = RpcEventType::Unknown;
  std::span<const msgpack::object> Arguments;     // lives during the callback only
  std::optional<RpcRemoteException> RemoteError;  // of an error notification
};

}  // namespace VELTRO::KELVO::ClientLib
