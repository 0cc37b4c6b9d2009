#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MarkCounter;

std::span<const Method> VariableMethods() {
  static constexpr Method Rows[] = {
      {"SetBooleanVariable",
       [](Card& card, const std::string& name, bool value) { card.Variables.SetBoolean(name, value); }},
      {"GetBooleanVariable",
       [](Card& card, const std::string& name) { return card.Variables.GetBoolean(name); }},
      {"SetIntegerVariable", [](Card& card, const std::string& name,
                                std::int32_t value) { card.Variables.SetInteger(name, value); }},
      {"GetIntegerVariable",
       [](Card& card, const std::string& name) { return card.Variables.GetInteger(name); }},
      {"SetMarkCounter", [](Card& card, const std::string& name,
                            MarkCounter counter) { card.Variables.SetCounter(name, counter); }},
      {"GetMarkCounter", [](Card& card, const std::string& name) { return card.Variables.GetCounter(name); }},
      {"ResetMarkCounter", [](Card& card, const std::string& name) { card.Variables.ResetCounter(name); }},
      {"SetMarkTimeFormat", [](Card& card, std::string format) { card.TimeFormat.Set(std::move(format)); }},
      {"GetMarkTimeFormat", [](Card& card) { return card.TimeFormat.Get(); }},
      {"GetCardVariables", [](Card& card) { return card.Variables.GetAll(); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
