#include "card/TimeZones.h"
#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

// With the bits above the ticks that say its kind, which DateTime never sends.
struct TimeOfAKind {
  static constexpr std::string_view WireName = ClientLib::DateTime::WireName;

  std::uint64_t Value;

  void msgpack_pack(auto& packer) const { packer.pack(Value); }
};

}  // namespace

std::span<const Method> CardMethods() {
  static constexpr Method Rows[] = {
      // A card speaks to clients of every version.
      {"SetClientLibVersion", [](Card&, const std::string&) {}},
      {"GetFirmwareProductVersion", [](Card& card) { return card.Identity.FirmwareVersion; }},
      {"GetCardSerialNumber", [](Card& card) { return card.Identity.SerialNumber; }},
      {"GetFirmwareVersion", [](Card& card) { return card.Identity.FirmwareVersion; }},
      {"GetFpgaVersion", [](Card&) { return std::string("Virtual FPGA 1.0"); }},
      {"GetOSVersion", [](Card&) { return std::string("Virtual OS 1.0"); }},
      {"GetConnectionLimit", [](Card& card) { return card.Identity.ConnectionLimit; }},
      {"GetOperatingState", [](Card& card) { return card.System.GetOperatingState(); }},
      {"ResetOperatingState", [](Card& card) { card.System.ResetOperatingState(); }},
      {"ResetToDefaults", [](Card& card) { card.Configuration.Reset(); }},
      {"GetTime", [](Card& card) { return TimeOfAKind{card.System.GetTime()}; }},
      {"GetUniversalTime", [](Card& card) { return TimeOfAKind{card.System.GetUniversalTime()}; }},
      {"SetSystemTime", [](Card& card, const ClientLib::DateTime& time) { card.System.SetTime(time); }},
      {"GetSupportedTimeZones", [](Card&) { return SupportedTimeZones(); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
