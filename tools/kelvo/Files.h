// Local files.
#pragma once

#include <cstddef>
#include <string>

namespace VELTRO::KELVO::Tool {

// All of a file, or of standard input for "-". Throws Failure, Refused, when it cannot be read or is longer than `most`.
std::string ReadFile(const std::string& path, std::size_t most);
// Puts the text in place of what the file has; all of it, or nothing and a Failure.
void WriteFile(const std::string& path, const std::string& text);

}  // namespace VELTRO::KELVO::Tool
