#include "support/Process.h"

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

void Together(std::uint32_t count, const std::function<void(std::uint32_t)>& f) {
  std::vector<std::jthread> threads;
  for (std::uint32_t i = 0; i < count; ++i) threads.emplace_back([&f, i] { f(i); });
}

}  // namespace VELTRO::KELVO::Test
