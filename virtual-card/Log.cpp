#include "Log.h"

#include <cstdio>
#include <string>

namespace VELTRO::KELVO::VirtualCard {

void LogLine(std::string_view text) {
  constexpr std::size_t MostCharacters = 1000;
  std::string line(text.substr(0, MostCharacters));
  for (char& character : line) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x20 || code == 0x7F) character = '?';
  }
  if (text.size() > MostCharacters) line += "...";
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace VELTRO::KELVO::VirtualCard
