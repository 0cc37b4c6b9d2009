#include "Settings.h"

#include <kelvo/kelvo.h>

#include <algorithm>
#include <cctype>
#include <memory>

#include "RecordChoices.h"
#include "RecordJson.h"
#include "SoundsLike.h"
#include "capi/FlatRecord.h"
#include "config/LaserConfig.h"
#include "config/MotfConfig.h"
#include "config/ProcessVariables.h"
#include "config/QuadratureDecoderConfig.h"
#include "config/RecordMethods.h"
#include "config/ScannerConfig.h"
#include "config/SystemConfig.h"
#include "peripherals/AdapterBoardConfig.h"
#include "peripherals/GpioConfig.h"
#include "peripherals/SerialPortConfig.h"
#include "peripherals/SpiConfig.h"
#include "services/EventConfig.h"

namespace VELTRO::KELVO::Tool {

namespace {

namespace Flat = ClientLib::Flat;
using namespace ClientLib;

// What an area's row needs of its record: the plain struct with which it crosses the exported functions, and those.
template <class R, auto GetConfig, auto SetConfig>
struct Crossing;
template <class R, class F, std::int32_t (*GetConfig)(std::int32_t, F*),
          std::int32_t (*SetConfig)(std::int32_t, const F*)>
struct Crossing<R, GetConfig, SetConfig> {
  static R Fetch(Session& session) {
    const auto flat = std::make_unique<F>();
    session.Check(GetConfig(session.Card(), flat.get()));
    return Flat::Taken<R>(flat.get());
  }
  static void Send(Session& session, const R& record) {
    const auto flat = std::make_unique<F>();
    Flat::FromRecord(record, *flat);
    session.Check(SetConfig(session.Card(), flat.get()));
  }
};

template <class R, auto GetConfig, auto SetConfig>
constexpr Area AreaOf(std::string_view name, std::int32_t (*load)(std::int32_t),
                      std::int32_t (*store)(std::int32_t)) {
  using Form = RecordJson::Form<R>;
  using Way = Crossing<R, GetConfig, SetConfig>;
  return {name,
          [] { return Form::To(R()); },
          &RecordJson::Choices<R>,
          [](Session& session) { return Form::To(Way::Fetch(session)); },
          [](Session& session, const Json& settings, const std::string& path) {
            R record = Way::Fetch(session);
            Form::From(settings, record, path);
            Way::Send(session, record);
          },
          [](const Json& settings, const std::string& path) {
            R record;
            Form::From(settings, record, path);
          },
          ClientLib::RecordMethods<R>::Get,
          load,
          store};
}

#define AREA(name, Record, prefix, What) \
  AreaOf<Record, prefix##Get##What, prefix##Set##What>(name, prefix##Load##What, prefix##Store##What)

constexpr Area Rows[] = {
    AREA("laser", LaserConfig, vlLaser, Config),
    AREA("scanner", ScannerConfig, vlScanner, Config),
    AREA("process", ProcessVariables, vlProcess, Variables),
    AREA("system", SystemConfig, vlSystem, Config),
    AREA("motf", MotfConfig, vlMotf, Config),
    AREA("decoder", QuadratureDecoderConfig, vlMotfQuadratureDecoder, Config),
    AREA("event", EventConfig, vlEvent, Config),
    AREA("gpio", GpioConfig, vlGpio, Config),
    AREA("serial-port", SerialPortConfig, vlSerialPort, Config),
    AREA("spi", SpiConfig, vlSpi, Config),
    AREA("adapter-board", AdapterBoardConfig, vlAdapterBoard, Config),
};

// What stands in an object or a list.
std::vector<std::string> KeysOf(const Json& value) {
  std::vector<std::string> keys;
  for (const auto& item : value.items()) keys.push_back(item.key());
  return keys;
}

void Collect(const Json* first, const Json* second, const std::string& path, std::vector<Difference>& all) {
  const auto isSame = [](const Json* a, const Json* b) { return a != nullptr && b != nullptr && *a == *b; };
  if (isSame(first, second)) return;
  const bool areObjects = first != nullptr && second != nullptr && first->is_object() && second->is_object();
  const bool areLists = first != nullptr && second != nullptr && first->is_array() && second->is_array() &&
                        first->size() == second->size();
  if (!areObjects && !areLists) {
    all.push_back({path, first == nullptr ? Json() : *first, second == nullptr ? Json() : *second});
    return;
  }
  std::vector<std::string> keys = KeysOf(*first);
  for (const std::string& key : KeysOf(*second)) {
    if (std::ranges::find(keys, key) == keys.end()) keys.push_back(key);
  }
  for (const std::string& key : keys) {
    const auto part = [&](const Json& whole) -> const Json* {
      if (whole.is_array()) return &whole.at(std::stoul(key));
      return whole.contains(key) ? &whole.at(key) : nullptr;
    };
    const bool isElement =
        areLists || (!key.empty() && (std::isdigit(static_cast<unsigned char>(key[0])) || key[0] == '-'));
    Collect(part(*first), part(*second), PathOf(path, key, isElement), all);
  }
}

void ShowFields(const Json& value, const std::string& path, std::vector<std::vector<std::string>>& rows) {
  const bool isPlain = !value.is_structured() || value.empty() ||
                       (value.is_array() &&
                        std::ranges::none_of(value, [](const Json& part) { return part.is_structured(); }));
  if (isPlain) {
    rows.push_back({path, Shown(value)});
    return;
  }
  const bool hasNumbers =
      value.is_array() || std::isdigit(static_cast<unsigned char>(value.items().begin().key()[0])) != 0;
  for (const auto& [key, part] : value.items()) {
    ShowFields(part, PathOf(path, key, hasNumbers), rows);
  }
}

}  // namespace

std::span<const Area> Areas() {
  return Rows;
}

const Area& FindArea(std::string_view name) {
  const auto found = std::ranges::find(Rows, name, &Area::Name);
  if (found != std::end(Rows)) return *found;
  std::vector<std::string> names;
  for (const Area& area : Rows) names.emplace_back(area.Name);
  std::string hint = DidYouMean(name, names);
  if (hint.empty()) {
    hint = "There are";
    for (const std::string& known : names) hint += (hint.size() == 9 ? " " : ", ") + known;
    hint += ".";
  }
  throw WrongUsage("There is no area '" + Clean(name) + "'.", hint);
}

std::vector<const Area*> ChooseAreas(const std::vector<std::string>& names) {
  std::vector<const Area*> chosen;
  chosen.reserve(std::size(Rows));
  for (const std::string& name : names) chosen.push_back(&FindArea(name));
  if (chosen.empty()) {
    for (const Area& area : Rows) chosen.push_back(&area);
  }
  return chosen;
}

std::vector<const Area*> ChooseAreas(Session& session, const std::vector<std::string>& names) {
  std::vector<const Area*> chosen = ChooseAreas(names);
  if (!names.empty()) return chosen;
  std::string missing;
  std::erase_if(chosen, [&](const Area* area) {
    std::int32_t support = vlMethodSupport_NotKnown;
    session.Check(vlInternalGetMethodSupport(session.Card(), std::string(area->Method).c_str(), &support));
    if (support == vlMethodSupport_No) missing.append(missing.empty() ? "" : ", ").append(area->Name);
    return support == vlMethodSupport_No;
  });
  if (!missing.empty()) session.Out.Remark("The card does not have: " + missing + ".");
  return chosen;
}

FieldPath ParseField(std::string_view text) {
  const std::size_t dot = text.find('.');
  FieldPath path{&FindArea(text.substr(0, dot)), {}};
  std::string_view rest = dot == std::string_view::npos ? std::string_view() : text.substr(dot);
  while (!rest.empty()) {
    const bool isElement = rest.front() == '[';
    const std::size_t end = isElement ? rest.find(']') : std::min(rest.find_first_of(".[", 1), rest.size());
    if (end == std::string_view::npos || end < 2) {
      throw WrongUsage("'" + Clean(text) + "' is no field.",
                       "One is written like laser.FpsPolarity or scanner.Heads[0].");
    }
    path.Steps.emplace_back(rest.substr(1, end - 1));
    rest.remove_prefix(isElement ? end + 1 : end);
    if (!rest.empty() && rest.front() != '.' && rest.front() != '[') {
      throw WrongUsage("'" + Clean(text) + "' is no field.",
                       "One is written like laser.FpsPolarity or scanner.Heads[0].");
    }
  }
  return path;
}

std::vector<std::string> ChoicesFor(const FieldPath& path) {
  Json choices = path.Of->Choices();
  for (const std::string& step : path.Steps) {
    if (!choices.is_object()) return {};
    const auto found = choices.contains(RecordJson::EveryElement) ? choices.find(RecordJson::EveryElement)
                                                                  : choices.find(step);
    if (found == choices.end()) return {};
    choices = Json(*found);
  }
  return choices.is_array() ? choices.get<std::vector<std::string>>() : std::vector<std::string>();
}

Json& FindField(Json& settings, const FieldPath& path) {
  Json* value = &settings;
  std::string where(path.Of->Name);
  for (const std::string& step : path.Steps) {
    const std::vector<std::string> keys =
        value->is_structured() ? KeysOf(*value) : std::vector<std::string>();
    const auto found = std::ranges::find(keys, step);
    if (found == keys.end()) {
      const bool isList = value->is_array();
      throw WrongUsage(
          "There is no field '" + where + (isList ? "[" + Clean(step) + "]" : "." + Clean(step)) + "'.",
          isList ? "It has " + std::to_string(keys.size()) + " elements, counted from 0."
                 : DidYouMean(step, keys));
    }
    value = value->is_array() ? &value->at(static_cast<std::size_t>(found - keys.begin())) : &value->at(step);
    where += "." + step;
  }
  return *value;
}

std::string PathOf(const std::string& path, const std::string& key, bool isElement) {
  return std::string(path).append(isElement ? "[" : ".").append(key).append(isElement ? "]" : "");
}

ExitCode ShowSettings(const Output& out, const Json& settings) {
  if (out.AsJson) {
    out.Print(settings);
    return ExitCode::Done;
  }
  std::vector<std::vector<std::string>> rows;
  for (const auto& [area, fields] : settings.items()) ShowFields(fields, area, rows);
  out.Table({}, rows);
  return ExitCode::Done;
}

std::vector<Difference> Compare(const Json& first, const Json& second, const std::string& path) {
  std::vector<Difference> all;
  Collect(&first, &second, path, all);
  return all;
}

}  // namespace VELTRO::KELVO::Tool
