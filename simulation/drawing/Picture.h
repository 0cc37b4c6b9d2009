// The picture that a card keeps of what it marked.
#pragma once

#include <string>

#include "drawing/Drawing.h"

namespace VELTRO::KELVO::Simulation {

// The page has a margin of 5 % of the larger side, or of five beams if that is more. Groups "jumps", "marks" and "dots".
// `beam` is the width of what was marked. Throws std::runtime_error "Cannot write 'FILE': REASON.".
void WritePicture(const Drawing& drawing, double beam, const std::string& file);

// The box with such a margin.
Box WithMargin(const Box& box, double beam);

}  // namespace VELTRO::KELVO::Simulation
