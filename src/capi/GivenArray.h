// Values that come in an array of the caller's.
#pragma once

#include <cstdint>
#include <vector>

#include "capi/Frame.h"

namespace VELTRO::KELVO::ClientLib {

// A copy of them; an array without any may be null.
template <class T>
std::vector<T> Given(const T* values, std::uint32_t count, const char* name) {
  if (count > 0) NotNull(values, name);
  return std::vector<T>(values, values + count);
}

}  // namespace VELTRO::KELVO::ClientLib
