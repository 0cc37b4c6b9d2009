#include "client/ClientAPI.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib {

std::string ClientAPI::Open(const IPAddress& address, int port, int handle) {
  ClientAdapter::Connect(address, port, handle);
  try {
    SetClientLibVersion(ClientLibVersion);
    std::string firmwareVersion = GetFirmwareProductVersion();
    std::string serialNumber = GetCardSerialNumber();
    SetCardTexts(std::move(firmwareVersion), serialNumber);
    return serialNumber;
  } catch (...) {
    Close();
    throw;
  }
}

void ClientAPI::Connect(const CardInfo& card, int handle) {
  if (card.Address.IsEmpty() || !ConnectToRecord(card, handle)) RediscoverAndConnect(card, handle);
}

bool ClientAPI::ConnectToRecord(const CardInfo& card, int handle) {
  if (card.Port < 1 || card.Port > 0xFFFF) return false;
  try {
    if (Open(card.Address, card.Port, handle) == card.SerialNumber) return true;
    Close();
  } catch (const RpcRemoteException&) {
    throw;
  } catch (const std::exception&) {  // it is not there, or something else is
    return false;
  }
  return false;
}

void ClientAPI::RediscoverAndConnect(const CardInfo& card, int handle) {
  const std::vector<CardInfo> cards = Discover();
  // Sorted, so of several places the first is the IPv4 one.
  const auto found = std::ranges::find_if(cards, [&](const CardInfo& other) {
    return other.SerialNumber == card.SerialNumber && !other.Address.IsEmpty();
  });
  if (found == cards.end()) throw std::runtime_error("Could not re-discover card " + card.SerialNumber);
  Connect(found->Address, found->Port, handle);
}

}  // namespace VELTRO::KELVO::ClientLib
