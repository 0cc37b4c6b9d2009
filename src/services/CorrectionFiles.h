// Names and sizes of the files in which corrections travel to and from the card.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "services/FileEnums.h"

namespace VELTRO::KELVO::ClientLib::CorrectionFiles {

inline constexpr auto Directory = DirectorySelector::CORRFILES;

inline constexpr std::uint64_t MostHeadCorrectionBytes = 0x8000000;
// This exact odd number is meant.
inline constexpr std::uint64_t MostPowerCorrectionBytes = 34900811784;

inline constexpr const char* PowerCorrection = "powerCorrection.kc7";
inline constexpr const char* PowerCorrectionCopy = "_tmpPowerCorrection.kc7";

// Where a correction stands among those of all heads.
inline std::string IndexOf(std::int32_t first, std::int32_t second) {
  return std::to_string(first + 2 * std::int64_t{second});
}
// The correction itself.
inline std::string HeadCorrection(std::int32_t first, std::int32_t second) {
  return "head" + IndexOf(first, second) + "Correction.kc7";
}
// A correction on its way to the card.
inline std::string HeadCorrectionCopy(std::int32_t first, std::int32_t second) {
  return "_tmpHeadCorrection" + IndexOf(first, second) + ".kc7";
}

// Throws std::runtime_error "Unexpected filesize" for a local file that is larger, or has no size.
inline void CheckSize(const std::string& path, std::uint64_t mostBytes) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error || size > mostBytes) throw std::runtime_error("Unexpected filesize");
}

}  // namespace VELTRO::KELVO::ClientLib::CorrectionFiles
