// The text form of records: every field as its name, "=" and its value, the version last, ", " between them.
// Numbers are as a default output stream of the C locale writes them.
#pragma once

#include <charconv>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "common/Point.h"
#include "common/Transform3D.h"
#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

class RecordText {
 public:
  template <class T>
  void Field(std::string_view name, const T& value) {
    if (!text_.empty()) text_ += ", ";
    text_.append(name).append("=");
    Value(value);
  }
  std::string Take() { return std::move(text_); }

  template <class T>
  static std::string Of(const T& value) {
    RecordText text;
    text.Value(value);
    return text.Take();
  }

 private:
  void Value(bool value) { text_ += value ? "true" : "false"; }
  void Value(double value);
  template <class T>
  requires std::is_integral_v<T>
  void Value(T value) { text_ += std::to_string(value); }
  template <class T>
  requires IsReflectiveEnum<T>
  void Value(const T& value) { text_ += value._to_string(); }
  void Value(const std::string& value) { text_ += value; }
  template <IsRecord T>
  void Value(const T& value) {
    text_.append("{ ").append(value.ToString()).append(" }");
  }
  // A group of fields that has a text of its own.
  template <HasFields T>
  requires(!IsRecord<T>) && requires(const T& value) { value.ToString(); }
  void Value(const T& value) { text_ += value.ToString(); }
  // A group without a version stands without braces.
  template <HasFields T>
  void Value(const T& value) {
    RecordText fields;
    WriteFields(value, fields);
    text_ += fields.Take();
  }
  template <std::size_t N>
  void Value(const Point<N, double>& point) {
    RecordText coordinates;
    for (std::size_t i = 0; i < N; ++i) coordinates.Field(CoordinateNames.substr(i, 1), point.Coordinates[i]);
    text_.append("{ ").append(coordinates.Take()).append(" }");
  }
  void Value(const Transform3D& transform);
  template <class T>
  void Value(const std::vector<T>& values) {
    Elements("[ ", values, " ]");
  }
  template <class T>
  void Value(const std::set<T>& values) {
    Elements("[ ", values, " ]");
  }
  template <class Key, class T>
  void Value(const std::map<Key, T>& values) {
    Elements("[ ", values, " ]");
  }
  template <class Key, class T>
  void Value(const std::pair<const Key, T>& entry) {
    Value(entry.first);
    text_ += "=";
    Value(entry.second);
  }
  template <std::size_t N>
  void Value(const std::array<double, N>& values) {
    Elements("{ ", values, " }");
  }
  template <class Values>
  void Elements(const char* begin, const Values& values, const char* end) {
    text_ += begin;
    const char* separator = "";
    for (const auto& value : values) {
      text_ += std::exchange(separator, ", ");
      Value(value);
    }
    text_ += end;
  }

  std::string text_;
};

// A record whose text has another order hides this with a function of its own.
template <class Derived>
void WriteFields(const Derived& record, RecordText& text) {
  Derived::ForEachField(record, [&](const char* name, const auto& value) { text.Field(name, value); });
}

// For the command log.
template <class T>
requires((HasFields<T> && !IsRecord<T>) || std::is_same_v<T, Point3D>) std::string LogText(const T& value) {
  return RecordText::Of(value);
}

template <class Derived>
std::string Record<Derived>::ToString() const {
  RecordText text;
  WriteFields(static_cast<const Derived&>(*this), text);
  text.Field("ConfigVersion", ConfigVersion);
  return text.Take();
}

}  // namespace VELTRO::KELVO::ClientLib
