// What the program says on stderr.
#pragma once

#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

// Writes one line, whole even when several threads write. Texts of clients may be in it: what is no printable
// character is replaced, and a long line is cut.
void LogLine(std::string_view text);

}  // namespace VELTRO::KELVO::VirtualCard
