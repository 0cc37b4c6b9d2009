// One connection to one card: owns the remote calls, keeps the time-out, routes the card's notifications.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "common/IPAddress.h"
#include "common/Mutex.h"
#include "lists/ListEvents.h"
#include "rpc/RpcCaller.h"
#include "rpc/RpcEvents.h"

namespace VELTRO::KELVO::ClientLib {

class Recorder;
class RpcClient;

// Any thread may call anything at any time. A running call keeps its share of the RpcClient that a disconnect
// replaces.
class ClientAdapter : public RpcCaller {
 public:
  static constexpr const char* ClientLibVersion = "3.10.3.3013";
  static constexpr unsigned int DefaultTimeoutMs = 17000;

  ClientAdapter();
  ~ClientAdapter() override;
  ClientAdapter(const ClientAdapter&) = delete;
  ClientAdapter& operator=(const ClientAdapter&) = delete;

  // Opens the connection. `timeout` in milliseconds bounds the connecting and every later call. Throws
  // std::runtime_error "Cannot connect to ADDRESS/PORT: Already connected." or
  // "Error: Cannot open connection to ADDRESS/PORT.".
  void Connect(const IPAddress& address, int port, unsigned int timeout, int handle);
  void Connect(const IPAddress& address, int port, int handle) {
    Connect(address, port, DefaultTimeoutMs, handle);
  }
  // Ends the connection; nothing happens without one. Throws std::runtime_error "A callback must not
  // disconnect." on a receive thread, of whatever connection: two that disconnect each other would join for
  // ever.
  void Disconnect();
  // Disconnect for good: a Connect that is under way, or comes later, fails, too.
  void End();
  // For the end of the process: ends the connection without waiting for a callback. Returns whether nothing
  // is left that could touch this object.
  bool Abandon();
  bool IsConnected() const;

  void SetTimeout(unsigned int milliseconds);
  std::uint32_t GetTimeout() const override { return timeout_; }
  std::int32_t GetConnectionId() const { return handle_; }

  // Starts a new command log at `path` and writes the versions into it. Values are cut to `valueLimit`
  // characters.
  void EnableCommandLogging(std::string path, int valueLimit);
  void DisableCommandLogging();
  void Log(const char* text) override;
  // Records every frame from now on into a new file at `path`. A recording that is being written is ended first; when
  // that fails no other is begun. Throws std::runtime_error "Connection must be enabled to start recording!", or what
  // Recording::SessionWriter throws.
  void EnableRecording(const std::string& path);
  // Throws what Recording::SessionWriter::Finish throws; the recording is ended all the same.
  void DisableRecording();

  ListEvents& GetListEvents() { return listEvents_; }
  bool IsDataPending() const override;
  CallbackWait BeginWait() const override;

  // Takes a notification, on the receive thread. Throws std::runtime_error, which ends the connection, for
  // one that it cannot make sense of: "RpcEventType::_from_integral: invalid argument", "Could not process
  // event!", "Invalid notification response. It contains neither result nor error nor progress.".
  void NotificationEvent(const RpcClientEvent& event);

 protected:
  void Perform(RemoteCall& call) override;
  // Disconnect without its check, for a connection that no callback of its own can be using yet.
  void Close();
  void SetCardTexts(std::string firmwareVersion, std::string serialNumber);

 private:
  std::shared_ptr<RpcClient> GetClient() const;
  void HandleEvent(RpcEventType type, const RpcClientEvent& event);
  void HandleListEvent(ListEventKind kind, const RpcClientEvent& event, RpcEventType type);
  void LogEvent(const std::string& text);
  void EndRecording() noexcept;
  void FinishRecording() KELVO_REQUIRES(recordingMutex_);

  std::atomic<std::uint32_t> timeout_{DefaultTimeoutMs};
  std::atomic<std::int32_t> handle_{-1};
  std::atomic<bool> logging_{false};
  ListEvents listEvents_;
  std::atomic<std::uint64_t> lastLink_{0};

  Mutex recordingMutex_;  // held while a recording is begun or ended
  std::shared_ptr<Recorder> recorder_ KELVO_GUARDED_BY(recordingMutex_);

  mutable Mutex mutex_;
  bool ended_ KELVO_GUARDED_BY(mutex_) = false;
  std::shared_ptr<RpcClient> client_ KELVO_GUARDED_BY(mutex_);
  std::string firmwareVersion_ KELVO_GUARDED_BY(mutex_);
  std::string serialNumber_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::ClientLib
