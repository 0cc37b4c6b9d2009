#include "web/Actions.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <type_traits>

#include "lists/VariableId.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

using Json = nlohmann::json;

// The member of an action; numbers must be whole and fit.
template <class T>
T Value(const Json& action, const char* name) {
  const auto found = action.find(name);
  if (found != action.end()) {
    if constexpr (std::is_same_v<T, bool>) {
      if (found->is_boolean()) return found->get<bool>();
    } else if constexpr (std::is_same_v<T, std::string>) {
      if (found->is_string()) return found->get<std::string>();
    } else if (found->is_number_integer()) {
      const auto number = found->get<double>();  // in which all that fits is exact
      using Range = std::numeric_limits<T>;
      if (number >= Range::min() && number <= Range::max()) return static_cast<T>(number);
    }
  }
  throw std::runtime_error(std::string("'") + name + "' is missing or not of its kind.");
}

void SetPin(Card& card, const Json& action) {
  const Simulation::Pin pin{Value<std::int32_t>(action, "port"), Value<std::int32_t>(action, "pin")};
  constexpr std::int32_t PinCount = 32;
  const auto ports = card.Ports.Look();
  if (pin.Port < 0 || pin.Port >= static_cast<std::int32_t>(ports.size()) || pin.Number < 0 ||
      pin.Number >= PinCount) {
    throw std::runtime_error("There is no such pin.");
  }
  const auto& port = ports[static_cast<std::size_t>(pin.Port)];
  if (port.IsOutput) throw std::runtime_error("The pin is an output.");
  if ((port.Wired >> pin.Number & 1) != 0) throw std::runtime_error("A wire drives the pin.");
  card.Ports.SetLevel(pin, Value<bool>(action, "high"));
}

void SetSignal(Card& card, const Json& action) {
  const bool isSet = Value<bool>(action, "set");
  const std::uint32_t id =
      action.contains("id")
          ? Value<std::uint32_t>(action, "id")
          : static_cast<std::uint32_t>(ClientLib::VariableId(Value<std::string>(action, "name")));
  card.Variables.SetSignal(id, isSet);
}

void SetVariable(Card& card, const Json& action) {
  const auto id = Value<std::uint32_t>(action, "id");
  const auto kind = Value<std::string>(action, "kind");
  if (kind == "Boolean") {
    card.Variables.SetBoolean(id, Value<std::int32_t>(action, "value") != 0);
  } else {
    card.Variables.SetInteger(id, Value<std::int32_t>(action, "value"));
  }
}

struct Action {
  std::string_view Name;
  void (*Do)(Card& card, const Json& action);
};

constexpr Action Actions[] = {
    {"start", [](Card& card, const Json&) { card.Inputs.Start(); }},
    {"resume", [](Card& card, const Json&) { card.Inputs.Resume(); }},
    {"pin", SetPin},
    {"signal", SetSignal},
    {"variable", SetVariable},
    {"fault",
     [](Card& card, const Json& action) { card.FaultsOnRequest.Set(Value<std::string>(action, "text")); }},
};

}  // namespace

void Act(Card& card, std::string_view text) {
  const Json action = Json::parse(text, nullptr, false);
  if (!action.is_object()) throw std::runtime_error("It takes an object of JSON.");
  const auto name = Value<std::string>(action, "do");
  const auto* const found = std::ranges::find(Actions, name, &Action::Name);
  if (found == std::end(Actions)) throw std::runtime_error("There is no such action.");
  found->Do(card, action);
}

}  // namespace VELTRO::KELVO::VirtualCard
