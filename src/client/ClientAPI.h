// What a connection handle names: a ClientAdapter that makes itself known to the card after connecting.
#pragma once

#include <string>
#include <vector>

#include "client/CardInfo.h"
#include "client/ClientAdapter.h"
#include "client/ClientPing.h"
#include "client/ClientUPnP.h"
#include "lists/Command.h"

namespace VELTRO::KELVO::ClientLib {

class ClientAPI : public ClientAdapter {
 public:
  static constexpr int DefaultPort = CardInfo::DefaultPort;
  static constexpr std::size_t MaxPacketSize = ClientLib::MaxPacketSize;

  // Connects, tells the card the library's version and reads its firmware version and serial number. If any
  // of that fails, disconnects and passes the failure on.
  void Connect(const IPAddress& address, int port, int handle) { Open(address, port, handle); }
  // Connects to the card of that serial number, wherever it is by now: if it is not found at the record's address and
  // port, or the address is all-zero, it is looked for. Throws what the card reports when it refuses, or as
  // RediscoverAndConnect.
  void Connect(const CardInfo& card, int handle);
  // Looks for the card on all networks and connects to where it is found, by IPv4 if it can be. Its serial number is not
  // compared again. Throws what ClientUPnP::Discover and Connect throw, or std::runtime_error "Could not re-discover
  // card SERIAL".
  void RediscoverAndConnect(const CardInfo& card, int handle);

  static std::vector<CardInfo> Discover() { return ClientUPnP::Discover(); }
  static std::vector<CardInfo> DiscoverByPinging(int firstSerial, int lastSerial, int sweeps, int timeoutMs,
                                                 int maxParallel,
                                                 const ClientPing::SerialReader& readSerial) {
    return ClientPing::Discover(firstSerial, lastSerial, sweeps, timeoutMs, maxParallel, readSerial);
  }

  void SetClientLibVersion(const std::string& version) { Call("SetClientLibVersion", version); }
  std::string GetFirmwareProductVersion() { return Call<std::string>("GetFirmwareProductVersion"); }
  std::string GetCardSerialNumber() { return Call<std::string>("GetCardSerialNumber"); }

 private:
  // Connects and returns the card's serial number.
  std::string Open(const IPAddress& address, int port, int handle);
  // Whether the card is where its record says, and connected then. Throws what the card reports when it refuses.
  bool ConnectToRecord(const CardInfo& card, int handle);
};

}  // namespace VELTRO::KELVO::ClientLib
