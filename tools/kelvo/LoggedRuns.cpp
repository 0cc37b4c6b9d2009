#include "LoggedRuns.h"

#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "Failure.h"
#include "Files.h"

namespace VELTRO::KELVO::Tool {

namespace {

// The file that holds the directory's path; empty for a user without a home.
std::filesystem::path Remembered() {
  const auto directory = [](const char* variable) -> std::filesystem::path {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nobody changes it
    return value == nullptr ? "" : value;
  };
  const auto state = directory("XDG_STATE_HOME"), home = directory("HOME");
  if (state.is_absolute()) return state / "kelvo" / "log";
  return home.is_absolute() ? home / ".local" / "state" / "kelvo" / "log" : "";
}

}  // namespace

void LogRunsIn(const std::string& directory) {
  const std::filesystem::path remembered = Remembered();
  std::error_code error;
  if (directory.empty()) {
    std::filesystem::remove(remembered, error);
  } else {
    if (remembered.empty()) throw Refused("HOME is not set.", "--log FILE logs a single run.");
    std::filesystem::create_directories(directory, error);
    if (!error) std::filesystem::create_directories(remembered.parent_path(), error);
    if (!error) WriteFile(remembered, std::filesystem::absolute(directory).lexically_normal().string());
  }
  if (error) throw Refused("The logging cannot be switched: " + error.message() + ".");
}

std::string FileOfLoggedRun() {
  std::ifstream file(Remembered(), std::ios::binary);
  const std::string directory{std::istreambuf_iterator<char>(file), {}};
  if (directory.empty()) return {};
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  char name[64] = "";
  if (localtime_r(&now, &parts) != nullptr) std::strftime(name, sizeof name, "kelvo-%Y%m%d-%H%M%S-", &parts);
  return std::filesystem::path(directory) / (name + std::to_string(getpid()) + ".log");
}

}  // namespace VELTRO::KELVO::Tool
