#include "client/ClientAdapter.h"

#include <stdexcept>
#include <utility>

#include "rpc/RpcClient.h"
#include "session/SessionWriter.h"

namespace VELTRO::KELVO::ClientLib {

// The frames of one connection.
class Recorder : public FrameTap {
 public:
  Recorder(const std::string& path, const Recording::SessionHead& head) : writer_(path, head) {}

  void Take(FrameWay way, const FramePieces& frame,
            const std::shared_ptr<const void>& owner) noexcept override {
    writer_.TakeFrame(1, way, frame, owner);
  }
  void TakeEnd(FrameWay way) noexcept override { writer_.TakeOther(1, way, Recording::LineKind::Ended); }
  void Finish() { writer_.Finish(); }

 private:
  Recording::SessionWriter writer_;
};

ClientAdapter::ClientAdapter() = default;

ClientAdapter::~ClientAdapter() {
  Close();
}

std::shared_ptr<RpcClient> ClientAdapter::GetClient() const {
  const MutexLock lock(mutex_);
  return client_;
}

void ClientAdapter::Connect(const IPAddress& address, int port, unsigned int timeout, int handle) {
  const std::string place = address.ToString() + "/" + std::to_string(port);
  RpcClientConfiguration configuration;
  configuration.Address = address;
  configuration.Port = port;
  configuration.ReceiveTimeout = std::chrono::milliseconds(timeout);
  configuration.NotificationCallback = [this](const RpcClientEvent& event) { NotificationEvent(event); };
  const std::uint64_t link = ++lastLink_;
  configuration.DisconnectedCallback = [this, link] { listEvents_.ConnectionLost(link); };
  const auto client = std::make_shared<RpcClient>(configuration);
  std::shared_ptr<RpcClient> earlier;
  {
    // Published before it starts, so that a disconnect from elsewhere ends a connect that is under way.
    const MutexLock lock(mutex_);
    if (ended_) throw std::runtime_error("ConnectionAborted");
    if (client_ && client_->IsConnected()) {
      throw std::runtime_error("Cannot connect to " + place + ": Already connected.");
    }
    earlier = std::exchange(client_, client);
  }
  if (earlier) earlier->End();
  timeout_ = timeout;
  // Before the first notification can arrive.
  handle_ = handle;
  listEvents_.Connected(handle, link);
  try {
    client->Start();
  } catch (const std::exception&) {
    listEvents_.ConnectionLost(link);
    throw std::runtime_error("Error: Cannot open connection to " + place + ".");
  }
}

void ClientAdapter::Disconnect() {
  if (ReceiveThread::Current() != nullptr) throw std::runtime_error("A callback must not disconnect.");
  Close();
}

void ClientAdapter::End() {
  if (ReceiveThread::Current() == nullptr) {
    const MutexLock lock(mutex_);
    ended_ = true;
  }
  Disconnect();
}

void ClientAdapter::Close() {
  const auto client = GetClient();
  if (!client) return;
  client->End();
  EndRecording();
  const MutexLock lock(mutex_);
  if (client_ != client) return;  // connected anew meanwhile
  client_.reset();
  firmwareVersion_.clear();
  serialNumber_.clear();
}

bool ClientAdapter::Abandon() {
  const auto client = GetClient();
  listEvents_.Abandon();
  EndRecording();
  return !client || client->Abandon();
}

bool ClientAdapter::IsConnected() const {
  const auto client = GetClient();
  return client && client->IsConnected();
}

void ClientAdapter::SetTimeout(unsigned int milliseconds) {
  timeout_ = milliseconds;
  if (const auto client = GetClient()) client->SetReceiveTimeout(std::chrono::milliseconds(milliseconds));
}

void ClientAdapter::EnableCommandLogging(std::string path, int valueLimit) {
  const auto client = GetClient();
  if (!client) throw std::runtime_error("Connection must be enabled to start logging!");
  client->EnableLogging(std::move(path), false, true, valueLimit);
  logging_ = true;
  std::string versions;
  {
    const MutexLock lock(mutex_);
    versions.append("Client Version=").append(ClientLibVersion);
    versions.append(" Firmware Version=").append(firmwareVersion_);
    versions.append(", Card Serial Number=").append(serialNumber_);
  }
  client->Log(versions.c_str());
}

void ClientAdapter::DisableCommandLogging() {
  logging_ = false;
  if (const auto client = GetClient()) client->DisableLogging();
}

void ClientAdapter::EnableRecording(const std::string& path) {
  const MutexLock lock(recordingMutex_);
  FinishRecording();
  const auto client = GetClient();
  if (!client || !client->IsConnected()) {
    throw std::runtime_error("Connection must be enabled to start recording!");
  }
  Recording::SessionHead head;
  head.By.append("library ").append(ClientLibVersion);
  {
    const MutexLock textLock(mutex_);
    head.Firmware = firmwareVersion_;
    head.SerialNumber = serialNumber_;
  }
  recorder_ = std::make_shared<Recorder>(path, head);
  client->SetTap(recorder_);
}

void ClientAdapter::DisableRecording() {
  const MutexLock lock(recordingMutex_);
  FinishRecording();
}

void ClientAdapter::EndRecording() noexcept {
  try {
    DisableRecording();
  } catch (const std::exception&) {
    static_cast<void>(0);  // who wants to know of it disables the recording
  }
}

void ClientAdapter::FinishRecording() {
  if (!recorder_) return;
  if (const auto client = GetClient()) client->SetTap(nullptr);
  const auto recorder = std::exchange(recorder_, nullptr);
  recorder->Finish();
}

void ClientAdapter::Log(const char* text) {
  if (const auto client = GetClient()) client->Log(text);
}

bool ClientAdapter::IsDataPending() const {
  const auto client = GetClient();
  return client && client->IsDataPending();
}

CallbackWait ClientAdapter::BeginWait() const {
  const auto client = GetClient();
  if (!client) return {};
  return client->BeginWait();
}

void ClientAdapter::Perform(RemoteCall& call) {
  const auto client = GetClient();
  if (!client) throw std::runtime_error("Connection not active!");
  RpcCaller& caller = *client;
  Forward(caller, call);
}

void ClientAdapter::SetCardTexts(std::string firmwareVersion, std::string serialNumber) {
  const MutexLock lock(mutex_);
  firmwareVersion_ = std::move(firmwareVersion);
  serialNumber_ = std::move(serialNumber);
}

void ClientAdapter::NotificationEvent(const RpcClientEvent& event) {
  const RpcEventType type = RpcEventType::_from_integral(event.EventType);
  if (type != RpcEventType::ListDone && type != RpcEventType::Progress && type != RpcEventType::ListIdle &&
      !event.RemoteError) {
    throw std::runtime_error(
        "Invalid notification response. It contains neither result nor error nor progress.");
  }
  try {
    HandleEvent(type, event);
  } catch (const std::exception&) {
    throw std::runtime_error("Could not process event!");
  }
}

void ClientAdapter::HandleEvent(RpcEventType type, const RpcClientEvent& event) {
  switch (type) {
    case RpcEventType::ListDone:
      HandleListEvent(ListEventKind::ListDone, event, type);
      return;
    case RpcEventType::Progress:
      HandleListEvent(ListEventKind::Progress, event, type);
      return;
    case RpcEventType::ListIdle:
      HandleListEvent(ListEventKind::ListIdle, event, type);
      return;
    default:
      break;
  }
  const RpcErrorEventArgs error{event.EventType, event.RemoteError->what()};
  if (logging_.load(std::memory_order_relaxed)) LogEvent(error.Message);
  listEvents_.OnErrorReceived(error);
}

void ClientAdapter::LogEvent(const std::string& text) {
  if (const auto client = GetClient()) client->AppendLogMessage("RX", text, false);
}

void ClientAdapter::HandleListEvent(ListEventKind kind, const RpcClientEvent& event, RpcEventType type) {
  if (event.Arguments.empty()) throw std::runtime_error("The event carries no value.");
  const auto value = event.Arguments.front().as<std::int32_t>();
  listEvents_.AppendEvent(kind, value);
  if (logging_.load(std::memory_order_relaxed)) LogEvent(type._to_string() + " " + std::to_string(value));
  listEvents_.OnReceived(kind, value);
}

}  // namespace VELTRO::KELVO::ClientLib
