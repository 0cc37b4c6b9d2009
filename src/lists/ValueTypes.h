// The C++ types of values: what treats every type of value goes through VisitValueType.
#pragma once

#include "lists/CommandValue.h"
#include "lists/FixedTable.h"

namespace VELTRO::KELVO::ClientLib {

template <class... T>
struct TypeList {};

// The commonest first.
using ScalarTypes =
    TypeList<Point2D, double, std::int32_t, Point3D, bool, std::uint8_t, std::int16_t, std::uint16_t,
             std::uint32_t, std::int64_t, std::uint64_t, Point4D, Point2DInt, Point3DInt, Point4DInt>;
using ElementTypes = TypeList<std::uint8_t, std::uint16_t, double, Point2D, Point3D, Point4D, Point2DInt,
                              Point3DInt, Point4DInt>;

template <class T>
inline constexpr bool IsArrayType = false;
template <class T>
inline constexpr bool IsArrayType<std::span<const T>> = true;

template <class T>
inline constexpr bool IsPointType = false;
template <std::size_t N, class T>
inline constexpr bool IsPointType<Point<N, T>> = true;

// Whether values of the type have a text: all but arrays of four-dimensional points.
template <class T>
inline constexpr bool HasText = true;
template <class T>
inline constexpr bool HasText<std::span<const Point<4, T>>> = false;

// The acronym of a type byte; empty for an unknown one.
constexpr std::string_view AcronymOf(std::uint8_t type) {
#define KELVO_ACRONYM_CASE(name, acronym, byte) \
  case byte:                                    \
    return #acronym;
  switch (type) {
    KELVO_VALUE_TYPES(KELVO_ACRONYM_CASE)
    default:
      return {};
  }
#undef KELVO_ACRONYM_CASE
}

#define KELVO_ONE(name, acronym, type) +1
#define KELVO_BY_ACRONYM(name, acronym, type) {NameKey(#acronym), CommandValueType::name},
inline constexpr FixedTable<CommandValueType::_enumerated, 0 KELVO_VALUE_TYPES(KELVO_ONE)> TypesByAcronym(
    {{KELVO_VALUE_TYPES(KELVO_BY_ACRONYM)}});
#undef KELVO_ONE
#undef KELVO_BY_ACRONYM

// Calls `visit` with a std::type_identity of the C++ type of the values: a scalar, a point, or a span of const
// elements. False for the type byte of no value.
template <class... Scalars, class... Elements>
bool VisitValueType(std::uint8_t type, auto&& visit, TypeList<Scalars...>, TypeList<Elements...>) {
  return ((type == TypeByteOf<Scalars> ? (visit(std::type_identity<Scalars>()), true) : false) || ...) ||
         ((type == TypeByteOf<std::span<const Elements>>
               ? (visit(std::type_identity<std::span<const Elements>>()), true)
               : false) ||
          ...);
}
bool VisitValueType(std::uint8_t type, auto&& visit) {
  return VisitValueType(type, visit, ScalarTypes(), ElementTypes());
}

}  // namespace VELTRO::KELVO::ClientLib
