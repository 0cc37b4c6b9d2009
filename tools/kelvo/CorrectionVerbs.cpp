// correction, power-correction: the corrections of scan heads, and that of the laser power.
#include <kelvo/kelvo.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "CardFiles.h"
#include "Files.h"
#include "Settings.h"
#include "Verb.h"
#include "services/CorrectionFiles.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::size_t MostOpticsBytes = 16 << 20;

struct CorrectionPlace {
  std::int32_t Head, Slot;
};

// "0:3". Throws Failure, WrongUsage.
CorrectionPlace ParsePlace(const Arguments& given) {
  const std::string& text = given.Text("HEAD:SLOT");
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos)
    throw WrongUsage("'" + text + "' is no HEAD:SLOT.", "One is written like 0:3.");
  const auto number = [](const char* what, const std::string& part) {
    return static_cast<std::int32_t>(ParseWhole(what, part, 0, INT32_MAX));
  };
  return {number("HEAD", text.substr(0, colon)), number("SLOT", text.substr(colon + 1))};
}

// Where the correction with this name of a file is; nothing for other files. There are two heads, as the number in the
// name is head + 2 x slot.
std::optional<CorrectionPlace> PlaceOf(const std::string& name) {
  constexpr std::string_view Head = "head";
  if (!name.starts_with(Head)) return {};
  std::int32_t number = -1;
  std::from_chars(name.data() + Head.size(), name.data() + name.size(), number);
  const CorrectionPlace place{number % 2, number / 2};
  const bool isOne =
      number >= 0 && name == ClientLib::CorrectionFiles::HeadCorrection(place.Head, place.Slot);
  return isOne ? std::optional(place) : std::nullopt;
}

// As JSON; null when the card does not tell it.
Json HashOf(Session& session, const CorrectionPlace& place) {
  char text[256] = "";
  std::uint32_t length = 0;
  const bool isTold = session.IsDone(
      vlHeadCorrectionGetHash(session.Card(), place.Head, place.Slot, text, sizeof text, &length));
  return isTold ? Json(std::string(text, length)) : Json();
}

ExitCode ShowCorrections(Session& session, const Arguments&) {
  std::vector<CorrectionPlace> places;
  for (const std::string& name : NamesIn(session, ClientLib::CorrectionFiles::Directory)) {
    if (const auto place = PlaceOf(name)) places.push_back(*place);
  }
  std::ranges::sort(places, {},
                    [](const CorrectionPlace& place) { return std::pair(place.Head, place.Slot); });
  std::map<std::int32_t, std::int32_t> selected;  // slots by heads
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows;
  for (const CorrectionPlace& place : places) {
    const auto [head, isNew] = selected.try_emplace(place.Head, -1);
    if (isNew)
      session.Check(vlHeadCorrectionGetSelectedCorrection(session.Card(), place.Head, &head->second));
    const bool isSelected = head->second == place.Slot;
    const Json hash = HashOf(session, place);
    list.push_back({{"head", place.Head}, {"slot", place.Slot}, {"selected", isSelected}, {"hash", hash}});
    rows.push_back({std::to_string(place.Head) + ":" + std::to_string(place.Slot), isSelected ? "yes" : "no",
                    hash.is_null() ? "?" : Shown(hash)});
  }
  if (session.Out.AsJson) {
    session.Out.Print(list);
  } else if (!rows.empty()) {
    session.Out.Table({"CORRECTION", "SELECTED", "HASH"}, rows);
  }
  return ExitCode::Done;
}

ExitCode ShowOptics(Session& session, const vlOpticalParameters& parameters) {
  char text[8192] = "";
  std::uint32_t length = 0;
  session.Check(vlOpticalParametersToJson(&parameters, text, sizeof text, &length));
  return ShowSettings(session.Out, Json::parse(text, text + length));
}

ExitCode ShowCorrection(Session& session, const Arguments& given) {
  const auto [head, slot] = ParsePlace(given);
  vlOpticalParameters parameters{};
  session.Check(vlHeadCorrectionGetOpticalParameters(session.Card(), head, slot, &parameters));
  return ShowOptics(session, parameters);
}

// What the card does not take does not stay there either: `copy` is its name on the way.
void SendCorrection(Session& session, const std::string& path, const std::string& copy,
                    const std::function<std::int32_t(std::int32_t, Transfer*)>& send) {
  CheckReadable(path);
  session.Card();
  const Interrupt interrupt;
  Transfer transfer(session, interrupt, "Sending '" + Clean(path) + "'");
  try {
    transfer.Run([&, card = session.Card()] { return send(card, &transfer); });
  } catch (const Failure&) {
    vlFileDelete(session.Card(), ClientLib::CorrectionFiles::Directory, copy.c_str());
    throw;
  }
}

ExitCode PutCorrection(Session& session, const Arguments& given) {
  const CorrectionPlace place = ParsePlace(given);
  const std::string& path = given.Text("FILE");
  SendCorrection(session, path, ClientLib::CorrectionFiles::HeadCorrectionCopy(place.Head, place.Slot),
                 [&](std::int32_t card, Transfer* transfer) {
                   return vlHeadCorrectionSetWithProgress(card, place.Head, place.Slot, path.c_str(),
                                                          &Transfer::Show, transfer);
                 });
  return ExitCode::Done;
}

ExitCode GetCorrection(Session& session, const Arguments& given) {
  const CorrectionPlace place = ParsePlace(given);
  session.Card();
  const Interrupt interrupt;
  const std::string path =
      given.Has("-o") ? given.Text("-o") : ClientLib::CorrectionFiles::HeadCorrection(place.Head, place.Slot);
  Transfer transfer(session, interrupt, "Fetching correction " + given.Text("HEAD:SLOT"));
  transfer.Run([&, card = session.Card()] {
    return vlHeadCorrectionGetWithProgress(card, place.Head, place.Slot, path.c_str(), &Transfer::Show,
                                           &transfer);
  });
  return ExitCode::Done;
}

