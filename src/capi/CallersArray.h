// Values on their way into an array of the caller's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "capi/Frame.h"

namespace VELTRO::KELVO::ClientLib {

template <class T>
class CallersArray {
 public:
  // The array, the name of its parameter, how many values it has room for, and where the parameter "count" receives
  // their number. Throws as NotNull does; an array without room may be null.
  CallersArray(T* values, const char* name, std::uint32_t capacity, std::uint32_t* count)
      : values_(values), capacity_(capacity), count_(*NotNull(count, "count")) {
    if (capacity > 0) NotNull(values, name);
  }

  // For functions that tell the number even when the array is too small.
  void TellCount(std::size_t count) { count_ = static_cast<std::uint32_t>(count); }
  // Writes all of the values and their number; or nothing, and throws std::runtime_error `tooSmall`.
  template <class Values>
  void Fill(const Values& values, const char* tooSmall) {
    Fill(values, tooSmall, [](const auto& value, T& element) { element = value; });
  }
  // The same with put(value, element) for each.
  template <class Values, class Put>
  void Fill(const Values& values, const char* tooSmall, Put put) {
    if (values.size() > capacity_) throw std::runtime_error(tooSmall);
    T* element = values_;
    for (const auto& value : values) put(value, *element++);
    TellCount(values.size());
  }

 private:
  T* const values_;
  const std::uint32_t capacity_;
  std::uint32_t& count_;
};

}  // namespace VELTRO::KELVO::ClientLib
