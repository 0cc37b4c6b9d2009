#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

std::span<const Method> CardMethods() {
  static constexpr Method Rows[] = {
      // A card speaks to clients of every version.
      {"SetClientLibVersion", [](Card&, const std::string&) {}},
      {"GetFirmwareProductVersion", [](Card& card) { return card.Identity.FirmwareVersion; }},
      {"GetCardSerialNumber", [](Card& card) { return card.Identity.SerialNumber; }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
