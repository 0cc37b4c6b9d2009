#include "support/Process.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace VELTRO::KELVO::Test {

namespace {

std::size_t CountEntries(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

std::size_t OpenDescriptors() {
  return CountEntries("/proc/self/fd");
}

std::size_t Threads() {
  return CountEntries("/proc/self/task");
}

std::size_t ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  file >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::string LastError() {
  std::vector<char> text(static_cast<std::size_t>(vlGetLastErrorLen()));
  vlGetLastError(text.data(), static_cast<int>(text.size()));
  return text.data();
}

}  // namespace VELTRO::KELVO::Test
