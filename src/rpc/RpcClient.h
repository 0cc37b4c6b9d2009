// Remote calls over one connection: numbers the requests, sends them, waits for the answers and converts
// them.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
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
  // Ends the connection (ClientTransport::StopRunning). A Start that is running fails.
  void Stop();
  // Stop for the end of the process (ClientTransport::Abandon).
  bool Abandon();
  bool IsConnected() const;

  void SetReceiveTimeout(std::chrono::milliseconds timeout) { receiveTimeout_ = timeout.count(); }

  // Starts a new command log, ending an active one: `path`, or in the directory `path` the file "KELVOrpc".
  // Throws std::runtime_error "Connection must be enabled to start logging!", or what RpcLogger::Enable
  // throws.
  void EnableLogging(std::string path, bool timestampInName, bool replace, int valueLimit);
  void DisableLogging();
  // Feeds the command log: one free line, or one with a tag (RpcLogger::Write).
  void AppendLogMessage(const char* text);
  void AppendLogMessage(const char* tag, const std::string& text, bool call);
  bool IsLoggingEnabled() const;
  // Whether received data waits to be read.
  bool IsDataPending();

  std::uint32_t GetTimeout() const override { return static_cast<std::uint32_t>(receiveTimeout_.load()); }
  void CheckMayWait() const override;
  void Log(const char* text) override { AppendLogMessage(text); }

 protected:
  void Perform(RemoteCall& call) override;

 private:
  // The transport, if the client has been started and not stopped. A call keeps its share while it runs.
  std::shared_ptr<ClientTransport> GetTransport() const;
  static void Converse(RemoteCall& call, ClientTransport& transport, std::uint32_t requestId,
                       std::chrono::milliseconds timeout);

  std::atomic<std::int64_t> receiveTimeout_;  // milliseconds
  std::atomic<std::uint32_t> nextRequestId_{0};

  mutable Mutex mutex_;
  bool started_ KELVO_GUARDED_BY(mutex_) = false;
  std::shared_ptr<ClientTransport> transport_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::ClientLib
