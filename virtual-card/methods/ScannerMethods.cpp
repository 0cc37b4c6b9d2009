#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

using Bytes = std::vector<std::uint8_t>;
using Words = CardScanner::Words;

}  // namespace

std::span<const Method> ScannerMethods() {
  static constexpr Method Rows[] = {
      {"GetNominalPosition", [](Card& card) { return card.Scanner.GetNominalPosition(); }},
      {"ReadPositions", [](Card& card) { return card.Scanner.ReadPositions(); }},
      {"ReadLastPositions", [](Card& card) { return card.Scanner.ReadLastPositions(); }},
      {"GetHeadBias", [](Card& card, std::int32_t head) { return card.Scanner.GetHeadBias(head); }},
      {"SetHeadBias",
       [](Card& card, std::int32_t head, std::int32_t axes, const std::vector<double>& values) {
         card.Scanner.SetHeadBias(head, axes, values);
       }},
      // The last argument of each of these is a time-out, which the virtual heads never need.
      {"TransmitVeltroMessage", [](Card& card, std::int32_t head, std::int32_t axis, const Bytes&,
                                   std::uint32_t) { card.Scanner.CheckAxis(head, axis); }},
      {"TransceiveVeltroMessage",
       [](Card& card, std::int32_t head, std::int32_t axis, Bytes message, std::uint32_t) {
         card.Scanner.CheckAxis(head, axis);
         return message;
       }},
      {"TransmitEnhancedCommand",
       [](Card& card, std::int32_t head, std::int32_t axes, Words commands, std::uint32_t) {
         card.Scanner.Transmit(head, axes, std::move(commands));
       }},
      {"ReceiveEnhancedCommand", [](Card& card, std::int32_t head, std::int32_t axes,
                                    std::uint32_t) { return card.Scanner.Receive(head, axes); }},
      {"TransceiveEnhancedCommand",
       [](Card& card, std::int32_t head, std::int32_t axes, Words commands, std::uint32_t) {
         card.Scanner.Transmit(head, axes, std::move(commands));
         return card.Scanner.Receive(head, axes);
       }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
