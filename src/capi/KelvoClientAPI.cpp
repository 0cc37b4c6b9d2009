#include "kelvo/KelvoClientAPI.h"

#include <cstring>

#include "capi/NewConnection.h"
#include "capi/TextBuffer.h"

using namespace VELTRO::KELVO::ClientLib;

static_assert(KELVO_DEFAULT_PORT == ClientAPI::DefaultPort);

namespace {

// What takes the place of an error that does not fit.
constexpr std::string_view BufferTooSmall = "Error buffer too small";

}  // namespace

int32_t vlConnect(const char* host, int32_t port) {
  return Guarded([&] {
    const IPAddress address = IPAddress::Resolve(NotNull(host, "host"));
    if (port < 1 || port > 0xFFFF) throw std::runtime_error("Port must be between 1 and 65535.");
    return NewConnection([&](ClientAPI& client, int handle) { client.Connect(address, port, handle); });
  });
}

int32_t vlDisconnect(int32_t handle) {
  return Guarded([&] {
    APIContext& context = APIContext::getInstance();
    const auto connection = context.ShareOwn(handle);
    connection->Client.End();
    context.Remove(handle);
  });
}

int32_t vlIsConnected(int32_t handle, bool* connected) {
  return Guarded([&] {
    // Deliberately lenient: a handle that is none is a connection that is down.
    const auto connection = APIContext::getInstance().Find(handle);
    *NotNull(connected, "connected") = connection && connection->Client.IsConnected();
  });
}

int32_t vlGetTimeout(int32_t handle, uint32_t* timeout_ms) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    *NotNull(timeout_ms, "timeout_ms") = connection.Client.GetTimeout();
  });
}

int32_t vlSetTimeout(int32_t handle, uint32_t timeout_ms) {
  return OnConnection(handle,
                      [&](ConnectionContext& connection) { connection.Client.SetTimeout(timeout_ms); });
}

int32_t vlEnableCommandLogging(int32_t handle, const char* path, int32_t max_value_length) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    connection.Client.EnableCommandLogging(NotNull(path, "path"), max_value_length);
  });
}

int32_t vlDisableCommandLogging(int32_t handle) {
  return OnConnection(handle,
                      [](ConnectionContext& connection) { connection.Client.DisableCommandLogging(); });
}

int32_t vlEnableRecording(int32_t handle, const char* path) {
  return OnOwnConnection(handle, [&](ConnectionContext& connection) {
    connection.Client.EnableRecording(NotNull(path, "path"));
  });
}

int32_t vlDisableRecording(int32_t handle) {
  return OnOwnConnection(handle, [](ConnectionContext& connection) { connection.Client.DisableRecording(); });
}

int32_t vlCallJson(int32_t handle, const char* method, const char* arguments, char* buffer, uint32_t size,
                   uint32_t* length) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(method, "method"), NotNull(arguments, "arguments");
    TellText(buffer, size, length, [&] { return connection.Client.CallJson(method, arguments); });
  });
}

int32_t vlGetLastErrorLen(void) {
  return static_cast<int32_t>(KelvoErrorHandler::getThreadLocalInstance().Get().size()) + 2;
}

void vlGetLastError(char* buffer, int32_t size) {
  if (buffer == nullptr || size <= 0) return;
  KelvoErrorHandler& error = KelvoErrorHandler::getThreadLocalInstance();
  const auto room = static_cast<std::size_t>(size);
  std::string_view text = error.Get();
  if (room < text.size() + 1) text = room > BufferTooSmall.size() ? BufferTooSmall : std::string_view();
  if (!text.empty()) std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  error.Clear();
}
