#include "config/LaserAPI.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "common/ReplacedFile.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// A table has a few hundred values as a rule.
constexpr std::size_t MostValues = 1 << 20;
constexpr std::size_t MostTextBytes = 16 << 20;

[[noreturn]] void FailToOpen(const std::string& path, int error) {
  throw std::runtime_error("Cannot open '" + path + "': " + std::generic_category().message(error) + ".");
}

[[noreturn]] void FailAsTooLong(const std::string& path) {
  throw std::runtime_error("'" + path + "' is too long for a power calibration.");
}

std::string ReadText(const std::string& path) {
  constexpr std::size_t PieceBytes = 1 << 16;
  std::ifstream file(path, std::ios::binary);
  if (!file) FailToOpen(path, errno);
  std::string text;
  while (file) {
    const std::size_t size = text.size();
    if (size > MostTextBytes) FailAsTooLong(path);
    text.resize(size + PieceBytes);
    file.read(text.data() + size, PieceBytes);
    text.resize(size + static_cast<std::size_t>(file.gcount()));
  }
  if (file.bad()) throw std::runtime_error("Cannot read '" + path + "'.");
  return text;
}

std::string_view Stripped(std::string_view token) {
  constexpr std::string_view Blanks = " \t\r\n\v\f";
  const std::size_t first = token.find_first_not_of(Blanks);
  return first == std::string_view::npos ? ""
                                         : token.substr(first, token.find_last_not_of(Blanks) - first + 1);
}

LaserAPI::Calibration ParseValues(std::string_view text) {
  constexpr std::string_view Separators = ";\n";
  LaserAPI::Calibration values;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find_first_of(Separators, begin), text.size());
    const std::string_view token = Stripped(text.substr(begin, end - begin));
    begin = end + 1;
    if (token.empty()) continue;  // an empty line is one such
    std::uint32_t value = 0;
    const auto [rest, error] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (error != std::errc() || rest != token.data() + token.size())
      throw std::runtime_error("Illegal format!");
    values.push_back(value);
  }
  return values;
}

}  // namespace

void LaserAPI::GetPowerCalibration(const std::string& path, int engine) {
  std::optional<ReplacedFile> file;
  try {
    file.emplace(path);
  } catch (const std::system_error& error) {
    FailToOpen(path, error.code().value());
  }
  std::string text;
  for (const std::uint32_t value : GetPowerCalibration(engine))
    text.append(std::to_string(value)).append("\n");
  try {
    file->Write(text);
    file->Commit();
  } catch (const std::system_error&) {
    throw std::runtime_error("Cannot write '" + path + "'.");
  }
}

void LaserAPI::SetPowerCalibration(const std::string& path, int engine) {
  const Calibration values = ParseValues(ReadText(path));
  if (values.size() > MostValues) FailAsTooLong(path);
  SetPowerCalibration(values, engine);
}

}  // namespace VELTRO::KELVO::ClientLib
