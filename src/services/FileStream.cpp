#include "services/FileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr mode_t PermissionBits = 0777;

[[noreturn]] void FailToOpen() {
  throw std::runtime_error("Unable to open the local file!");
}

[[noreturn]] void FailInStream() {
  throw std::runtime_error("Error in stream");
}

// A new file in the directory, or -1.
int MakeTemporary(const std::string& directory, std::string& name) {
  static std::atomic<std::uint64_t> number{0};
  for (;;) {
    name = directory + ".kelvo-" + std::to_string(getpid()) + "-" + std::to_string(number++) + ".part";
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor >= 0 || errno != EEXIST) return descriptor;
  }
}

}  // namespace

FileStream::FileStream(const std::string& path, Direction direction) {
  direction == Direction::Read ? OpenToRead(path) : OpenToWrite(path);
}

FileStream::~FileStream() {
  Close();
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void FileStream::OpenToRead(const std::string& path) {
  descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status {};
  const bool isReadable = descriptor_ >= 0 && fstat(descriptor_, &status) == 0 && !S_ISDIR(status.st_mode);
  if (!isReadable) {
    Close();
    FailToOpen();
  }
  if (S_ISREG(status.st_mode)) size_ = static_cast<std::uint64_t>(status.st_size);
}

void FileStream::OpenToWrite(const std::string& path) {
  struct stat status {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (!exists && (errno != ENOENT || path.empty() || path.ends_with('/'))) FailToOpen();
  if (exists && !S_ISREG(status.st_mode)) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);  // fails for a directory
    if (descriptor_ < 0) FailToOpen();
    return;
  }
  target_ = path;
  if (exists) {
    std::error_code error;
    target_ = std::filesystem::canonical(path, error);
    if (error || faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) FailToOpen();
  }
  std::string name;
  descriptor_ = MakeTemporary(target_.substr(0, target_.rfind('/') + 1), name);
  if (descriptor_ < 0) FailToOpen();
  temporary_ = std::move(name);
  // The new file may be used as the old one was. One of another owner stays as it was made.
  if (exists) static_cast<void>(!fchmod(descriptor_, status.st_mode & PermissionBits));
}

std::size_t FileStream::Read(std::span<std::uint8_t> bytes) {
  std::size_t count = 0;
  while (count < bytes.size()) {
    const ssize_t got = read(descriptor_, bytes.data() + count, bytes.size() - count);
    if (got == 0) break;
    if (got > 0) count += static_cast<std::size_t>(got);
    if (got < 0 && errno != EINTR) FailInStream();
  }
  return count;
}

void FileStream::Write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) FailInStream();
    if (written > 0) bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void FileStream::Commit() {
  if (!Close()) FailInStream();
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) FailInStream();
  temporary_.clear();
}

bool FileStream::Close() {
  const int descriptor = std::exchange(descriptor_, -1);
  return descriptor < 0 || close(descriptor) == 0;
}

}  // namespace VELTRO::KELVO::ClientLib
