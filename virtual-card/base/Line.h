// One line of what the program says.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

// Texts of clients may be in it: what is no printable character is replaced, and a long line is cut. It takes no memory.
struct Line {
  static constexpr std::size_t MostCharacters = 1000;

  std::array<char, MostCharacters + 4> Bytes;  // with "...\n", still few enough to be written in one piece
  std::size_t Size = 0;

  void Assign(std::initializer_list<std::string_view> pieces) {
    char* at = Bytes.data();
    char* const end = at + MostCharacters;
    bool isCut = false;
    for (std::string_view piece : pieces) {
      const auto room = static_cast<std::size_t>(end - at);
      isCut |= piece.size() > room;
      piece = piece.substr(0, room);
      at = std::ranges::transform(piece, at, Printable).out;
    }
    if (isCut) at = std::fill_n(at, 3, '.');
    *at++ = '\n';
    Size = static_cast<std::size_t>(at - Bytes.data());
  }
  std::string_view GetText() const { return {Bytes.data(), Size}; }

 private:
  static char Printable(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7F ? '?' : character;
  }
};

}  // namespace VELTRO::KELVO::VirtualCard
