// The typed values of commands: their type bytes and their bytes.
//
// A value is its type byte and its data, little-endian: a scalar, the coordinates of a point, or, for an
// array, a 24-bit big-endian element count and the elements without type bytes of their own.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

#include "common/Point.h"
#include "common/ReflectiveEnum.h"

static_assert(std::endian::native == std::endian::little, "values are copied as they lie in memory");

namespace VELTRO::KELVO::ClientLib {

// What a type byte is composed of; the low two bits are the element's size class (1, 2, 4 or 8 bytes).
KELVO_ENUM(CommandValueFlags, std::uint8_t, ValueType = 0x20, Unsigned = 0x04, FloatingPoint = 0x08,
           Array = 0x10, Point2D = 0x40, Point3D = 0x80, Point4D = 0xC0)

// X(name, acronym, type byte)
#define KELVO_VALUE_TYPES(X)     \
  X(Invalid, Invalid, 0x00)      \
  X(Bool, Bool, 0x01)            \
  X(Byte, Byte, 0x24)            \
  X(Int16, I16, 0x21)            \
  X(UInt16, U16, 0x25)           \
  X(Int32, I32, 0x22)            \
  X(UInt32, U32, 0x26)           \
  X(Int64, I64, 0x23)            \
  X(UInt64, U64, 0x27)           \
  X(Double, F64, 0x2B)           \
  X(Point2D, P2D, 0x6B)          \
  X(Point3D, P3D, 0xAB)          \
  X(Point4D, P4D, 0xEB)          \
  X(Point2DInt, P2I, 0x62)       \
  X(Point3DInt, P3I, 0xA2)       \
  X(Point4DInt, P4I, 0xE2)       \
  X(ByteArr, ByteArr, 0x34)      \
  X(UInt16Arr, U16Arr, 0x35)     \
  X(DoubleArr, F64Arr, 0x3B)     \
  X(Point2DArr, P2DArr, 0x7B)    \
  X(Point3DArr, P3DArr, 0xBB)    \
  X(Point4DArr, P4DArr, 0xFB)    \
  X(Point2DIntArr, P2IArr, 0x72) \
  X(Point3DIntArr, P3IArr, 0xB2) \
  X(Point4DIntArr, P4IArr, 0xF2)

#define KELVO_NAMED(name, acronym, type) name = type,
#define KELVO_ACRONYM(name, acronym, type) acronym = type,
KELVO_ENUM(CommandValueType, std::uint8_t, KELVO_VALUE_TYPES(KELVO_NAMED))
KELVO_ENUM(CommandValueTypeAcronym, std::uint8_t, KELVO_VALUE_TYPES(KELVO_ACRONYM))
#undef KELVO_NAMED
#undef KELVO_ACRONYM

// Reading a type byte by its bits.
struct ValueTypeBits {
  static constexpr bool IsValueType(std::uint8_t type) { return (type & CommandValueFlags::ValueType) != 0; }
  static constexpr bool IsUnsigned(std::uint8_t type) { return (type & CommandValueFlags::Unsigned) != 0; }
  static constexpr bool IsFloatingPoint(std::uint8_t type) {
    return (type & CommandValueFlags::FloatingPoint) != 0;
  }
  static constexpr bool IsArray(std::uint8_t type) { return (type & CommandValueFlags::Array) != 0; }
  static constexpr bool IsPoint(std::uint8_t type) {
    return IsValueType(type) && (type & CommandValueFlags::Point4D) != 0;
  }
  // Coordinates of a point: 2, 3 or 4; 1 for what is no point.
  static constexpr unsigned GetDimensions(std::uint8_t type) { return (type >> 6) + 1U; }
  // Bytes of one coordinate or scalar. Deliberate oddity: a Bool's size class says 2, though it takes one byte.
  static constexpr unsigned GetBytes(std::uint8_t type) { return 1U << (type & 3U); }
  // Bytes of one element: of the scalar, the whole point, or an array's element.
  static constexpr std::size_t ElementWidth(std::uint8_t type) {
    if (type == CommandValueType::Bool) return 1;
    return std::size_t{GetBytes(type)} * GetDimensions(type);
  }
  static constexpr std::uint8_t ElementType(std::uint8_t type) {
    return static_cast<std::uint8_t>(type & ~CommandValueFlags::Array);
  }
};

// The type byte that a C++ type is written with.
template <class T>
consteval std::uint8_t ScalarTypeByte() {
  if constexpr (std::is_same_v<T, bool>) {
    return CommandValueType::Bool;
  } else if constexpr (std::is_same_v<T, std::uint8_t> || std::is_same_v<T, char>) {
    return CommandValueType::Byte;
  } else if constexpr (std::is_arithmetic_v<T>) {
    static_assert(std::is_floating_point_v<T> ? sizeof(T) == 8 : sizeof(T) > 1, "no card knows such a value");
    return static_cast<std::uint8_t>(CommandValueFlags::ValueType | std::countr_zero(sizeof(T)) |
                                     (std::is_floating_point_v<T>
                                          ? CommandValueFlags::FloatingPoint
                                          : (std::is_unsigned_v<T> ? CommandValueFlags::Unsigned : 0)));
  } else {
    return static_cast<std::uint8_t>(ScalarTypeByte<typename T::Element>() | (T::Dimensions - 1) << 6);
  }
}

template <class T>
inline constexpr std::uint8_t TypeByteOf = ScalarTypeByte<T>();
template <class T>
inline constexpr std::uint8_t TypeByteOf<std::span<const T>> = ScalarTypeByte<T>() | CommandValueFlags::Array;

static_assert(TypeByteOf<std::int32_t> == CommandValueType::Int32);
static_assert(TypeByteOf<std::uint64_t> == CommandValueType::UInt64);
static_assert(TypeByteOf<Point4DInt> == CommandValueType::Point4DInt);
static_assert(TypeByteOf<std::span<const Point3D>> == CommandValueType::Point3DArr);
static_assert(TypeByteOf<std::span<const std::uint16_t>> == CommandValueType::UInt16Arr);

inline constexpr std::size_t ArrayCountBytes = 3;

// Big-endian 24-bit numbers: byte counts and element counts.
inline void PutUInt24(unsigned char* at, std::size_t value) {
  at[0] = static_cast<unsigned char>(value >> 16);
  at[1] = static_cast<unsigned char>(value >> 8);
  at[2] = static_cast<unsigned char>(value);
}
inline std::size_t GetUInt24(const unsigned char* at) {
  return std::size_t{at[0]} << 16 | std::size_t{at[1]} << 8 | at[2];
}

// Bytes of a value, its type byte included.
template <class T>
constexpr std::size_t ValueSize(const T&) {
  return 1 + sizeof(T);
}
template <class T>
constexpr std::size_t ValueSize(const std::span<const T>& elements) {
  return 1 + ArrayCountBytes + elements.size_bytes();
}

// Writes a value and returns the place behind it.
template <class T>
unsigned char* PutValue(unsigned char* at, const T& value) {
  *at = TypeByteOf<T>;
  std::memcpy(at + 1, &value, sizeof value);
  return at + 1 + sizeof value;
}
template <class T>
unsigned char* PutValue(unsigned char* at, const std::span<const T>& elements) {
  *at = TypeByteOf<std::span<const T>>;
  PutUInt24(at + 1, elements.size());
  at += 1 + ArrayCountBytes;
  if (!elements.empty()) std::memcpy(at, elements.data(), elements.size_bytes());
  return at + elements.size_bytes();
}

}  // namespace VELTRO::KELVO::ClientLib
