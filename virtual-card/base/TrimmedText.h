#pragma once

#include <algorithm>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

// Without blanks, tabs and carriage returns at both ends.
constexpr std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view Blanks = " \t\r";
  text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
  return text.substr(0, text.find_last_not_of(Blanks) + 1);
}

}  // namespace VELTRO::KELVO::VirtualCard
