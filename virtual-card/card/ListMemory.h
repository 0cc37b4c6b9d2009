// What lists and fonts cost of the card's memory.
#pragma once

#include <cstddef>

#include "lists/CommandList.h"
#include "services/Font.h"

namespace VELTRO::KELVO::VirtualCard {

inline std::size_t MemoryOf(const ClientLib::CommandList& list) {
  constexpr std::size_t BesideCommands = 512;
  return BesideCommands + list.Bytes().size();
}

inline std::size_t MemoryOf(const ClientLib::Font& font) {
  std::size_t bytes = sizeof font;
  for (const auto& [character, glyph] : font.CharContainer) bytes += MemoryOf(glyph);
  return bytes;
}

}  // namespace VELTRO::KELVO::VirtualCard
