// Where a run finds the fonts that it marks with.
#pragma once

#include <cstdint>
#include <memory>

#include "services/Font.h"

namespace VELTRO::KELVO::Simulation {

// A font as it was at one moment: it stays so while it is held.
using FontSnapshot = std::shared_ptr<const ClientLib::Font>;

class FontSource {
 public:
  virtual ~FontSource() = default;
  // The font as it is now. Throws std::runtime_error "There is no font ID on the card.".
  virtual FontSnapshot Find(std::int32_t id) = 0;
  // The active font as it is now, with its id; null when none is active.
  virtual FontSnapshot GetActive() = 0;
};

}  // namespace VELTRO::KELVO::Simulation
