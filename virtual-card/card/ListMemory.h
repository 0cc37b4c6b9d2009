// What lists and fonts cost of the card's memory.
#pragma once

#include <cstddef>

#include "lists/CommandList.h"
#include "services/Font.h"

namespace VELTRO::KELVO::VirtualCard {

inline std::size_t MemoryOf(ClientLib::CommandList list) {  // a copy shares the commands
  constexpr std::size_t BesideCommands = 512;
  list.SetRange(0, list.GetCommandCount());
  return BesideCommands + list.RangeBytes().size();
}

inline std::size_t MemoryOf(const ClientLib::Font& font) {
  std::size_t bytes = sizeof font;
  for (const auto& [character, glyph] : font.CharContainer) bytes += MemoryOf(glyph);
  return bytes;
}

}  // namespace VELTRO::KELVO::VirtualCard
