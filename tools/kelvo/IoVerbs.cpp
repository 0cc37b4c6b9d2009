// io, variable, serial: pins, variables of lists, serial ports.
#include <kelvo/kelvo.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "Interrupt.h"
#include "Session.h"
#include "SoundsLike.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::int32_t PinLookMs = 100;

std::unique_ptr<vlGpioConfig> Ports(Session& session) {
  auto config = std::make_unique<vlGpioConfig>();
  session.Check(vlGpioGetConfig(session.Card(), config.get()));
  return config;
}

struct Pin {
  std::int32_t Port, Number;
};

// "1.3", or a pin's name. Throws Failure, WrongUsage.
Pin ParsePin(Session& session, const std::string& text) {
  const std::size_t dot = text.find('.');
  if (dot != std::string::npos && text.find_first_not_of("0123456789.") == std::string::npos) {
    return {static_cast<std::int32_t>(
                ParseWhole("The port", text.substr(0, dot), 0, KELVO_GPIO_PORT_CAPACITY - 1)),
            static_cast<std::int32_t>(
                ParseWhole("The pin", text.substr(dot + 1), 0, KELVO_GPIO_PIN_CAPACITY - 1))};
  }
  Pin pin{};
  const auto config = Ports(session);
  if (vlGpioConfigFindPin(config.get(), text.c_str(), &pin.Port, &pin.Number) == 0) return pin;
  std::vector<std::string> names;
  for (std::uint32_t i = 0; i < config->Ports.Count; ++i) {
    const auto& [count, items] = config->Ports.Items[i].PinNames;
    for (std::uint32_t k = 0; k < count; ++k) names.emplace_back(items[k]);
  }
  throw WrongUsage(LastError(), DidYouMean(text, names));
}

ExitCode ShowPorts(Session& session, const Arguments&) {
  const auto config = Ports(session);
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows;
  for (std::uint32_t i = 0; i < config->Ports.Count; ++i) {
    const vlGpioPort& port = config->Ports.Items[i];
    std::uint32_t pins = 0;
    session.Check(vlGpioReadPort(session.Card(), static_cast<std::int32_t>(i), &pins));
    const std::string direction = port.Direction == vlIODirection_Output ? "output" : "input";
    char bits[16];
    std::snprintf(bits, sizeof bits, "0x%08x", pins);
    Json active = Json::array();
    std::string names;
    for (std::uint32_t k = 0; k < KELVO_GPIO_PIN_CAPACITY; ++k) {
      const std::string name = k < port.PinNames.Count ? port.PinNames.Items[k] : "";
      if (!name.empty())
        names += (names.empty() ? "" : ", ") + Clean(name) + "=" + ((pins >> k & 1) != 0 ? "1" : "0");
    }
    list.push_back({{"port", i}, {"name", port.PortName}, {"direction", direction}, {"pins", pins}});
    rows.push_back({std::to_string(i), direction, bits, Clean(port.PortName), names});
  }
  session.Out.AsJson ? session.Out.Print(list)
                     : session.Out.Table({"PORT", "DIRECTION", "PINS", "NAME", "NAMED PINS"}, rows);
  return ExitCode::Done;
}

ExitCode GetPin(Session& session, const Arguments& given) {
  Json values = Json::object();
  for (const std::string& text : given.All("PIN")) {
    const auto [port, number] = ParsePin(session, text);
    bool isActive = false;
    session.Check(vlGpioReadPin(session.Card(), port, number, &isActive));
    values[text] = isActive;
    if (!session.Out.AsJson)
      session.Out.Line(given.All("PIN").size() == 1 ? (isActive ? "1" : "0")
                                                    : Clean(text) + (isActive ? " 1" : " 0"));
  }
  if (session.Out.AsJson) session.Out.Print(values);
  return ExitCode::Done;
}

ExitCode SetPin(Session& session, const Arguments& given) {
  struct Change {
    Pin Where;
    bool IsActive;
  };
  std::vector<Change> changes;
  for (const std::string& text : given.All("PIN=VALUE")) {
    const std::size_t equals = text.find('=');
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    if (value != "0" && value != "1") throw WrongUsage("'" + Clean(text) + "' is no PIN=0 or PIN=1.");
    changes.push_back({ParsePin(session, text.substr(0, equals)), value == "1"});
  }
  for (const auto& [pin, isActive] : changes)
    session.Check(vlGpioWritePin(session.Card(), pin.Port, pin.Number, isActive));
  return ExitCode::Done;
}

ExitCode WatchPort(Session& session, const Arguments& given) {
  const auto port = static_cast<std::int32_t>(given.Whole("PORT", 0, KELVO_GPIO_PORT_CAPACITY - 1));
  const Interrupt interrupt;
  std::uint32_t pins = 0, now = 0;
  session.Check(vlGpioReadPort(session.Card(), port, &pins));
  const auto tell = [&] {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", pins);
    if (session.Out.AsJson) return session.Out.PrintNow({{"port", port}, {"pins", pins}});
    session.Out.Line(text);
    std::fflush(stdout);
  };
  tell();
  while (!interrupt.Came()) {
    if (session.Check(vlGpioWaitForChange(session.Card(), port, 0xFFFFFFFF, pins, PinLookMs, &now)) == 0) {
      pins = now;
      tell();
    }
  }
  return ExitCode::Done;
}

