// The 64-bit FNV-1a hash of bytes that come in pieces.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

class Fnv1a {
 public:
  static constexpr std::size_t Digits = 16;

  Fnv1a& Add(std::string_view bytes) {
    constexpr std::uint64_t Prime = 0x100000001B3;
    for (const char byte : bytes) hash_ = (hash_ ^ static_cast<unsigned char>(byte)) * Prime;
    return *this;
  }
  // Hexadecimal digits.
  std::string Text() const {
    constexpr unsigned BitsOfDigit = 4;
    std::string text;
    for (std::size_t digit = Digits; digit-- > 0;) {
      text += "0123456789abcdef"[hash_ >> (BitsOfDigit * digit) & 0xFU];
    }
    return text;
  }

 private:
  std::uint64_t hash_ = 0xCBF29CE484222325;
};

}  // namespace VELTRO::KELVO::VirtualCard
