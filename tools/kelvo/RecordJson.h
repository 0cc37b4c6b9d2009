// Records of settings as JSON: objects with the records' own names of fields, enumerations by name.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "Failure.h"
#include "Output.h"
#include "SoundsLike.h"
#include "common/Point.h"
#include "common/Transform3D.h"
#include "config/Record.h"

namespace VELTRO::KELVO::Tool::RecordJson {

using ClientLib::HasFields;
using ClientLib::IsReflectiveEnum;

inline Failure Wrong(const std::string& path, const std::string& wanted, const Json& given) {
  return WrongUsage(path + " takes " + wanted + ", not " + Shown(given) + ".");
}

template <class T>
struct Form {
  static_assert(std::is_integral_v<T>);
  static Json To(const T& value) { return value; }
  static void From(const Json& json, T& value, const std::string& path) {
    if constexpr (std::is_same_v<T, bool>) {
      if (!json.is_boolean()) throw Wrong(path, "true or false", json);
      value = json.get<bool>();
    } else {
      const auto number = json.is_number_integer() ? json.get<std::int64_t>() : std::int64_t{-1} << 62;
      if (number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max()) {
        throw Wrong(path, "a whole number of its range", json);
      }
      value = static_cast<T>(number);
    }
  }
};

// JSON has no other numbers than finite ones: these are texts.
template <>
struct Form<double> {
  static Json To(double value) {
    if (std::isfinite(value)) return value;
    return std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf";
  }
  static void From(const Json& json, double& value, const std::string& path) {
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    if (json == "nan") {
      value = std::numeric_limits<double>::quiet_NaN();
    } else if (json == "inf" || json == "-inf") {
      value = json == "inf" ? Infinity : -Infinity;
    } else if (json.is_number()) {
      value = json.get<double>();
    } else {
      throw Wrong(path, "a number", json);
    }
  }
};

template <>
struct Form<std::string> {
  static Json To(const std::string& value) { return value; }
  static void From(const Json& json, std::string& value, const std::string& path) {
    if (!json.is_string()) throw Wrong(path, "a text", json);
    value = json.get<std::string>();
  }
};

// A number that has no name stays a number.
template <IsReflectiveEnum T>
struct Form<T> {
  static Json To(const T& value) {
    const std::string name = value._to_string();
    return std::to_string(value._to_integral()) == name ? Json(value._to_integral()) : Json(name);
  }
  static void From(const Json& json, T& value, const std::string& path) {
    if (json.is_number_integer() && T::_is_valid(json.get<std::int64_t>())) {
      value = T::_from_integral(json.get<std::int64_t>());
    } else if (!json.is_string() || !FromName(json.get<std::string>(), value)) {
      const std::vector<std::string> names(T::_names().begin(), T::_names().end());
      std::string list;
      for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
      throw WrongUsage(path + " takes one of " + list + ", not " + Shown(json) + ".",
                       DidYouMean(Shown(json), names));
    }
  }