constexpr const char* KindNames[] = {"boolean", "integer", "counter"};

ExitCode ShowVariables(Session& session, const Arguments&) {
  std::uint32_t count = 0;
  std::vector<vlCardVariable> all;
  // More may come between the two calls.
  while (vlVariableGetAll(session.Card(), all.data(), static_cast<std::uint32_t>(all.size()), &count) < 0) {
    if (count <= all.size()) session.Check(-1);
    all.resize(count);
  }
  all.resize(count);
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows;
  for (const vlCardVariable& one : all) {
    const char* const kind = one.Kind >= 0 && one.Kind < 3 ? KindNames[one.Kind] : "?";
    char id[16];
    std::snprintf(id, sizeof id, "0x%08x", one.Id);
    list.push_back({{"id", one.Id}, {"kind", kind}, {"value", one.Value}, {"name", one.VariableName}});
    rows.push_back({kind, id, std::to_string(one.Value), Clean(one.VariableName)});
  }
  session.Out.AsJson ? session.Out.Print(list) : session.Out.Table({"KIND", "ID", "VALUE", "NAME"}, rows);
  return ExitCode::Done;
}

ExitCode GetVariable(Session& session, const Arguments& given) {
  const std::string& name = given.Text("NAME");
  Json value;
  if (given.Has("--boolean")) {
    bool flag = false;
    session.Check(vlVariableGetBoolean(session.Card(), name.c_str(), &flag));
    value = flag;
  } else {
    std::int32_t number = 0;
    session.Check(vlVariableGetInteger(session.Card(), name.c_str(), &number));
    value = number;
  }
  session.Out.Line(value.dump());
  return ExitCode::Done;
}

ExitCode SetVariable(Session& session, const Arguments& given) {
  const std::string& text = given.Text("NAME=VALUE");
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos) throw WrongUsage("'" + Clean(text) + "' is no NAME=VALUE.");
  const std::string name = text.substr(0, equals), value = text.substr(equals + 1);
  if (value == "true" || value == "false") {
    session.Check(vlVariableSetBoolean(session.Card(), name.c_str(), value == "true"));
  } else {
    const std::int64_t number = ParseWhole("A variable", value, INT32_MIN, INT32_MAX);
    session.Check(vlVariableSetInteger(session.Card(), name.c_str(), static_cast<std::int32_t>(number)));
  }
  return ExitCode::Done;
}

std::int32_t SerialPort(const Arguments& given) {
  return given.Has("--port")
             ? static_cast<std::int32_t>(given.Whole("--port", 0, KELVO_SERIAL_PORT_CAPACITY - 1))
             : 0;
}

ExitCode SendText(Session& session, const Arguments& given) {
  const std::string text = given.Text("TEXT") + (given.Has("--line") ? "\r\n" : "");
  session.Check(vlSerialPortWrite(session.Card(), SerialPort(given),
                                  reinterpret_cast<const std::uint8_t*>(text.data()),
                                  static_cast<std::uint32_t>(text.size())));
  return ExitCode::Done;
}

// The bytes as they are: contents are not cleaned.
ExitCode ReceiveText(Session& session, const Arguments& given) {
  const std::uint32_t wait = given.Has("--wait") ? ParseTime("--wait", given.Text("--wait")) : 1000;
  std::vector<std::uint8_t> bytes(65536);
  std::uint32_t count = 0;
  session.Check(vlSerialPortRead(session.Card(), SerialPort(given), bytes.data(),
                                 static_cast<std::uint32_t>(bytes.size()), &count,
                                 static_cast<std::int32_t>(std::min<std::uint32_t>(wait, INT32_MAX))));
  bytes.resize(count);
  if (session.Out.AsJson) {
    session.Out.Print({{"port", SerialPort(given)}, {"bytes", bytes}});
  } else {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  }
  return ExitCode::Done;
}

constexpr Parameter PortOption{"--port", "N", "The serial port (0)"};

}  // namespace

std::span<const Verb> IoVerbs() {
  static const Verb Rows[] = {
      {"io ls", "Show the ports and their pins", {}, &ShowPorts},
      {"io get",
       "Show whether pins are active",
       {{"PIN", "", "1.3, or its name", Parameter::AtLeastOne}},
       &GetPin},
      {"io set",
       "Make pins of outputs active (1) or inactive (0)",
       {{"PIN=VALUE", "", "1.3=1, or by name", Parameter::AtLeastOne}},
       &SetPin},
      {"io watch",
       "Show a port's pins whenever they change, until Ctrl-C",
       {{"PORT", "", "0 to 7"}},
       &WatchPort},
      {"variable ls", "Show all variables of lists", {}, &ShowVariables},
      {"variable get",
       "Show a variable",
       {{"NAME", "", "Its name"}, {"--boolean", "", "The boolean of that name, not the integer"}},
       &GetVariable},
      {"variable set",
       "Set a variable",
       {{"NAME=VALUE", "", "true and false set a boolean, numbers an integer"}},
       &SetVariable},
      {"serial send",
       "Send a text over a serial port of the card",
       {{"TEXT", "", "What to send"},
        {"--line", "", "End it with carriage return and line feed"},
        PortOption},
       &SendText},
      {"serial receive",
       "Print what a serial port of the card has received",
       {{"--wait", "TIME", "How long to wait for something (1s)"}, PortOption},
       &ReceiveText},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
