// Words for a descriptor that may be blocked.
#pragma once

#include <string_view>

namespace VELTRO::KELVO::ClientLib {

// Writes the text if the descriptor takes it at once, else drops it. Neither waits nor raises a signal, and leaves the
// descriptor's flags, which it may share with other processes, as they are.
void WriteAtOnce(int descriptor, std::string_view text) noexcept;

}  // namespace VELTRO::KELVO::ClientLib
