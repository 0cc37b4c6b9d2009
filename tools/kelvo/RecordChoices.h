// What the fields of records can be, by name.
#pragma once

#include <string>
#include <type_traits>

#include "Output.h"
#include "config/Record.h"

namespace VELTRO::KELVO::Tool::RecordJson {

// The key of what is the same for all elements of a list or a map.
inline constexpr const char* EveryElement = "[]";

// In the form that the record has as JSON: the names that an enumeration has, or true and false; null for other values.
template <class T>
Json Choices() {
  if constexpr (std::is_same_v<T, bool>) {
    return {"true", "false"};
  } else if constexpr (ClientLib::IsReflectiveEnum<T>) {
    return std::vector<std::string>(T::_names().begin(), T::_names().end());
  } else if constexpr (ClientLib::HasFields<T>) {
    Json json = Json::object();
    const T record{};
    T::ForEachField(record, [&](const char* name, const auto& field) {
      json[name] = Choices<std::remove_cvref_t<decltype(field)>>();
    });
    return json;
  } else if constexpr (requires { typename T::mapped_type; }) {
    return {{EveryElement, Choices<typename T::mapped_type>()}};
  } else if constexpr (requires { typename T::value_type; } && !std::is_same_v<T, std::string>) {
    return {{EveryElement, Choices<typename T::value_type>()}};
  } else {
    return nullptr;
  }
}

}  // namespace VELTRO::KELVO::Tool::RecordJson
