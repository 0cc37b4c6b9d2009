#include "client/ClientAPI.h"

#include <utility>

namespace VELTRO::KELVO::ClientLib {

void ClientAPI::Connect(const IPAddress& address, int port, int handle) {
  ClientAdapter::Connect(address, port, handle);
  try {
    SetClientLibVersion(ClientLibVersion);
    std::string firmwareVersion = GetFirmwareProductVersion();
    std::string serialNumber = GetCardSerialNumber();
    SetCardTexts(std::move(firmwareVersion), std::move(serialNumber));
  } catch (...) {
    Close();
    throw;
  }
}

}  // namespace VELTRO::KELVO::ClientLib
