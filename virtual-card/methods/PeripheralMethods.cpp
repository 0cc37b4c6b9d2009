#include <chrono>

#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

using SerialBytes = Simulation::SerialPorts::Bytes;

Later<SerialBytes> Received(Card& card, std::int32_t port, std::uint32_t most, std::uint32_t timeout) {
  card.Serial.Read(port, 0);  // throws when there is none
  return {std::chrono::milliseconds(timeout), [=, &ports = card.Serial](bool isOver) {
            SerialBytes bytes;
            try {
              bytes = ports.Read(port, most);
            } catch (const std::runtime_error&) {  // it has gone with the configuration
              isOver = true;
            }
            return isOver || !bytes.empty() ? std::optional(std::move(bytes)) : std::nullopt;
          }};
}

}  // namespace

std::span<const Method> PeripheralMethods() {
  static constexpr Method Rows[] = {
      {"WriteSerialPort",
       [](Card& card, std::int32_t port, const SerialBytes& bytes) { card.Serial.Write(port, bytes); }},
      {"ReadSerialPort", [](Card& card, std::int32_t port, std::uint32_t most,
                            std::uint32_t timeout) { return Received(card, port, most, timeout); }},
      {"FlushSerialPort", [](Card& card, std::int32_t port) { card.Serial.Flush(port); }},
      {"TransferSpi", [](Card& card, std::int32_t module,
                         SerialBytes bytes) { return card.Modules.Transfer(module, std::move(bytes)); }},
      {"ReadSfRegister", [](Card& card, std::int32_t which) { return card.Modules.ReadRegister(which); }},
      {"WriteSfRegister",
       [](Card& card, std::int32_t which, std::uint32_t value) { card.Modules.WriteRegister(which, value); }},
      {"GetAdapterBoardIdentity",
       [](Card& card) {
         return ClientLib::AdapterBoardIdentity{"Virtual adapter board", card.Identity.SerialNumber + "-A",
                                                "1"};
       }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