template <std::int32_t (*Action)(std::int32_t, std::int32_t, std::int32_t)>
ExitCode AtPlace(Session& session, const Arguments& given) {
  const auto [head, slot] = ParsePlace(given);
  session.Check(Action(session.Card(), head, slot));
  return ExitCode::Done;
}

template <std::int32_t (*Action)(std::int32_t)>
ExitCode OnCard(Session& session, const Arguments&) {
  session.Check(Action(session.Card()));
  return ExitCode::Done;
}

ExitCode CreatePowerCorrection(Session& session, const Arguments& given) {
  const std::string text = ReadFile(given.Text("FILE"), MostOpticsBytes);
  vlOpticalParameters parameters{};
  if (vlOpticalParametersFromJson(text.c_str(), &parameters) < 0)
    throw Refused("'" + given.Text("FILE") + "' has no optical parameters: " + LastError());
  session.Check(vlPowerCorrectionCreate(session.Card(), &parameters));
  return ExitCode::Done;
}

ExitCode PutPowerCorrection(Session& session, const Arguments& given) {
  const std::string& path = given.Text("FILE");
  SendCorrection(session, path, ClientLib::CorrectionFiles::PowerCorrectionCopy,
                 [&](std::int32_t card, Transfer* transfer) {
                   return vlPowerCorrectionSetWithProgress(card, path.c_str(), &Transfer::Show, transfer);
                 });
  return ExitCode::Done;
}

ExitCode GetPowerCorrection(Session& session, const Arguments& given) {
  session.Card();
  const Interrupt interrupt;
  const std::string path = given.Has("-o") ? given.Text("-o") : ClientLib::CorrectionFiles::PowerCorrection;
  Transfer transfer(session, interrupt, "Fetching the power correction");
  transfer.Run([&, card = session.Card()] {
    return vlPowerCorrectionGetWithProgress(card, path.c_str(), &Transfer::Show, &transfer);
  });
  return ExitCode::Done;
}

ExitCode SetPowerCorrection(Session& session, const Arguments& given) {
  struct Change {
    vlPoint3D At;
    double Value;
  };
  std::vector<Change> changes;
  for (const std::string& text : given.All("POINT=VALUE")) {
    const std::size_t equals = text.find('='), first = text.find(','), second = text.find(',', first + 1);
    if (equals == std::string::npos || first > equals || second > equals)
      throw WrongUsage("'" + text + "' is no POINT=VALUE.", "One is written like -10,5,0=0.9.");
    changes.push_back({{ParseNumber("X", text.substr(0, first)),
                        ParseNumber("Y", text.substr(first + 1, second - first - 1)),
                        ParseNumber("Z", text.substr(second + 1, equals - second - 1))},
                       ParseNumber("VALUE", text.substr(equals + 1))});
  }
  for (const auto& [at, value] : changes)
    session.Check(vlPowerCorrectionChangeValue(session.Card(), at.X, at.Y, at.Z, value));
  return ExitCode::Done;
}

ExitCode ShowPowerCorrection(Session& session, const Arguments&) {
  vlOpticalParameters parameters{};
  session.Check(vlPowerCorrectionGetOpticalParameters(session.Card(), &parameters));
  return ShowOptics(session, parameters);
}

constexpr Parameter HeadAndSlot{"HEAD:SLOT", "", "Head and slot, from 0: 0:3"};
constexpr Parameter FetchedInto{"-o", "FILE", "The local file; else of the card's name for it, here"};

}  // namespace

std::span<const Verb> CorrectionVerbs() {
  static const Verb Rows[] = {
      {"correction ls", "Show the corrections of the scan heads", {}, &ShowCorrections},
      {"correction show", "Show the optics that a correction was made for", {HeadAndSlot}, &ShowCorrection},
      {"correction put",
       "Send a file as the correction of a slot",
       {HeadAndSlot, {"FILE", "", "A local file"}},
       &PutCorrection},
      {"correction get", "Fetch a correction into a file", {HeadAndSlot, FetchedInto}, &GetCorrection},
      {"correction select",
       "Make a correction the one that its head uses",
       {HeadAndSlot},
       &AtPlace<vlHeadCorrectionSelectCorrection>},
      {"correction delete", "Delete a correction", {HeadAndSlot}, &AtPlace<vlHeadCorrectionDelete>},
      {"correction load", "Make the card load its stored corrections", {}, &OnCard<vlHeadCorrectionLoad>},
      {"correction store", "Make the card store its corrections", {}, &OnCard<vlHeadCorrectionStore>},
      {"power-correction show",
       "Show the optics that the power correction was made for",
       {},
       &ShowPowerCorrection},
      {"power-correction create",
       "Begin the power correction anew, for optics that a file describes",
       {{"FILE", "", "What 'correction show --json' prints"}},
       &CreatePowerCorrection},
      {"power-correction set",
       "Change the power correction at points of the field",
       {{"POINT=VALUE", "", "-10,5,0=0.9", Parameter::AtLeastOne}},
       &SetPowerCorrection},
      {"power-correction put",
       "Send a file as the power correction",
       {{"FILE", "", "A local file"}},
       &PutPowerCorrection},
      {"power-correction get", "Fetch the power correction into a file", {FetchedInto}, &GetPowerCorrection},
      {"power-correction load",
       "Make the card take its stored power correction",
       {},
       &OnCard<vlPowerCorrectionLoad>},
      {"power-correction store",
       "Make the card store the power correction",
       {},
       &OnCard<vlPowerCorrectionStore>},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
