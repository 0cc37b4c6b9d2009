#include "LibraryRows.h"

namespace VELTRO::KELVO::Bench {

void RegisterLibraryRows([[maybe_unused]] Harness& harness) {}

}  // namespace VELTRO::KELVO::Bench
