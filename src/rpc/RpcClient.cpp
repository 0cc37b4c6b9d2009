#include "rpc/RpcClient.h"

#include <sys/stat.h>

#include <stdexcept>
#include <utility>

namespace VELTRO::KELVO::ClientLib {

RpcClient::RpcClient(const RpcClientConfiguration& configuration)
    : Rpc(configuration), receiveTimeout_(configuration.ReceiveTimeout.count()) {}

std::shared_ptr<ClientTransport> RpcClient::GetTransport() const {
  const MutexLock lock(mutex_);
  return transport_;
}

void RpcClient::Start() {
  std::shared_ptr<ClientTransport> transport;
  std::shared_ptr<ClientTransport> earlier;
  {
    const MutexLock lock(mutex_);
    if (started_) throw std::runtime_error("Client is already started!");
    if (ended_) FailToConnect();
    transport = std::make_shared<ClientTransport>(this);
    if (configuration_.LoggingEnabled) {
      const std::string& name = configuration_.LogFile;
      transport->GetLogger().Enable(name.empty() ? RpcClientConfiguration::LogFileName : name, false, true,
                                    -1);
    }
    earlier = std::exchange(transport_, transport);
  }
  if (earlier) earlier->StopRunning();
  const bool up = transport->Run();
  const MutexLock lock(mutex_);
  if (!up || ended_ || transport_ != transport) FailToConnect();
  started_ = true;
}

void RpcClient::FailToConnect() const {
  throw std::runtime_error("Unable to connect to " + configuration_.Address.ToString() + ":" +
                           std::to_string(configuration_.Port) + ".");
}

void RpcClient::End() {
  {
    const MutexLock lock(mutex_);
    ended_ = true;
  }
  Stop();
}

void RpcClient::Stop() {
  std::shared_ptr<ClientTransport> transport;
  {
    const MutexLock lock(mutex_);
    started_ = false;
    transport = transport_;
  }
  if (transport) transport->StopRunning();
}

bool RpcClient::Abandon() {
  const auto transport = GetTransport();
  return !transport || transport->Abandon();
}

bool RpcClient::IsConnected() const {
  const MutexLock lock(mutex_);
  return started_ && transport_->IsConnected();
}

void RpcClient::SetReceiveTimeout(std::chrono::milliseconds timeout) {
  receiveTimeout_ = timeout.count();
  if (const auto transport = GetTransport()) transport->GetCommunication().SetTimeout(timeout);
}

CallbackWait RpcClient::BeginWait() const {
  return CallbackWait(GetTransport().get());
}

void RpcClient::EnableLogging(std::string path, bool timestampInName, bool replace, int valueLimit) {
  const auto transport = GetTransport();
  if (!transport || !IsConnected()) throw std::runtime_error("Connection must be enabled to start logging!");
  struct stat status {};
  if (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
    path.append("/").append(RpcClientConfiguration::LogFileName);
  }
  const MutexLock lock(loggingMutex_);
  StoreLogging(false, path);
  transport->GetLogger().Restart(path, timestampInName, replace, valueLimit);
  StoreLogging(true, path);
}

void RpcClient::DisableLogging() {
  const MutexLock lock(loggingMutex_);
  StoreLogging(false);
  if (const auto transport = GetTransport()) transport->GetLogger().Disable();
}

void RpcClient::StoreLogging(bool enabled, const std::optional<std::string>& path) {
  const MutexLock lock(mutex_);
  configuration_.LoggingEnabled = enabled;
  if (path) configuration_.LogFile = *path;
}

void RpcClient::AppendLogMessage(const char* text) {
  if (const auto transport = GetTransport()) transport->GetLogger().Write(text);
}

void RpcClient::AppendLogMessage(const char* tag, const std::string& text, bool call) {
  if (const auto transport = GetTransport()) transport->GetLogger().Write(tag, text, call);
}

bool RpcClient::IsLoggingEnabled() const {
  const auto transport = GetTransport();
  return transport && transport->GetLogger().IsEnabled();
}

void RpcClient::SetTap(std::shared_ptr<FrameTap> tap) {
  if (const auto transport = GetTransport()) transport->SetTap(std::move(tap));
}

bool RpcClient::IsDataPending() const {
  const auto transport = GetTransport();
  return transport && transport->GetCommunication().IsDataPending();
}

void RpcClient::Perform(RemoteCall& call) {
  const std::uint32_t requestId = nextRequestId_++;  // numbered even when the call then fails
  std::shared_ptr<ClientTransport> transport;
  {
    const MutexLock lock(mutex_);
    if (started_) transport = transport_;
  }
  try {
    if (!transport || !transport->IsConnected()) throw std::runtime_error("Connection not active!");
    const CallbackWait waiting = transport->BeginWait();
    Converse(call, *transport, requestId,
             std::chrono::milliseconds(call.IsAwaited() ? receiveTimeout_.load() : 0));
  } catch (const RpcRemoteException&) {
    throw;  // an answer like any other, logged as one
  } catch (const std::exception& error) {
    if (call.IsAwaited() && transport && transport->GetLogger().IsEnabled()) {
      transport->GetLogger().Write("Unexpected exception during rpc-call", error.what(), false);
    }
    throw;
  }
}

void RpcClient::Converse(RemoteCall& call, ClientTransport& transport, std::uint32_t requestId,
                         std::chrono::milliseconds timeout) {
  RpcLogger& logger = transport.GetLogger();
  if (logger.IsEnabled()) {
    logger.BeginLine("TX", call.GetMethod());
    call.LogArguments(logger);
    logger.EndLine();
  }
  OutputPacket request = OutputPacket::AllocateRequest(requestId);
  msgpack::packer(request).pack(call.GetMethod());
  call.PackArguments(request);

  InputPacket response = transport.Exchange(requestId, request.CloseInPieces(), timeout, request.GetOwner());
  if (IsError(response.GetType())) {
    const RpcRemoteException error = ClientTransport::getException(response.Unpack());
    if (logger.IsEnabled()) logger.BeginLine("RX", call.GetMethod()).Append(error.what()).EndLine();
    throw error;
  }
  call.TakeResult(response);
  if (logger.IsEnabled()) {
    logger.BeginLine("RX", call.GetMethod());
    call.LogResult(logger);
    logger.EndLine();
  }
}

}  // namespace VELTRO::KELVO::ClientLib
