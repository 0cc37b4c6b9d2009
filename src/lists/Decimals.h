// Usual decimals, read and written faster than by the standard library, with the same outcome to the last bit. What is
// unusual is left to it.
#pragma once

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace VELTRO::KELVO::ClientLib::Decimals {

__extension__ using UInt128 = unsigned __int128;

inline constexpr int MostDigits = 19;  // that always fit 64 bits

// Of 64 bits a double keeps 53.
inline constexpr int Dropped = 11;
inline constexpr std::uint64_t Half = 1U << (Dropped - 1);

// 10^0 to 10^19 as integers, as doubles (exact, all of them), and the highest 64 bits of what 1 divided by them is.
struct Powers {
  std::array<std::uint64_t, MostDigits + 1> Whole{};
  std::array<double, MostDigits + 1> Double{};
  std::array<std::uint64_t, MostDigits + 1> Reciprocal{};  // of 10^1 on
};
inline constexpr Powers PowersOfTen = [] {
  Powers powers;
  std::uint64_t power = 1;
  for (std::size_t i = 0; i <= MostDigits; ++i, power *= 10) {
    powers.Whole[i] = power;
    powers.Double[i] = static_cast<double>(power);
    if (i == 0) continue;
    powers.Reciprocal[i] =
        static_cast<std::uint64_t>((UInt128{1} << 127) / (power << std::countl_zero(power)));
  }
  return powers;
}();

// The double kept / 2^52 * 2^exponent, for kept of 2^52 to 2^53.
inline double Scaled(std::uint64_t kept, int exponent) {
  constexpr int Bias = 1023, FractionBits = 52;
  constexpr std::uint64_t One = std::uint64_t{1} << FractionBits;  // 2^53 raises the exponent, as it should
  return std::bit_cast<double>((static_cast<std::uint64_t>(exponent + Bias) << FractionBits) + (kept - One));
}

// The double next to number / 10^places, ties to even. `number` is not 0, and there are 1 to MostDigits places.
[[gnu::noinline, gnu::cold]] inline double DivideExactly(std::uint64_t number, std::size_t places) {
  const std::uint64_t power = PowersOfTen.Whole[places];
  const int shift = std::countl_zero(number), powerShift = std::countl_zero(power);
  const std::uint64_t dividend = number << shift, divisor = power << powerShift;
  const bool isBelowOne = dividend < divisor;
  const UInt128 widened = UInt128{dividend} << (isBelowOne ? 64 : 63);
  const auto quotient = static_cast<std::uint64_t>(widened / divisor);
  const std::uint64_t kept = quotient >> Dropped, rest = quotient & (2 * Half - 1);
  const bool isAboveHalf = rest > Half || (rest == Half && (widened % divisor != 0 || (kept & 1) != 0));
  return Scaled(kept + (isAboveHalf ? 1 : 0), powerShift - shift - (isBelowOne ? 1 : 0));
}

// The same by one multiplication. Its product is too small by less than 2 in the last of 64 bits, which can only matter
// where the bits that are dropped are next to a half.
inline double Divide(std::uint64_t number, std::size_t places) {
  const int shift = std::countl_zero(number), powerShift = std::countl_zero(PowersOfTen.Whole[places]);
  const UInt128 product = UInt128{number << shift} * PowersOfTen.Reciprocal[places];
  const auto upper = static_cast<std::uint64_t>(product >> 64);
  const int isBelowOne = upper >> 63 == 0 ? 1 : 0;
  const std::uint64_t half = Half >> isBelowOne, rest = upper & (2 * half - 1);
  if (rest - (half - 1) <= 1) [[unlikely]] {
    return DivideExactly(number, places);
  }
  const std::uint64_t kept = (upper >> (Dropped - isBelowOne)) + (rest > half ? 1 : 0);
  return Scaled(kept, powerShift - shift - isBelowOne);
}

// Takes digits, eight at once as long as there are so many.
inline const char* TakeDigits(const char* at, const char* end, std::uint64_t& number) {
  constexpr std::uint64_t Each = 0x0101010101010101;
  for (; end - at >= 8; at += 8) {
    std::uint64_t eight;
    std::memcpy(&eight, at, sizeof eight);
    // All high halves are those of digits, and stay so when 6 is added: no low half is above 9.
    if (((eight & 0xF0 * Each) | ((eight + 6 * Each) & 0xF0 * Each) >> 4) != 0x33 * Each) break;
    eight -= '0' * Each;
    eight = eight * 10 + (eight >> 8);  // pairs in every other byte
    constexpr std::uint64_t Pairs = 0x000000FF000000FF;
    const std::uint64_t upper = (eight & Pairs) * (100 + (std::uint64_t{1000000} << 32));
    const std::uint64_t lower = (eight >> 16 & Pairs) * (1 + (std::uint64_t{10000} << 32));
    number = number * 100000000 + ((upper + lower) >> 32);
  }
  for (; at != end && *at >= '0' && *at <= '9'; ++at) number = number * 10 + static_cast<unsigned>(*at - '0');
  return at;
}

// Reads a decimal "-12.5" of up to MostDigits digits without an exponent, as std::from_chars reads it, and returns the
// place behind it; null for any other number, and for what is none.
inline const char* Read(const char* at, const char* end, double& result) {
  const bool isNegative = at != end && *at == '-';
  if (isNegative) ++at;
  std::uint64_t number = 0;
  const char* const begin = at;
  at = TakeDigits(at, end, number);
  std::ptrdiff_t digits = at - begin;
  std::size_t places = 0;
  if (at != end && *at == '.') {
    const char* const fraction = at + 1;
    at = TakeDigits(fraction, end, number);
    if (at == fraction) return nullptr;
    digits += at - fraction;
    places = static_cast<std::size_t>(at - fraction);
  }
  if (digits == 0 || digits > MostDigits || (at != end && (*at | 0x20) == 'e')) return nullptr;
  constexpr std::uint64_t MostExact = std::uint64_t{1} << 53;
  const double absolute = places == 0 || number <= MostExact
                              ? static_cast<double>(number) / PowersOfTen.Double[places]
                              : Divide(number, places);
  result = isNegative ? -absolute : absolute;
  return at;
}

// The eight digits of a number below 10^8, leading zeros included, a byte each; the first digit is in the lowest byte.
inline std::uint64_t EightDigits(std::uint32_t number) {
  // Halves are split into halves: fours, pairs, digits. A division is a multiplication and a shift, in all of them at once.
  const std::uint64_t fours = number / 10000 | std::uint64_t{number % 10000} << 32;
  const std::uint64_t hundreds = (fours * 5243 >> 19) & 0x0000007F0000007F;
  const std::uint64_t pairs = hundreds | (fours - hundreds * 100) << 16;
  const std::uint64_t tens = (pairs * 103 >> 10) & 0x000F000F000F000F;
  return tens | (pairs - tens * 10) << 8;
}

inline constexpr std::uint64_t EightZeros = 0x3030303030303030;  // as text

// Writes a whole number below 10^8, and returns the place behind it. There must be room for eight characters.
inline char* WriteWhole(char* at, std::uint32_t number) {
  if (number < 100) {  // as coordinates are, in millimetres
    const std::uint32_t tens = number * 103 >> 10;
    *at = static_cast<char>('0' + tens);
    at += tens != 0 ? 1 : 0;
    *at = static_cast<char>('0' + (number - tens * 10));
    return at + 1;
  }
  const std::uint64_t digits = EightDigits(number);
  const int leading = std::countr_zero(digits) / 8;
  const std::uint64_t text = (digits | EightZeros) >> 8 * leading;
  std::memcpy(at, &text, sizeof text);
  return at + (8 - leading);
}

// Writes the digits of a fraction, without the zeros at its end, and returns the place behind them. There must be room
// for eight characters.
inline char* WriteFraction(char* at, std::uint32_t millionths) {
  const std::uint64_t digits = EightDigits(millionths * 100);
  const std::uint64_t text = digits | EightZeros;
  std::memcpy(at, &text, sizeof text);
  return at + (8 - std::countl_zero(digits) / 8);
}

// Writes the shortest decimal that reads back as `value`, as std::to_chars writes it, and returns the place behind it.
// There must be room for 32 characters.
inline char* Write(char* at, double value) {
  constexpr std::uint64_t Million = 1000000;
  const double absolute = std::abs(value);
  // Whole millionths of at most 14 digits: two different ones are never the same double, so no shorter decimal can be.
  if (absolute >= 0.001 && absolute < 1e8) {
    constexpr double Rounding =
        0.5;  // how ties go does not matter: what is no whole number is found out below
    const auto millionths = static_cast<std::uint64_t>(absolute * 1e6 + Rounding);
    const auto whole = static_cast<std::uint32_t>(millionths / Million);
    const auto fraction = static_cast<std::uint32_t>(millionths % Million);
    // With so many zeros at the end an exponent is shorter.
    const bool hasExponent = fraction == 0 && whole % 100000 == 0;
    if (static_cast<double>(millionths) / 1e6 == absolute && !hasExponent) {
      if (value < 0) *at++ = '-';
      at = WriteWhole(at, whole);
      if (fraction == 0) return at;
      *at++ = '.';
      return WriteFraction(at, fraction);
    }
  }
  return std::to_chars(at, at + 32, value).ptr;
}

}  // namespace VELTRO::KELVO::ClientLib::Decimals
