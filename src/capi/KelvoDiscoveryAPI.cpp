#include "kelvo/KelvoDiscoveryAPI.h"

#include <cstring>
#include <vector>

#include "capi/CallersArray.h"
#include "capi/NewConnection.h"
#include "client/CardAddresses.h"
#include "kelvo/KelvoClientAPI.h"
#include "kelvo/KelvoSystemAPI.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

constexpr int DefaultSweeps = 2;
constexpr int DefaultPingTimeoutMs = 1000;
constexpr int DefaultMaxParallel = 50;

// Deliberate oddity: the last character is not written, the caller's zero stays.
template <std::size_t N>
void CopyField(const std::string& text, char (&field)[N]) {
  strncpy(field, text.c_str(), N - 1);
}
template <std::size_t N>
std::string ReadField(const char (&field)[N]) {
  return {field, strnlen(field, N - 1)};
}

void PutCard(const CardInfo& found, vlCardInfo& card) {
  CopyField(found.SerialNumber, card.SerialNumber);
  card.Port = found.Port;
  CopyField(found.Address.ToString(), card.IPAddress);
}

// Finds cards into the caller's array. Throws std::runtime_error `tooSmall` when it has not that much room, before
// anything is written.
template <class Find>
int32_t FindCards(vlCardInfo* cards, uint32_t capacity, uint32_t* count, const char* tooSmall, Find&& find) {
  return Guarded([&] {
    CallersArray array(cards, "cards", capacity, count);
    array.Fill(find(), tooSmall, &PutCard);
  });
}

// Through the exported functions, so that the connection is in the table and ends with the process.
std::string ReadSerialNumber(const IPAddress& address) {
  char text[20] = "";
  uint32_t length = 0;
  const int32_t handle = vlConnect(address.ToString().c_str(), CardInfo::DefaultPort);
  if (handle < 0) return {};
  const bool isRead = vlSystemGetCardSerialNumber(handle, text, sizeof text, &length) == 0;
  vlDisconnect(handle);
  return isRead ? text : "";
}

}  // namespace

int32_t vlDiscover(vlCardInfo* cards, uint32_t capacity, uint32_t* count) {
  return FindCards(cards, capacity, count, "Buffer is too small", [] { return ClientAPI::Discover(); });
}

int32_t vlDiscoverByPinging(int32_t first_serial, int32_t last_serial, vlCardInfo* cards, uint32_t capacity,
                            uint32_t* count) {
  return vlDiscoverByPingingCustomized(first_serial, last_serial, cards, capacity, count, DefaultSweeps,
                                       DefaultPingTimeoutMs, DefaultMaxParallel);
}

int32_t vlDiscoverByPingingCustomized(int32_t first_serial, int32_t last_serial, vlCardInfo* cards,
                                      uint32_t capacity, uint32_t* count, int32_t sweeps, int32_t timeout_ms,
                                      int32_t max_parallel) {
  return FindCards(cards, capacity, count, "CardInfo buffer too small.", [&] {
    return ClientAPI::DiscoverByPinging(first_serial, last_serial, sweeps, timeout_ms, max_parallel,
                                        &ReadSerialNumber);
  });
}

int32_t vlPredictIPAddressFromSerialNumber(const char* serial_number, int32_t installation, bool ipv6,
                                           char* buffer, uint32_t size) {
  return Guarded([&] {
    const std::string text =
        PredictIPAddress(NotNull(serial_number, "serial_number"), installation, ipv6).ToString();
    NotNull(buffer, "buffer");
    if (size < text.size()) throw std::runtime_error("IPAddress buffer too small.");
    strncpy(buffer, text.c_str(), size);  // deliberate oddity: an exact fit gets no terminating zero
  });
}

int32_t vlConnectByCardInfo(const vlCardInfo* card) {
  return Guarded([&] {
    NotNull(card, "card");
    CardInfo info(IPAddress::Parse(ReadField(card->IPAddress)), ReadField(card->SerialNumber));
    info.Port = card->Port;
    return NewConnection([&](ClientAPI& client, int handle) { client.Connect(info, handle); });
  });
}
