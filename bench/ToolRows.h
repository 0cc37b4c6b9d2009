#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// The tool as a program of its own, beside reading the same file's text into a list.
void RegisterToolRows(Harness& harness);

}  // namespace VELTRO::KELVO::Bench
