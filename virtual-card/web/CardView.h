// What the page is told of the card, in JSON, a section for each thing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "card/Card.h"

namespace VELTRO::KELVO::VirtualCard {

struct ViewSection {
  const char* Name;
  bool IsQuick;  // changes with every moment of a run
  std::string (*Look)(Card& card);
};

// Of whatever there may be thousands, the first are told, and how many there are.
std::span<const ViewSection> ViewSections();

// Commands of a list from index `first` on, as many as one look takes: {"id", "first", "count", "commands"}. Throws as
// CardLists::Get.
std::string ViewCommands(Card& card, std::int32_t list, std::size_t first);

// The drawing from the point `from` on, as many points as one answer takes. Little-endian: the picture's number, `from`, how
// many points follow, how many there are (32 bits each), whether the picture is cut (32 bits); x and y of each
// point (32 bits, floating); its pen (8 bits).
std::string ViewDrawing(const Simulation::LivePicture& picture, std::size_t from);

}  // namespace VELTRO::KELVO::VirtualCard
