#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// What recording a session costs.
void RegisterRecordingRows(Harness& harness);

}  // namespace VELTRO::KELVO::Bench
