// config: the card's settings, by fields.
#include <kelvo/kelvo.h>

#include <algorithm>
#include <cstdio>

#include "Files.h"
#include "Interrupt.h"
#include "Settings.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::size_t MostFileBytes = 16 << 20;

Json SettingsOf(Session& session, const std::vector<const Area*>& areas) {
  Json all = Json::object();
  for (const Area* area : areas) all[std::string(area->Name)] = area->Get(session);
  return all;
}

// A file of settings: areas by name. Throws Failure.
Json ReadSettings(const std::string& path) {
  try {
    Json settings = Json::parse(ReadFile(path, MostFileBytes));
    if (!settings.is_object()) throw Refused("'" + path + "' holds no settings: it is no object of areas.");
    for (const auto& [name, fields] : settings.items()) FindArea(name).Check(fields, name);
    return settings;
  } catch (const Json::exception& error) {
    throw Refused("'" + path + "' is no JSON: " + error.what());
  }
}

// Makes all the changes of `work` valid at once, or none of them.
template <class Work>
void InOneUpdate(Session& session, Work&& work) {
  session.Card();
  const Interrupt interrupt;
  session.Check(vlConfigurationBeginUpdate(session.Card()));
  try {
    work();
    if (interrupt.Came()) throw Failure(ExitCode::Interrupted, "Interrupted: no setting was changed.");
    session.Check(vlConfigurationEndUpdate(session.Card()));
  } catch (const Failure& failure) {
    if (failure.Code == ExitCode::NoConnection)
      throw Failure(failure.Code, failure.what(),
                    "If it has left an update open, 'kelvo config abort' gives it up.");
    vlConfigurationAbortUpdate(session.Card());
    throw;
  }
}

constexpr const char* OpenUpdate =
    "An update of the card's settings is open; it may be that of a lost connection.";
constexpr const char* EndOfUpdate = "'kelvo config abort' gives it up.";

// A lost connection leaves its update open, and what is set then waits for its end.
bool IsUpdateOpen(Session& session) {
  bool isActive = false;
  session.Check(vlConfigurationIsUpdateActive(session.Card(), &isActive));
  return isActive;
}

void CheckNoUpdate(Session& session) {
  if (IsUpdateOpen(session)) throw Refused(OpenUpdate, EndOfUpdate);
}

// For those who only look.
void TellOfUpdate(Session& session) {
  if (IsUpdateOpen(session)) session.Out.Remark(std::string(OpenUpdate) + " " + EndOfUpdate);
}

ExitCode ShowConfig(Session& session, const Arguments& given) {
  TellOfUpdate(session);
  return ShowSettings(session.Out, SettingsOf(session, ChooseAreas(session, given.All("AREA"))));
}

ExitCode ShowDefaults(Session& session, const Arguments& given) {
  Json all = Json::object();
  for (const Area* area : ChooseAreas(given.All("AREA"))) all[std::string(area->Name)] = area->Defaults();
  return ShowSettings(session.Out, all);
}

ExitCode GetFields(Session& session, const Arguments& given) {
  Json values = Json::object(), fetched = Json::object();
  std::vector<FieldPath> paths;
  for (const std::string& text : given.All("FIELD")) paths.push_back(ParseField(text));
  TellOfUpdate(session);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    Json& settings = fetched[std::string(paths[i].Of->Name)];
    if (settings.is_null()) settings = paths[i].Of->Get(session);
    values[given.All("FIELD")[i]] = FindField(settings, paths[i]);
  }
  if (session.Out.AsJson) {
    session.Out.Print(values);
  } else if (paths.size() == 1 && !values.front().is_structured()) {
    session.Out.Line(Shown(values.front()));
  } else {
    ShowSettings(session.Out, values);
  }
  return ExitCode::Done;
}

// What was written behind "=": JSON, or a text that needs no quotes.
Json ParseValue(const std::string& text) {
  Json value = Json::parse(text, nullptr, false);
  return value.is_discarded() ? Json(text) : value;
}

ExitCode SetFields(Session& session, const Arguments& given) {
  struct Change {
    FieldPath Path;
    Json Value;
  };
  std::vector<Change> changes;
  for (const std::string& text : given.All("FIELD=VALUE")) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw WrongUsage("'" + Clean(text) + "' is no FIELD=VALUE.");
    changes.push_back({ParseField(text.substr(0, equals)), ParseValue(text.substr(equals + 1))});
  }
  CheckNoUpdate(session);
  Json settings = Json::object();
  for (const auto& [path, value] : changes) {
    Json& area = settings[std::string(path.Of->Name)];
    if (area.is_null()) area = path.Of->Get(session);
    Json& field = FindField(area, path);
    field = field.is_string() && !value.is_string() && !value.is_number() ? Json(Shown(value)) : value;
  }
  for (const auto& [name, fields] : settings.items()) FindArea(name).Check(fields, name);
  InOneUpdate(session, [&] {
    for (const auto& [name, fields] : settings.items()) FindArea(name).Set(session, fields, name);
  });
  return ExitCode::Done;
}

