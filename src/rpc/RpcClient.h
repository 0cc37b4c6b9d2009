// Remote calls over one connection: numbers the requests, sends them, waits for the answers and converts
// them.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common/Mutex.h"
#include "rpc/ClientTransport.h"
#include "rpc/RpcCaller.h"
#include "rpc/RpcClientConfiguration.h"

namespace VELTRO::KELVO::ClientLib {

class Rpc : public Context {
 public:
  explicit Rpc(const RpcClientConfiguration& configuration) : configuration_(configuration) {}
  const RpcClientConfiguration& GetConfig() const override { return configuration_; }

 protected:
  RpcClientConfiguration configuration_;
};

// Any thread may call anything at any time.
class RpcClient : public Rpc, public RpcCaller {
 public:
  explicit RpcClient(const RpcClientConfiguration& configuration);
  ~RpcClient() override { Stop(); }

  // Connects. Throws std::runtime_error "Client is already started!" or "Unable to connect to ADDRESS:PORT.".
  void Start();
  // Ends the connection (ClientTransport::StopRunning). A Start that is connecting fails.
  void Stop();
  // Stop, remembered: a Start that has just begun, or comes later, fails too.
  void End();
  // Stop for the end of the process (ClientTransport::Abandon).
  bool Abandon();
  bool IsConnected() const;

  void SetReceiveTimeout(std::chrono::milliseconds timeout);

  // Starts a new command log, ending an active one: `path`, or in the directory `path` the file "KELVOrpc". The
  // configuration has it from then on. Throws std::runtime_error "Connection must be enabled to start logging!", or
  // what RpcLogger::Restart throws.
  void EnableLogging(std::string path, bool timestampInName, bool replace, int valueLimit);
  // Throws what RpcLogger::Disable throws.
  void DisableLogging();
  // Feeds the command log: one free line, or one with a tag (RpcLogger::Write).
  void AppendLogMessage(const char* text);
  void AppendLogMessage(const char* tag, const std::string& text, bool call);
  bool IsLoggingEnabled() const;
  // ClientTransport::SetTap; nothing happens without a transport.
  void SetTap(std::shared_ptr<FrameTap> tap);
  bool IsDataPending() const override;

  std::uint32_t GetTimeout() const override { return static_cast<std::uint32_t>(receiveTimeout_.load()); }
  CallbackWait BeginWait() const override;
  void Log(const char* text) override { AppendLogMessage(text); }

 protected:
  void Perform(RemoteCall& call) override;

 private:
  // The transport, if the client has been started and not stopped. A call keeps its share while it runs.
  std::shared_ptr<ClientTransport> GetTransport() const;
  [[noreturn]] void FailToConnect() const;
  // Sets what the configuration says of the log; without a path it keeps the one it has.
  void StoreLogging(bool enabled, const std::optional<std::string>& path = std::nullopt)
      KELVO_EXCLUDES(mutex_);
  static void Converse(RemoteCall& call, ClientTransport& transport, std::uint32_t requestId,
                       std::chrono::milliseconds timeout);

  std::atomic<std::int64_t> receiveTimeout_;  // milliseconds
  std::atomic<std::uint32_t> nextRequestId_{0};

  Mutex
      loggingMutex_;  // held while a log is begun or ended, so that the configuration names the log that is written
  mutable Mutex mutex_;
  bool started_ KELVO_GUARDED_BY(mutex_) = false;
  bool ended_ KELVO_GUARDED_BY(mutex_) = false;
  std::shared_ptr<ClientTransport> transport_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::ClientLib
