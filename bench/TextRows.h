#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// The rows of the text form, reference and library: nothing of them needs the server.
void RegisterTextRows(Harness& harness);

}  // namespace VELTRO::KELVO::Bench
