// From the structs of C to their descriptions. For the table alone.
#pragma once

#include <cstddef>

#include "Table.h"

namespace KelvoPython {

template <class T>
struct Describe;

template <class T, Kind What>
struct Scalar {
  static constexpr Type type{.What = What, .Size = sizeof(T)};
};
template <>
struct Describe<bool> : Scalar<bool, Kind::Bool> {};
template <>
struct Describe<std::int32_t> : Scalar<std::int32_t, Kind::Int32> {};
template <>
struct Describe<std::uint32_t> : Scalar<std::uint32_t, Kind::UInt32> {};
template <>
struct Describe<std::uint16_t> : Scalar<std::uint16_t, Kind::UInt16> {};
template <>
struct Describe<double> : Scalar<double, Kind::Double> {};

template <std::size_t Size>
struct Describe<char[Size]> {
  static constexpr Type type{.What = Kind::Text, .Size = Size};
};
template <class T, std::size_t Count>
struct Describe<T[Count]> {
  static constexpr Type type{
      .What = Kind::Array, .Size = sizeof(T[Count]), .Count = Count, .Element = &Describe<T>::type};
};

// A struct of Count and Items.
template <class T>
struct ListOf {
  using Items = decltype(T::Items);
  static_assert(offsetof(T, Count) == 0);
  static constexpr Type type{.What = Kind::List,
                             .Size = sizeof(T),
                             .Count = std::extent_v<Items>,
                             .Element = &Describe<std::remove_extent_t<Items>>::type,
                             .Items = offsetof(T, Items)};
};

template <class T, std::size_t Count>
constexpr Type RecordType(const char* name, const Field (&fields)[Count]) {
  return {.What = Kind::Record, .Size = sizeof(T), .Name = name, .Fields = fields, .FieldCount = Count};
}

}  // namespace KelvoPython
