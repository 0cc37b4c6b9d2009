#include "card/StateDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <utility>

#include "card/FileFailure.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

namespace {

// The whole of it, on the disk when this returns.
bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return fsync(descriptor) == 0;
}

}  // namespace

StateDirectory::StateDirectory(std::string directory) : directory_(std::move(directory)) {
  if (directory_.empty()) return;
  if (mkdir(directory_.c_str(), 0777) != 0 && errno != EEXIST) FailToUse("use", directory_);
  if (access(directory_.c_str(), R_OK | W_OK | X_OK) != 0) FailToUse("use", directory_);
}

std::optional<std::string> StateDirectory::Read(const std::string& name) {
  const MutexLock lock(mutex_);
  if (directory_.empty()) {
    const auto found = memory_.find(name);
    return found == memory_.end() ? std::nullopt : std::optional(found->second);
  }
  std::ifstream file(FileOf(name), std::ios::binary);
  if (!file && errno == ENOENT) return std::nullopt;
  std::string bytes((std::istreambuf_iterator<char>(file)), {});
  if (!file) FailToUse("read", FileOf(name));
  return bytes;
}

void StateDirectory::Write(const std::string& name, std::string_view bytes) {
  const MutexLock lock(mutex_);
  if (directory_.empty()) {
    memory_.insert_or_assign(name, std::string(bytes));
    return;
  }
  const std::string file = FileOf(name);
  const std::string temporary = file + ".tmp";
  const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor < 0) FailToUse("write", file);
  bool sound = WriteAll(descriptor, bytes);
  sound = close(descriptor) == 0 && sound;
  if (!sound || std::rename(temporary.c_str(), file.c_str()) != 0) {
    const int error = errno;
    std::remove(temporary.c_str());
    errno = error;
    FailToUse("write", file);
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
