// Configuration records: what is common to all of them, written once over the list of their fields.
//
//   class MotfSource : public Record<MotfSource> {
//    public:
//     static constexpr std::int32_t CurrentConfigVersion = 2;
//     KELVO_FIELDS((MotfSourceType, SourceType, MotfSourceType::QuadratureDecoder), (std::int32_t, ModuleID, 0))
//   };
//
// declares a record of version 2 with two fields, each its type, name and default, in the order in which they
// travel. Without the base class it is a group of fields that has no version, as a part of records. Its text, its way
// over the wire (RecordWire.h) and its copy from and to the plain struct of the flat interface (capi/FlatRecord.h)
// follow from that line. A field that has no namesake in the plain struct does not compile. Each record has a line in
// Records.cpp. One that travels by itself tells its WireName, from which its remote methods have their names
// (RecordMethods.h). One whose lists the plain struct may have no room for tells its Name, or the texts TooMany and
// IllegalNumber, for the errors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/ReflectiveEnum.h"
#include "config/IConfigI.h"

#define KELVO_FIELD_MEMBER(field) KELVO_FIELD_MEMBER_OF field
#define KELVO_FIELD_MEMBER_OF(Type, name, ...) Type name = __VA_ARGS__;
#define KELVO_FIELD_VISIT(field) KELVO_FIELD_VISIT_OF field
#define KELVO_FIELD_VISIT_OF(Type, name, ...) visit(#name, self.name);
#define KELVO_FIELD_PAIR(field) KELVO_FIELD_PAIR_OF field
#define KELVO_FIELD_PAIR_OF(Type, name, ...) visit(self.name, flat.name);
#define KELVO_FIELD_COUNT(field) +1

#define KELVO_FIELDS(...)                                                                     \
  KELVO_FOR_EACH(KELVO_FIELD_MEMBER, __VA_ARGS__)                                             \
  static constexpr std::size_t FieldCount = 0 KELVO_FOR_EACH(KELVO_FIELD_COUNT, __VA_ARGS__); \
  /* Calls visit(name, field) for every field but the version, in the order of the wire. */   \
  template <class Self, class Visit>                                                          \
  static void ForEachField(Self& self, Visit&& visit) {                                       \
    KELVO_FOR_EACH(KELVO_FIELD_VISIT, __VA_ARGS__)                                            \
  }                                                                                           \
  /* Calls visit(field, namesake) for the same fields and those of a plain struct. */         \
  template <class Self, class Flat, class Visit>                                              \
  static void ForEachPair(Self& self, Flat& flat, Visit&& visit) {                            \
    KELVO_FOR_EACH(KELVO_FIELD_PAIR, __VA_ARGS__)                                             \
  }

namespace VELTRO::KELVO::ClientLib {

template <class Derived>
class Record : public IConfigI {
 public:
  // Where the version stands among the elements on the wire.
  static constexpr std::size_t VersionPlace = 0;

  std::int32_t ConfigVersion = Derived::CurrentConfigVersion;

  void init() override {
    Derived defaults;
    defaults.ConfigVersion = ConfigVersion;
    static_cast<Derived&>(*this) = defaults;
  }
  std::int32_t GetConfigVersion() const override { return ConfigVersion; }
  std::string ToString() const override;  // RecordText.h
};

// Whether a type is a record, or a group of fields without a version.
template <class T>
concept HasFields = requires {
  T::FieldCount;
};

// Whether a type is a record.
template <class T>
concept IsRecord = HasFields<T> && requires {
  T::CurrentConfigVersion;
};

// Whether a type is one of the reflective enumerations.
template <class T>
concept IsReflectiveEnum = requires {
  T::_is_valid(0);
};

// A value to be read into, of any type that a field or its elements have.
template <class T>
T Blank() {
  if constexpr (IsReflectiveEnum<T>) {
    return T::_values()[0];
  } else {
    return T{};
  }
}

}  // namespace VELTRO::KELVO::ClientLib
