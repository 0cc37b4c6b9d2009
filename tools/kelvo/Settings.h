// The areas of a card's settings: a row each.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Output.h"
#include "Session.h"

namespace VELTRO::KELVO::Tool {

struct Area {
  std::string_view Name;  // "laser"
  Json (*Defaults)();
  Json (*Choices)();  // see RecordChoices.h
  Json (*Get)(Session& session);
  // Sends `settings`; what they leave out is as it is on the card. Throws Failure, WrongUsage, for a field that is not
  // there and a value that it does not take, with the place behind `path`; nothing is sent then.
  void (*Set)(Session& session, const Json& settings, const std::string& path);
  // Throws as Set does; needs no card.
  void (*Check)(const Json& settings, const std::string& path);
  std::string_view Method;  // of the card, that gets them
  std::int32_t (*Load)(std::int32_t handle);
  std::int32_t (*Store)(std::int32_t handle);
};

std::span<const Area> Areas();
// Throws Failure, WrongUsage.
const Area& FindArea(std::string_view name);
// Those of the names, or all when there are none.
std::vector<const Area*> ChooseAreas(const std::vector<std::string>& names);
// The same, but without names those that the card says it does not have are left out, with a remark.
std::vector<const Area*> ChooseAreas(Session& session, const std::vector<std::string>& names);

// A field: "laser.FpsPolarity", "scanner.Heads[0]", "event.EventSettings[5].EnableGlobally".
struct FieldPath {
  const Area* Of;
  std::vector<std::string> Steps;  // names and, for elements, their numbers
};
// Throws Failure, WrongUsage.
FieldPath ParseField(std::string_view text);
// What the field can be, by name; empty when that is not a few names, and when there is no such field.
std::vector<std::string> ChoicesFor(const FieldPath& path);
// The value of the field in its area's settings. Throws Failure, WrongUsage, when there is none.
Json& FindField(Json& settings, const FieldPath& path);

// The path of a part of a value: of a field behind a point, of an element in brackets.
std::string PathOf(const std::string& path, const std::string& key, bool isElement);

// Every field a line: its path and its value; lists of plain values stay together. As JSON if that is asked for.
ExitCode ShowSettings(const Output& out, const Json& settings);

// One field whose value is not the same in two settings; null where it is in one of them alone.
struct Difference {
  std::string Path;
  Json First, Second;
};
std::vector<Difference> Compare(const Json& first, const Json& second, const std::string& path);

}  // namespace VELTRO::KELVO::Tool
