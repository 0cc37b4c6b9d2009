// What the numbers of commands must be. Each gives back its number, or throws std::runtime_error with a text
// that names it.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::Simulation {

inline double Require(double value, bool holds, const char* what, const char* condition) {
  if (!holds) throw std::runtime_error(std::string("The ") + what + " must be " + condition + ".");
  return value;
}
inline double Positive(double value, const char* what) {
  return Require(value, std::isfinite(value) && value > 0, what, "positive and finite");
}
inline double NotNegative(double value, const char* what) {
  return Require(value, std::isfinite(value) && value >= 0, what, "finite and not negative");
}
inline double Finite(double value, const char* what) {
  return Require(value, std::isfinite(value), what, "finite");
}
// The index of a power channel.
inline std::size_t Channel(std::int32_t channel) {
  if (channel != 0 && channel != 1) {
    throw std::runtime_error("There is no power channel " + std::to_string(channel) + ".");
  }
  return static_cast<std::size_t>(channel);
}

}  // namespace VELTRO::KELVO::Simulation
