#include "config/LaserAPI.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace VELTRO::KELVO::ClientLib {

namespace {

std::fstream Open(const std::string& path, std::ios::openmode mode) {
  std::fstream file(path, mode | std::ios::binary);
  if (!file)
    throw std::runtime_error("Cannot open '" + path + "': " + std::generic_category().message(errno) + ".");
  return file;
}

std::string_view Stripped(std::string_view token) {
  constexpr std::string_view Blanks = " \t\r\n\v\f";
  const std::size_t first = token.find_first_not_of(Blanks);
  return first == std::string_view::npos ? ""
                                         : token.substr(first, token.find_last_not_of(Blanks) - first + 1);
}

// Appends the values of one line. An empty token, as an empty line is one, stands for nothing.
void AppendValues(std::string_view line, LaserAPI::Calibration& values) {
  for (std::size_t begin = 0; begin <= line.size();) {
    const std::size_t end = std::min(line.find(';', begin), line.size());
    const std::string_view token = Stripped(line.substr(begin, end - begin));
    begin = end + 1;
    if (token.empty()) continue;
    std::uint32_t value = 0;
    const auto [rest, error] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (error != std::errc() || rest != token.data() + token.size())
      throw std::runtime_error("Illegal format!");
    values.push_back(value);
  }
}

}  // namespace

void LaserAPI::GetPowerCalibration(const std::string& path, int engine) {
  std::fstream file = Open(path, std::ios::out | std::ios::trunc);
  std::string text;
  for (const std::uint32_t value : GetPowerCalibration(engine))
    text.append(std::to_string(value)).append("\n");
  if (!file.write(text.data(), static_cast<std::streamsize>(text.size())).flush()) {
    throw std::runtime_error("Cannot write '" + path + "'.");
  }
}

void LaserAPI::SetPowerCalibration(const std::string& path, int engine) {
  std::fstream file = Open(path, std::ios::in);
  Calibration values;
  for (std::string line; std::getline(file, line);) AppendValues(line, values);
  if (file.bad()) throw std::runtime_error("Cannot read '" + path + "'.");
  SetPowerCalibration(values, engine);
}

}  // namespace VELTRO::KELVO::ClientLib