ExitCode DiffConfig(Session& session, const Arguments& given) {
  const bool isToDefaults = given.Has("--defaults");
  const std::string& target = given.Text("FILE-OR-AREA");
  if (!isToDefaults && target.empty()) throw WrongUsage("Name a file of settings, or --defaults.");
  Json other = Json::object();
  if (isToDefaults) {
    for (const Area* area : ChooseAreas(session, given.All("FILE-OR-AREA")))
      other[std::string(area->Name)] = area->Defaults();
  } else {
    other = ReadSettings(target);
  }
  TellOfUpdate(session);
  std::vector<Difference> all;
  for (const auto& [name, fields] : other.items()) {
    Json own = FindArea(name).Get(session);
    std::vector<std::string> others;  // what a file leaves out is no difference
    for (const auto& [key, value] : own.items()) {
      if (!fields.contains(key)) others.push_back(key);
    }
    for (const std::string& key : others) own.erase(key);
    for (Difference& one : Compare(own, fields, name)) all.push_back(std::move(one));
  }
  if (session.Out.AsJson) {
    Json list = Json::array();
    for (const auto& [path, first, second] : all)
      list.push_back({{"field", path}, {"card", first}, {"other", second}});
    session.Out.Print(list);
  } else {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(all.size());
    for (const auto& [path, first, second] : all) rows.push_back({path, Shown(first), Shown(second)});
    if (!rows.empty())
      session.Out.Table({"FIELD", "CARD", isToDefaults ? "DEFAULT" : "FILE"}, rows,
                        {Colour::None, Colour::Red, Colour::Green});
  }
  return all.empty() ? ExitCode::Done : ExitCode::FaultsFound;
}

ExitCode ExportConfig(Session& session, const Arguments& given) {
  TellOfUpdate(session);
  const std::string text =
      Escaped(SettingsOf(session, ChooseAreas(session, given.All("AREA"))).dump(2)) + "\n";
  if (given.Has("-o")) {
    WriteFile(given.Text("-o"), text);
    session.Out.Remark("The settings are in '" + given.Text("-o") + "'.");
  } else {
    std::fputs(text.c_str(), stdout);
  }
  return ExitCode::Done;
}

ExitCode ImportConfig(Session& session, const Arguments& given) {
  const Json settings = ReadSettings(given.Text("FILE"));
  CheckNoUpdate(session);
  InOneUpdate(session, [&] {
    for (const auto& [name, fields] : settings.items()) FindArea(name).Set(session, fields, name);
  });
  session.Out.Remark("The card has taken " + std::to_string(settings.size()) + " areas of settings.");
  return ExitCode::Done;
}

template <auto Action>
ExitCode ForAreas(Session& session, const Arguments& given) {
  CheckNoUpdate(session);
  for (const Area* area : ChooseAreas(session, given.All("AREA")))
    session.Check((area->*Action)(session.Card()));
  return ExitCode::Done;
}

ExitCode AbortUpdate(Session& session, const Arguments&) {
  session.Check(vlConfigurationAbortUpdate(session.Card()));
  return ExitCode::Done;
}

constexpr Parameter AreaParameter{"AREA", "", "laser, scanner, process, ...; all without any",
                                  Parameter::Any};

}  // namespace

std::span<const Verb> ConfigVerbs() {
  static const Verb Rows[] = {
      {"config show", "Show the card's settings", {AreaParameter}, &ShowConfig},
      {"config get",
       "Show fields",
       {{"FIELD", "", "laser.FpsPolarity, scanner.Heads[0]", Parameter::AtLeastOne}},
       &GetFields},
      {"config set",
       "Set fields, all of them or none",
       {{"FIELD=VALUE", "", "laser.FpsPolarity=ActiveLow", Parameter::AtLeastOne}},
       &SetFields},
      {"config diff",
       "Compare the card's settings with a file, or with the defaults; exit code 4 when they differ",
       {{"FILE-OR-AREA", "", "A file of settings; with --defaults an area", Parameter::Any},
        {"--defaults", "", "Compare with the defaults"}},
       &DiffConfig},
      {"config export",
       "Write the card's settings as JSON",
       {AreaParameter, {"-o", "FILE", "Write into this file"}},
       &ExportConfig},
      {"config import",
       "Take settings from a file, all of them or none",
       {{"FILE", "", "What 'config export' wrote"}},
       &ImportConfig},
      {"config load", "Make the stored settings the active ones", {AreaParameter}, &ForAreas<&Area::Load>},
      {"config store", "Make the card store its active settings", {AreaParameter}, &ForAreas<&Area::Store>},
      {"config defaults", "Show the defaults; needs no card", {AreaParameter}, &ShowDefaults},
      {"config abort", "Give up an update that a lost connection has left open", {}, &AbortUpdate},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
