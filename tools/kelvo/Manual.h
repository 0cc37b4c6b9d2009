// kelvo(1).
#pragma once

namespace VELTRO::KELVO::Tool {

// Prints the manual page as source of man.
int PrintManual();

}  // namespace VELTRO::KELVO::Tool
