// All records, and how to give every field a value of its own.
#pragma once

#include <string>
#include <type_traits>

#include "config/LaserConfig.h"
#include "config/MotfConfig.h"
#include "config/ProcessVariables.h"
#include "config/QuadratureDecoderConfig.h"
#include "config/ScannerConfig.h"
#include "config/ScannerMonitoringConfig.h"
#include "config/SystemConfig.h"
#include "services/EventConfig.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::Test {

using namespace ClientLib;

// Gives every field that it comes to another value than its default and, as far as there are so many, than the
// fields before it.
class Filler {
 public:
  template <class T>
  void Fill(T& field) {
    if constexpr (std::is_same_v<T, bool>) {
      field = !field;
    } else if constexpr (std::is_arithmetic_v<T>) {
      field = static_cast<T>(++count_ + 0.5);
    } else if constexpr (IsReflectiveEnum<T>) {
      field = field == T::_values()[0] ? T::_values()[1] : T::_values()[0];
    } else if constexpr (std::is_same_v<T, std::string>) {
      field = "Asia/Kolkata";  // the card takes no other texts than names of time zones
    } else if constexpr (HasFields<T>) {
      T::ForEachField(field, [this](const char*, auto& part) { this->Fill(part); });
    } else if constexpr (std::is_same_v<T, Transform3D>) {
      for (std::size_t i = 0; i < 12; ++i) Fill(field[i]);
    } else if constexpr (requires { field.Coordinates; }) {
      Fill(field.Coordinates);
    } else if constexpr (requires { field.try_emplace(0); }) {
      for (const int number : {-7, 3}) Fill(field[number]);
    } else if constexpr (requires { field.insert(0); }) {
      field.insert({-1, 5, ++count_});
    } else {
      if constexpr (requires { field.emplace_back(Blank<typename T::value_type>()); }) {
        field.emplace_back(Blank<typename T::value_type>());
      }
      for (auto& element : field) Fill(element);
    }
  }

 private:
  int count_ = 0;
};

template <class R>
R Filled() {
  R record;
  Filler().Fill(record);
  return record;
}

}  // namespace VELTRO::KELVO::Test
