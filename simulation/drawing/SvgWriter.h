// A drawing as an SVG file, to scale: a field unit is a millimetre, and y points up.
#pragma once

#include <string>

#include "drawing/Drawing.h"

namespace VELTRO::KELVO::Simulation {

// Writes the file in one step (ReplacedFile): whoever reads it sees the old picture or the new one. `beam` is the width
// of what was marked. Throws std::runtime_error "Cannot write 'FILE': REASON.".
void WriteSvg(const Drawing& drawing, double beam, const std::string& file);

}  // namespace VELTRO::KELVO::Simulation
