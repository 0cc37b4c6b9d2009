// What a list finds that is checked or drawn without a card: options --with, --font, --input, --standalone-list.
#pragma once

#include <optional>
#include <span>

#include "Verb.h"
#include "drawing/Page.h"
#include "execution/Rehearsal.h"

namespace VELTRO::KELVO::Tool {

// The number that the list itself has there.
inline constexpr std::int32_t OwnList = 1;

std::span<const Parameter> StageOptions();
// Throws Failure.
Simulation::Stage MakeStage(const Arguments& given);
// The font of a file. Throws Failure.
ClientLib::Font ReadFont(std::int32_t id, const std::string& path);
// Of --field, around the origin. Throws Failure, WrongUsage.
std::optional<Simulation::Box> ParseField(const Arguments& given);

}  // namespace VELTRO::KELVO::Tool
