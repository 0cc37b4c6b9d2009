// Records and their plain structs: field by field, by name.
#pragma once

#include <cstddef>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "capi/CallersArray.h"
#include "capi/Frame.h"
#include "capi/TextBuffer.h"
#include "common/Point.h"
#include "common/Transform3D.h"
#include "config/RecordAPI.h"
#include "kelvo/KelvoTypes.h"

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
inline void FromRecord(const Point4D& field, vlPointXYZM& flat) {
  flat = {field.X(), field.Y(), field.Z(), field.W()};
}
inline void ToRecord(const vlPointXYZM& flat, Point4D& field) {
  field = {flat.X, flat.Y, flat.Z, flat.M};
}

inline void FromRecord(const std::array<double, 2>& field, vlPoint2D& flat) {
  flat = {field[0], field[1]};
}
inline void ToRecord(const vlPoint2D& flat, std::array<double, 2>& field) {
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

// What has no room in the plain struct, or a count there that is none.
class DoesNotFit : public std::runtime_error {
 public:
  DoesNotFit() : runtime_error("Error converting a configuration.") {}
};

// When `work` throws DoesNotFit and record R has words for it, throws std::runtime_error with them: of its own, or
// "Error converting NAME WAY C.".
template <class R, class Work>
void Converting(std::string_view way, Work&& work) {
  try {
    work();
  } catch (const DoesNotFit&) {
    if constexpr (requires { R::TooMany; }) {
      throw std::runtime_error(way == "to" ? R::TooMany : R::IllegalNumber);
    } else if constexpr (requires { R::Name; }) {
      throw std::runtime_error(std::string("Error converting ").append(R::Name) + " " + std::string(way) +
                               " C.");
    } else {
      throw;
    }
  }
}

template <HasFields R, class F>
void FromRecord(const R& record, F& flat);
template <HasFields R, class F>
void ToRecord(const F& flat, R& record);
template <class T, class F>
void FromRecord(const std::vector<T>& field, F& flat);

// A text, and the array that has room for it and its terminating zero.
template <std::size_t N>
void FromRecord(const std::string& field, char (&flat)[N]) {
  if (field.size() >= N) throw DoesNotFit();
  std::memcpy(flat, field.c_str(), field.size() + 1);
}
template <std::size_t N>
void ToRecord(const char (&flat)[N], std::string& field) {
  if (std::memchr(flat, 0, N) == nullptr) throw DoesNotFit();
  field = flat;
}

// An entry of a map, and the struct of its number and its value.
template <class Key, class T, class F>
void FromRecord(const std::pair<const Key, T>& entry, F& flat) {
  FromRecord(entry.first, flat.Number);
  FromRecord(entry.second, flat.Value);
}

// Lists, sets and maps, and the struct { uint32_t Count; ... Items[N]; } that has room for N of their elements.
template <class Values, class F>
void FromValues(const Values& values, F& flat) {
  if (values.size() > std::size(flat.Items)) throw DoesNotFit();
  flat.Count = static_cast<std::uint32_t>(values.size());
  auto* item = flat.Items;
  for (const auto& value : values) FromRecord(value, *item++);
}
template <class F>
auto ItemsOf(const F& flat) {
  if (flat.Count > std::size(flat.Items)) throw DoesNotFit();
  return std::span(flat.Items, flat.Count);
}
template <class T, class F>
void FromRecord(const std::vector<T>& field, F& flat) {
  FromValues(field, flat);
}
template <class T, class F>
void ToRecord(const F& flat, std::vector<T>& field) {
  field.clear();
  for (const auto& item : ItemsOf(flat)) ToRecord(item, field.emplace_back(Blank<T>()));
}
template <class T, class F>
void FromRecord(const std::set<T>& field, F& flat) {
  FromValues(field, flat);
}
template <class T, class F>
void ToRecord(const F& flat, std::set<T>& field) {
  field.clear();
  for (const auto& item : ItemsOf(flat)) {
    T value = Blank<T>();
    ToRecord(item, value);
    field.insert(std::move(value));
  }
}
template <class Key, class T, class F>
void FromRecord(const std::map<Key, T>& field, F& flat) {
  FromValues(field, flat);
}
// A number that comes twice has no place in the map, either.
template <class Key, class T, class F>
void ToRecord(const F& flat, std::map<Key, T>& field) {
  field.clear();
  for (const auto& item : ItemsOf(flat)) {
    Key number = Blank<Key>();
    ToRecord(item.Number, number);
    const auto [entry, isNew] = field.try_emplace(std::move(number), Blank<T>());
    if (!isNew) throw DoesNotFit();
    ToRecord(item.Value, entry->second);
  }
}

template <HasFields R, class F>
void FromRecord(const R& record, F& flat) {
  if constexpr (IsRecord<R>) flat.ConfigVersion = record.ConfigVersion;
  // When an inner record does not fit, the error names the inner one. On the way back (Taken) it names the outermost.
  Converting<R>("to", [&] {
    R::ForEachPair(record, flat, [](const auto& field, auto& namesake) { FromRecord(field, namesake); });
  });
}
template <HasFields R, class F>
void ToRecord(const F& flat, R& record) {
  if constexpr (IsRecord<R>) record.ConfigVersion = flat.ConfigVersion;
  R::ForEachPair(record, flat, [](auto& field, const auto& namesake) { ToRecord(namesake, field); });
}

// Records, one by one, into the caller's array of plain structs: all of them, or none and the text `tooSmall` or that of
// a record that does not fit. When the array is too small, their number is told.
template <class F, class R>
void FillArray(CallersArray<F>& array, const std::vector<R>& records, const char* tooSmall) {
  std::vector<F> converted(records.size());
  for (std::size_t i = 0; i < records.size(); ++i) FromRecord(records[i], converted[i]);
  array.TellCount(records.size());
  array.Fill(converted, tooSmall);
}

// The exported functions of a record, but for their names and that of the parameter.

template <class R, class F>
std::int32_t Init(F* flat, const char* name = "config") {
  return Guarded([&] {
    NotNull(flat, name);
    F defaults{};
    FromRecord(R(), defaults);
    *flat = defaults;
  });
}

template <class API, class F>
std::int32_t Get(std::int32_t handle, F* flat, const char* name = "config") {
  return On<API>(handle, [&](API& api) {
    NotNull(flat, name);
    F received{};
    FromRecord(api.GetConfig(), received);
    *flat = received;
  });
}

template <class R, class F>
R Taken(const F* flat, const char* name = "config") {
  R record;
  Converting<R>("from", [&] { ToRecord(*NotNull(flat, name), record); });
  return record;
}

template <class API, class R, class F>
std::int32_t Set(std::int32_t handle, const F* flat, const char* name = "config") {
  return On<API>(handle, [&](API& api) { api.SetConfig(Taken<R>(flat, name)); });
}

template <class API>
std::int32_t Load(std::int32_t handle) {
  return On<API>(handle, [](API& api) { api.LoadConfig(); });
}

template <class API>
std::int32_t Store(std::int32_t handle) {
  return On<API>(handle, [](API& api) { api.StoreConfig(); });
}

template <class R, class F>
std::int32_t ToString(const F* flat, char* buffer, std::uint32_t size, std::uint32_t* length,
                      const char* name = "config") {
  return Guarded([&] { CopyText(Taken<R>(flat, name).ToString(), buffer, size, length); });
}

}  // namespace VELTRO::KELVO::ClientLib::Flat
