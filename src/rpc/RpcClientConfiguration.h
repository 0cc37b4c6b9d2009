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
  bool LoggingEnabled = false;  // logs from the start, into LogFile
  std::int32_t Setting = -1;    // the adapter sets -1; nothing here reads it
  std::string LogFile;          // empty: LogFileName
  std::uint32_t ReceiveBufferSize = DefaultBufferSize;
  std::chrono::milliseconds ReceiveTimeout{DefaultReceiveTimeoutMs};
  // Both run on the receive thread and may be empty: every notification; the end of the connection.
  std::function<void(const RpcClientEvent&)> NotificationCallback;
  std::function<void()> DisconnectedCallback;
};

}  // namespace VELTRO::KELVO::ClientLib
