// What the program says on its standard streams. Nobody is ever held up by it, and nothing of it throws (LineWriter.h).
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

// One line on stderr, whole even when several threads write. It is made of pieces, so that also those can say
// something who have no memory left to put a text together.
void LogLine(std::initializer_list<std::string_view> pieces) noexcept;
inline void LogLine(std::string_view text) noexcept {
  LogLine({text});
}
// One line on stdout, behind what stderr was told before.
void SayLine(std::initializer_list<std::string_view> pieces) noexcept;
// The latest lines on stderr, 64 KiB at most, whether anybody has read them or not. This one may throw std::bad_alloc.
std::string RecentLog();
// At the end of the program: gives what has been said a moment to be written.
void FinishLog() noexcept;

}  // namespace VELTRO::KELVO::VirtualCard
