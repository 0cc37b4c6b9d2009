#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// Building lists and uploading them.
void RegisterListRows(Harness& harness);

}  // namespace VELTRO::KELVO::Bench
