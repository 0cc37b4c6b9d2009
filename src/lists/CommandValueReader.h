// Walks the values of one command in order. A payload comes from anywhere, the network included: every step
// is checked and throws std::runtime_error "Command value is of type A, not B." or "Command payload is
// malformed.".
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "lists/Command.h"

namespace VELTRO::KELVO::ClientLib {

// An array value where it lies.
class Command::ArrayValue {
 public:
  ArrayValue(std::uint8_t type, std::span<const unsigned char> elements) : type_(type), elements_(elements) {}

  std::uint8_t GetType() const { return type_; }
  std::size_t GetCount() const { return elements_.size() / ValueTypeBits::ElementWidth(type_); }

  std::uint8_t AsByte(std::size_t i) const { return As<std::uint8_t>(i); }
  std::uint16_t AsUInt16(std::size_t i) const { return As<std::uint16_t>(i); }
  double AsDouble(std::size_t i) const { return As<double>(i); }
  Point2D AsPoint2D(std::size_t i) const { return As<Point2D>(i); }
  Point3D AsPoint3D(std::size_t i) const { return As<Point3D>(i); }
  Point2DInt AsPoint2DInt(std::size_t i) const { return As<Point2DInt>(i); }
  Point3DInt AsPoint3DInt(std::size_t i) const { return As<Point3DInt>(i); }

  // Element i, which must be of type T.
  template <class T>
  T As(std::size_t i) const {
    T value;
    std::memcpy(&value, Element(TypeByteOf<std::span<const T>>, i), sizeof value);
    return value;
  }

  // The elements' text: a point as "( ", its text and " ) ", a scalar and a blank. Throws std::runtime_error
  // "Illegal array value type!" for elements of any other type.
  std::string ToString() const;

 private:
  const unsigned char* Element(std::uint8_t arrayType, std::size_t i) const;

  std::uint8_t type_;
  std::span<const unsigned char> elements_;
};

// The classifying operations, IsPoint and the like, take a type byte such as PeekType gives.
class Command::CommandValueReader : public ValueTypeBits {
 public:
  CommandValueReader() = default;
  explicit CommandValueReader(std::span<const unsigned char> payload) { SetPayload(payload); }

  void SetCommand(const Command& command) { SetPayload(command.payload_); }
  // Allows ReplaceInt32.
  void SetNonConstCommand(Command& command);
  void SetPayload(std::span<const unsigned char> payload);
  void SetNonConstPayload(std::span<unsigned char> payload);

  // Goes back to the first value.
  void Reset();
  bool HasNext() const { return position_ < payload_.size(); }
  // The next value's type byte.
  std::uint8_t PeekType() const;
  // The same, checked to be one of the known types.
  CommandValueType GetType() const;
  bool NextIsArray() const { return IsArray(PeekType()); }
  bool CompareNextType(CommandValueType type) const { return HasNext() && PeekType() == type; }
  void SkipNext();

  bool AsBool();
  std::uint8_t AsByte() { return As<std::uint8_t>(); }
  std::int16_t AsInt16() { return As<std::int16_t>(); }
  std::uint16_t AsUInt16() { return As<std::uint16_t>(); }
  std::int32_t AsInt32() { return As<std::int32_t>(); }
  std::uint32_t AsUInt32() { return As<std::uint32_t>(); }
  std::int64_t AsInt64() { return As<std::int64_t>(); }
  std::uint64_t AsUInt64() { return As<std::uint64_t>(); }
  double AsDouble() { return As<double>(); }
  Point2D AsPoint2D() { return As<Point2D>(); }
  Point3D AsPoint3D() { return As<Point3D>(); }
  Point4D AsPoint4D() { return As<Point4D>(); }
  Point2DInt AsPoint2DInt() { return As<Point2DInt>(); }
  Point3DInt AsPoint3DInt() { return As<Point3DInt>(); }
  Point4DInt AsPoint4DInt() { return As<Point4DInt>(); }
  ArrayValue AsArray();
  // The next value, which must be an array of T.
  template <class T>
  ArrayValue AsArrayOf() {
    checkType(TypeByteOf<std::span<const T>>);
    return AsArray();
  }

  // The next value, which must be of type T.
  template <class T>
  T As() {
    T value;
    std::memcpy(&value, Take(TypeByteOf<T>), sizeof value);
    return value;
  }

  // Overwrites the next value, an Int32, where it lies. Only after a SetNonConst.
  void ReplaceInt32(std::int32_t value);

 private:
  void checkType(std::uint8_t type) const;
  void checkFlag(std::uint8_t flag) const;
  // The data of the next value, which must be of the type, and moves past it.
  const unsigned char* Take(std::uint8_t type);
  // Bytes of the next value behind its type byte.
  std::size_t DataSize() const;

  std::span<const unsigned char> payload_;
  unsigned char* writable_ = nullptr;
  std::size_t position_ = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
