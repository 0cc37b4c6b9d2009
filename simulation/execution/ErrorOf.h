#pragma once

#include <exception>
#include <new>
#include <optional>
#include <string>

namespace VELTRO::KELVO::Simulation {

inline constexpr const char* OutOfMemory = "Out of memory.";  // short enough for a string to take no memory

// What `act` fails with, if it does, for want of memory also.
template <class F>
std::optional<std::string> ErrorOf(F act) noexcept {
  try {
    act();
    return std::nullopt;
  } catch (const std::bad_alloc&) {
    return OutOfMemory;
  } catch (const std::exception& error) {
    try {
      return error.what();
    } catch (const std::bad_alloc&) {
      return OutOfMemory;
    }
  }
}

}  // namespace VELTRO::KELVO::Simulation
