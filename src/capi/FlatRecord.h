// Records and their plain structs: field by field, by name.
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "capi/Frame.h"
#include "capi/TextBuffer.h"
#include "common/Point.h"
#include "common/Transform3D.h"
#include "config/RecordAPI.h"

namespace VELTRO::KELVO::ClientLib::Flat {

// One field. Those that differ more than in their types have an overload of their own, and so have whole records
// of which fields have no counterpart of one kind.
template <class T>
requires std::is_arithmetic_v<T>
void FromRecord(T field, T& flat) {
  flat = field;
}
template <class T>
requires std::is_arithmetic_v<T>
void ToRecord(T flat, T& field) {
  field = flat;
}

template <class T>
requires IsReflectiveEnum<T>
void FromRecord(const T& field, std::int32_t& flat) {
  flat = field._to_integral();
}
// Throws std::runtime_error "NAME::_from_integral: invalid argument".
template <class T>
requires IsReflectiveEnum<T>
void ToRecord(std::int32_t flat, T& field) {
  field = T::_from_integral(flat);
}

inline void FromRecord(const Point3D& field, vlPoint3D& flat) {
  flat = {field.X(), field.Y(), field.Z()};
}
inline void ToRecord(const vlPoint3D& flat, Point3D& field) {
  field = {flat.X, flat.Y, flat.Z};
}
inline void FromRecord(const Point2D& field, vlPoint2D& flat) {
  flat = {field.X(), field.Y()};
}
inline void ToRecord(const vlPoint2D& flat, Point2D& field) {
  field = {flat.X, flat.Y};
}

inline void FromRecord(const Transform3D& field, vlTransform3D& flat) {
  for (std::size_t i = 0; i < field.A.size(); ++i) flat.A[i / 3][i % 3] = field.A[i];
  for (std::size_t i = 0; i < field.B.size(); ++i) flat.b[i] = field.B[i];
}
inline void ToRecord(const vlTransform3D& flat, Transform3D& field) {
  for (std::size_t i = 0; i < field.A.size(); ++i) field.A[i] = flat.A[i / 3][i % 3];
  for (std::size_t i = 0; i < field.B.size(); ++i) field.B[i] = flat.b[i];
}

template <class R, class F>
requires IsRecord<R>
void FromRecord(const R& record, F& flat) {
  flat.ConfigVersion = record.ConfigVersion;
  R::ForEachPair(record, flat, [](const auto& field, auto& namesake) { FromRecord(field, namesake); });
}
template <class R, class F>
requires IsRecord<R>
void ToRecord(const F& flat, R& record) {
  record.ConfigVersion = flat.ConfigVersion;
  R::ForEachPair(record, flat, [](auto& field, const auto& namesake) { ToRecord(namesake, field); });
}

// The exported functions of a record, but for their names.

template <class R, class F>
std::int32_t Init(F* flat) {
  return Guarded([&] {
    NotNull(flat, "config");
    F defaults{};
    FromRecord(R(), defaults);
    *flat = defaults;
  });
}

template <class API, class F>
std::int32_t Get(std::int32_t handle, F* flat) {
  return OnConnection(handle, [&](ConnectionContext& connection) {
    NotNull(flat, "config");
    F received{};
    FromRecord(API(connection.Client).GetConfig(), received);
    *flat = received;
  });
}

template <class R, class F>
R Taken(const F* flat) {
  R record;
  ToRecord(*NotNull(flat, "config"), record);
  return record;
}

template <class API, class R, class F>
std::int32_t Set(std::int32_t handle, const F* flat) {
  return OnConnection(
      handle, [&](ConnectionContext& connection) { API(connection.Client).SetConfig(Taken<R>(flat)); });
}

template <class API>
std::int32_t Load(std::int32_t handle) {
  return OnConnection(handle, [](ConnectionContext& connection) { API(connection.Client).LoadConfig(); });
}

template <class API>
std::int32_t Store(std::int32_t handle) {
  return OnConnection(handle, [](ConnectionContext& connection) { API(connection.Client).StoreConfig(); });
}

template <class R, class F>
std::int32_t ToString(const F* flat, char* buffer, std::uint32_t size, std::uint32_t* length) {
  return Guarded([&] { CopyText(Taken<R>(flat).ToString(), buffer, size, length); });
}

}  // namespace VELTRO::KELVO::ClientLib::Flat
