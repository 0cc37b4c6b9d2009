// The settings of one connection's remote calls.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "common/IPAddress.h"

namespace VELTRO::KELVO::ClientLib {

struct RpcClientEvent;

struct RpcClientConfiguration {
  static constexpr std::uint32_t DefaultBufferSize = 1048576;
  static constexpr std::int64_t DefaultReceiveTimeoutMs = 30000;
  // Default base name of the command log.
  static constexpr const char* LogFileName = "KELVOrpc";

  IPAddress Address;
  std::int32_t Port = 0;
  // Logs from the start, into LogFile. RpcClient::EnableLogging and DisableLogging set both.
  bool LoggingEnabled = false;
  std::int32_t Setting = -1;  // the adapter sets -1; nothing here reads it
  std::string LogFile;        // empty: LogFileName
  std::uint32_t ReceiveBufferSize = DefaultBufferSize;
  std::chrono::milliseconds ReceiveTimeout{DefaultReceiveTimeoutMs};
  // Gets every notification, on the receive thread. May be empty.
  std::function<void(const RpcClientEvent&)> NotificationCallback;
  // Learns of the end of the connection before anybody waits for the receive thread, on whichever threads notice it.
  // May be empty.
  std::function<void()> DisconnectedCallback;
};

}  // namespace VELTRO::KELVO::ClientLib
