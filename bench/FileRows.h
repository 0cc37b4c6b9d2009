#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// Files to the card and back.
void RegisterFileRows(Harness& harness);

}  // namespace VELTRO::KELVO::Bench
