// How one command is wrapped where it lies in a packed list: an array of two, its code and its payload as MessagePack
// has them (multi-byte numbers are big-endian). Inline, so that for a command of a known code and size the
// whole envelope is a constant.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VELTRO::KELVO::ClientLib::Envelope {

inline constexpr unsigned char PairHead = 0x92;
// Array head, code, bin head.
inline constexpr std::size_t MostBytes = 1 + 5 + 5;

constexpr unsigned char* PutHead(unsigned char* at, unsigned head, std::uint32_t number, unsigned bytes) {
  *at++ = static_cast<unsigned char>(head);
  while (bytes-- > 0) *at++ = static_cast<unsigned char>(number >> (8 * bytes));
  return at;
}

// An integer in its shortest form.
constexpr unsigned char* PutInteger(unsigned char* at, std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  if (value >= -0x20 && value < 0x80) return PutHead(at, bits & 0xFF, 0, 0);
  if (value >= 0) {
    if (value <= 0xFF) return PutHead(at, 0xCC, bits, 1);
    if (value <= 0xFFFF) return PutHead(at, 0xCD, bits, 2);
    return PutHead(at, 0xCE, bits, 4);
  }
  if (value >= -0x80) return PutHead(at, 0xD0, bits, 1);
  if (value >= -0x8000) return PutHead(at, 0xD1, bits, 2);
  return PutHead(at, 0xD2, bits, 4);
}

constexpr unsigned char* PutBinHead(unsigned char* at, std::size_t size) {
  const auto number = static_cast<std::uint32_t>(size);
  if (size <= 0xFF) return PutHead(at, 0xC4, number, 1);
  if (size <= 0xFFFF) return PutHead(at, 0xC5, number, 2);
  return PutHead(at, 0xC6, number, 4);
}

constexpr unsigned char* Put(unsigned char* at, std::int32_t code, std::size_t payloadSize) {
  *at++ = PairHead;
  return PutBinHead(PutInteger(at, code), payloadSize);
}

constexpr std::uint32_t GetNumber(const unsigned char* at, unsigned bytes) {
  std::uint32_t number = 0;
  while (bytes-- > 0) number = number << 8 | *at++;
  return number;
}

// Reads what Put wrote and returns the place of the payload.
constexpr const unsigned char* Get(const unsigned char* at, std::int32_t& code, std::size_t& payloadSize) {
  const unsigned char head = *++at;
  ++at;
  if (head < 0x80 || head >= 0xE0) {
    code = head < 0x80 ? head : head - 0x100;
  } else {
    const bool isNegative = head >= 0xD0;
    const unsigned bytes = 1U << (head - (isNegative ? 0xD0U : 0xCCU));
    const std::uint32_t above =
        isNegative && bytes < 4 ? ~0U << (8 * bytes) : 0U;  // the sign, where it was cut off
    code = static_cast<std::int32_t>(above | GetNumber(at, bytes));
    at += bytes;
  }
  const unsigned sizeBytes = 1U << (*at++ - 0xC4);
  payloadSize = GetNumber(at, sizeBytes);
  return at + sizeBytes;
}

}  // namespace VELTRO::KELVO::ClientLib::Envelope
