// How process variables, counters and signals are named on the wire.
#pragma once

#include <cstdint>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

// The 32-bit FNV-1a hash of the name's bytes, by which the card knows it.
constexpr std::uint32_t VariableId(std::string_view name) {
  std::uint32_t hash = 0x811C9DC5;
  for (const char byte : name) hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619;
  return hash;
}

}  // namespace VELTRO::KELVO::ClientLib
