// Fonts in files: a JSON object with the text of a list for each character, {"A": "[ { JR, P2D[ X=0 Y=1 ] } ]"}.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Output.h"

namespace VELTRO::KELVO::Tool {

using FontTexts = std::map<std::uint16_t, std::string>;  // lists in text form by character code

// How a character is written: as itself, or "U+D800" where it is none that can stand alone.
std::string CharacterName(std::uint16_t code);

// Throws Failure, Refused.
FontTexts ReadFontFile(const std::string& path);
Json FontJson(const FontTexts& texts);

}  // namespace VELTRO::KELVO::Tool
