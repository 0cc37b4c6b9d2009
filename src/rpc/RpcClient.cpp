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
  if (!up || transport_ != transport) {
    throw std::runtime_error("Unable to connect to " + configuration_.Address.ToString() + ":" +
                             std::to_string(configuration_.Port) + ".");
  }
  started_ = true;
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

void RpcClient::CheckMayWait() const {
  const auto transport = GetTransport();
  if (transport && transport->IsReceiveThread()) {
    throw std::runtime_error("A callback must not wait for its own connection.");
  }
}

void RpcClient::EnableLogging(std::string path, bool timestampInName, bool replace, int valueLimit) {
  const auto transport = GetTransport();
  if (!transport || !IsConnected()) throw std::runtime_error("Connection must be enabled to start logging!");
  struct stat status {};
  if (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
    path.append("/").append(RpcClientConfiguration::LogFileName);
  }
  transport->GetLogger().Disable();
  transport->GetLogger().Enable(path, timestampInName, replace, valueLimit);
}

void RpcClient::DisableLogging() {
  if (const auto transport = GetTransport()) transport->GetLogger().Disable();
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

bool RpcClient::IsDataPending() {
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
    if (transport->IsReceiveThread()) {
      throw std::runtime_error("A callback must not wait for its own connection.");
    }
    Converse(call, *transport, requestId,
             std::chrono::milliseconds(call.IsAwaited() ? receiveTimeout_.load() : 0));
  } catch (const RpcRemoteException&) {
    throw;  // an answer like any other, logged as one
  } catch (const std::exception& error) {
    if (call.IsAwaited() && transport && transport->GetLogger().IsEnabled()) {
      transport->GetLogger().Write(
          (std::string("Unexpected exception during rpc-call: ") + error.what()).c_str());
    }
    throw;
  }
}

void RpcClient::Converse(RemoteCall& call, ClientTransport& transport, std::uint32_t requestId,
                         std::chrono::milliseconds timeout) {
  RpcLogger& logger = transport.GetLogger();
  if (logger.IsEnabled()) {
    auto line = logger.BeginLine("TX", call.GetMethod());
    call.LogArguments(line);
    line.EndLine();
  }
  OutputPacket request = OutputPacket::AllocateRequest(requestId);
  msgpack::packer(request).pack(call.GetMethod());
  call.PackArguments(request);

  InputPacket response = transport.Exchange(requestId, request.CloseInPieces(), timeout);
  msgpack::object_handle object = response.Unpack();
  if (IsError(response.GetType())) {
    const RpcRemoteException error = ClientTransport::getException(object);
    if (logger.IsEnabled()) logger.BeginLine("RX", call.GetMethod()).Append(error.what()).EndLine();
    throw error;
  }
  call.TakeResult(response, std::move(object));
  if (logger.IsEnabled()) {
    auto line = logger.BeginLine("RX", call.GetMethod());
    call.LogResult(line);
    line.EndLine();
  }
}

}  // namespace VELTRO::KELVO::ClientLib
