#include "base/Log.h"
#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

std::span<const Method> DiagnosticMethods() {
  static constexpr Method Rows[] = {
      {"GetMeasurements", [](Card& card) { return card.Diagnostics.Measure(); }},
      {"GetCardLog", [](Card&) { return RecentLog(); }},
      {"RunSelfTest", [](Card& card) { return card.Diagnostics.RunSelfTest(); }},
      {"IsMethodSupported", [](Card&, const std::string& name) { return HasMethod(name); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
