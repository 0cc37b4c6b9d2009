// What a connection handle names: a ClientAdapter that makes itself known to the card after connecting.
#pragma once

#include <string>

#include "client/ClientAdapter.h"
#include "lists/Command.h"

namespace VELTRO::KELVO::ClientLib {

class ClientAPI : public ClientAdapter {
 public:
  static constexpr int DefaultPort = 49374;
  static constexpr std::size_t MaxPacketSize = ClientLib::MaxPacketSize;

  // Connects, tells the card the library's version and reads its firmware version and serial number. If any
  // of that fails, disconnects and passes the failure on.
  void Connect(const IPAddress& address, int port, int handle);

  void SetClientLibVersion(const std::string& version) { Call("SetClientLibVersion", version); }
  std::string GetFirmwareProductVersion() { return Call<std::string>("GetFirmwareProductVersion"); }
  std::string GetCardSerialNumber() { return Call<std::string>("GetCardSerialNumber"); }
};

}  // namespace VELTRO::KELVO::ClientLib