 private:
  // Flags as "X|Z".
  static bool FromName(const std::string& name, T& value) {
    std::int64_t bits = 0;
    for (std::size_t begin = 0; begin <= name.size();) {
      const std::size_t end = std::min(name.find('|', begin), name.size());
      const auto one = T::_from_string_nothrow(name.substr(begin, end - begin));
      if (!one) return false;
      bits |= one->_to_integral();
      begin = end + 1;
    }
    if (!T::_is_valid(bits)) return false;
    value = T::_from_integral(bits);
    return true;
  }
};

template <HasFields T>
struct Form<T> {
  static Json To(const T& record) {
    Json json = Json::object();
    T::ForEachField(record, [&](const char* name, const auto& field) {
      json[name] = Form<std::remove_cvref_t<decltype(field)>>::To(field);
    });
    return json;
  }
  // What the object does not name stays.
  static void From(const Json& json, T& record, const std::string& path) {
    if (!json.is_object()) throw Wrong(path, "an object", json);
    std::vector<std::string> names;
    T::ForEachField(record, [&](const char* name, auto& field) {
      names.emplace_back(name);
      if (json.contains(name)) {
        Form<std::remove_cvref_t<decltype(field)>>::From(json.at(name), field, path + "." + name);
      }
    });
    for (const auto& [key, value] : json.items()) {
      if (std::ranges::find(names, key) == names.end()) {
        throw WrongUsage("There is no field '" + path + "." + key + "'.", DidYouMean(key, names));
      }
    }
  }
};

template <class Values>
Json FixedTo(const Values& values) {
  Json json = Json::array();
  for (const double value : values) json.push_back(Form<double>::To(value));
  return json;
}

// As many elements as there are.
template <class Values>
void FromFixed(const Json& json, Values& values, const std::string& path) {
  if (!json.is_array() || json.size() != values.size()) {
    throw Wrong(path, std::to_string(values.size()) + " numbers in brackets", json);
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    Form<double>::From(json[i], values[i], path + "[" + std::to_string(i) + "]");
  }
}

template <std::size_t N>
struct Form<std::array<double, N>> {
  static Json To(const std::array<double, N>& values) { return FixedTo(values); }
  static void From(const Json& json, std::array<double, N>& values, const std::string& path) {
    FromFixed(json, values, path);
  }
};

template <std::size_t N>
struct Form<ClientLib::Point<N, double>> {
  static Json To(const ClientLib::Point<N, double>& point) { return FixedTo(point.Coordinates); }
  static void From(const Json& json, ClientLib::Point<N, double>& point, const std::string& path) {
    FromFixed(json, point.Coordinates, path);
  }
};

template <>
struct Form<ClientLib::Transform3D> {
  static Json To(const ClientLib::Transform3D& transform) {
    return {{"A", FixedTo(transform.A)}, {"B", FixedTo(transform.B)}};
  }
  static void From(const Json& json, ClientLib::Transform3D& transform, const std::string& path) {
    if (!json.is_object() || json.size() != 2 || !json.contains("A") || !json.contains("B")) {
      throw Wrong(path, "an object of A and B", json);
    }
    FromFixed(json.at("A"), transform.A, path + ".A");
    FromFixed(json.at("B"), transform.B, path + ".B");
  }
};

// Elements that are there keep what an object leaves out.
template <class T>
struct Form<std::vector<T>> {
  static Json To(const std::vector<T>& values) {
    Json json = Json::array();
    for (const T& value : values) json.push_back(Form<T>::To(value));
    return json;
  }
  static void From(const Json& json, std::vector<T>& values, const std::string& path) {
    if (!json.is_array()) throw Wrong(path, "a list in brackets", json);
    values.resize(json.size(), ClientLib::Blank<T>());
    for (std::size_t i = 0; i < values.size(); ++i) {
      Form<T>::From(json[i], values[i], path + "[" + std::to_string(i) + "]");
    }
  }
};

template <class T>
struct Form<std::set<T>> {
  static Json To(const std::set<T>& values) {
    return Form<std::vector<T>>::To({values.begin(), values.end()});
  }
  static void From(const Json& json, std::set<T>& values, const std::string& path) {
    std::vector<T> list;
    Form<std::vector<T>>::From(json, list, path);
    values = {list.begin(), list.end()};
  }
};

// Keys are numbers.
template <class T>
struct Form<std::map<std::int32_t, T>> {
  static Json To(const std::map<std::int32_t, T>& values) {
    Json json = Json::object();
    for (const auto& [key, value] : values) json[std::to_string(key)] = Form<T>::To(value);
    return json;
  }
  static void From(const Json& json, std::map<std::int32_t, T>& values, const std::string& path) {
    if (!json.is_object()) throw Wrong(path, "an object", json);
    std::map<std::int32_t, T> taken;
    for (const auto& [key, value] : json.items()) {
      std::int32_t number = 0;
      const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), number);
      if (error != std::errc() || end != key.data() + key.size()) {
        throw WrongUsage("'" + Clean(key) + "' in " + path + " is no number.");
      }
      const auto before = values.find(number);
      T& one = taken[number] = before == values.end() ? T() : before->second;
      Form<T>::From(value, one, path + "[" + key + "]");
    }
    values = std::move(taken);
  }
};

}  // namespace VELTRO::KELVO::Tool::RecordJson
