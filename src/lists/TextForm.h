// The text around the numbers of a command. Lists repeat it from command to command, so that it need not be read again:
// what stands around the numbers is compared as bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

class TextForm {
 public:
  // Ahead of each number, and behind the last.
  static constexpr std::size_t MostPieces = 5;
  static constexpr std::size_t MostBytes = 16;  // of one piece

  // False when the piece is too long to be kept.
  bool Keep(std::size_t index, std::string_view text) {
    if (text.size() > MostBytes) return false;
    constexpr std::array<unsigned char, MostBytes> Ones = [] {
      std::array<unsigned char, MostBytes> ones;
      ones.fill(0xFF);
      return ones;
    }();
    Piece& piece = pieces_[index];
    piece = {};
    piece.Size = text.size();
    std::memcpy(piece.Bytes.data(), text.data(), text.size());
    std::memcpy(piece.Mask.data(), Ones.data(), text.size());
    return true;
  }
  // Moves `at` over the piece if it stands there; false if not, and also at the very end of a text.
  bool Take(std::size_t index, const char*& at, const char* end) const {
    if (end - at < static_cast<std::ptrdiff_t>(MostBytes)) return false;
    const Piece& piece = pieces_[index];
    Words words;
    std::memcpy(words.data(), at, MostBytes);
    if ((((words[0] ^ piece.Bytes[0]) & piece.Mask[0]) | ((words[1] ^ piece.Bytes[1]) & piece.Mask[1])) !=
        0) {
      return false;
    }
    at += piece.Size;
    return true;
  }

 private:
  using Words = std::array<std::uint64_t, MostBytes / sizeof(std::uint64_t)>;
  struct Piece {
    Words Bytes{}, Mask{};
    std::size_t Size = 0;
  };

  std::array<Piece, MostPieces> pieces_;
};

}  // namespace VELTRO::KELVO::ClientLib
