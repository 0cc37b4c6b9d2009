#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// The rows of the library itself, each beside the reference row that it is held against.
void RegisterLibraryRows(Harness& harness);

double RunLibraryCallLatency(RowContext& context);

}  // namespace VELTRO::KELVO::Bench
