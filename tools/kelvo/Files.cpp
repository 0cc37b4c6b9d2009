#include "Files.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "Failure.h"
#include "common/ReplacedFile.h"

namespace VELTRO::KELVO::Tool {

std::string ReadFile(const std::string& path, std::size_t most) {
  const auto close = [](std::FILE* file) {
    if (file != stdin) std::fclose(file);
  };
  const std::unique_ptr<std::FILE, decltype(close)> file(
      path == "-" ? stdin : std::fopen(path.c_str(), "rbe"), close);
  if (!file) throw Refused("Cannot open '" + path + "': " + std::generic_category().message(errno) + ".");
  std::string text;
  char bytes[65536];
  while (const std::size_t count = std::fread(bytes, 1, sizeof bytes, file.get())) {
    text.append(bytes, count);
    if (text.size() > most)
      throw Refused("'" + path + "' is longer than " + std::to_string(most >> 20) + " MiB.");
  }
  if (std::ferror(file.get()) != 0)
    throw Refused("Cannot read '" + path + "': " + std::generic_category().message(errno) + ".");
  return text;
}

void WriteFile(const std::string& path, const std::string& text) {
  try {
    ClientLib::ReplacedFile file(path);
    file.Write(text);
    file.Commit();
  } catch (const std::system_error& error) {
    throw Refused("Cannot write '" + path + "': " + error.code().message() + ".");
  }
}

}  // namespace VELTRO::KELVO::Tool
