#include "common/ReplacedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "common/NoPipeSignal.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::string_view Prefix = ".kelvo-";
constexpr std::string_view Suffix = ".part";
constexpr mode_t PermissionBits = 0777;
constexpr mode_t NewFile = 0666;  // less what the process does not allow
constexpr mode_t NobodyElse = 0600;
constexpr int MostLinks = 40;

[[noreturn]] void Fail(int error = errno) {
  throw std::system_error(error, std::generic_category());
}

// "" or what ends with a slash.
std::string DirectoryOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

Descriptor Open(int directory, const std::string& name, int flags, mode_t mode = 0) {
  int file = -1;
  do {
    file = openat(directory, name.c_str(), flags | O_CLOEXEC, mode);
  } while (file < 0 && errno == EINTR);
  return Descriptor(file);
}

// Follows symbolic links, also to a place where nothing is yet.
std::string WhatLinkLeadsTo(std::string path) {
  for (int links = 0; links < MostLinks; ++links) {
    std::error_code error;
    const std::filesystem::path next = std::filesystem::read_symlink(path, error);
    if (error) return path;  // no link
    path = next.is_absolute() ? next.string() : DirectoryOf(path) + next.string();
  }
  Fail(ELOOP);
}

}  // namespace

ReplacedFile::ReplacedFile(int directory, std::string name)
    : directory_(directory), target_(std::move(name)) {
  MakeTemporary();
}

ReplacedFile::ReplacedFile(const std::string& path) {
  struct stat status {};
  struct stat named {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (!exists && (errno != ENOENT || path.empty())) Fail();
  const std::string target = WhatLinkLeadsTo(path);
  if (exists) {
    // /proc shows links to files that have lost their names, or never had one.
    const bool hasName =
        lstat(target.c_str(), &named) == 0 && named.st_ino == status.st_ino && named.st_dev == status.st_dev;
    if (!S_ISREG(status.st_mode) || !hasName) {
      file_ = Open(AT_FDCWD, path, O_WRONLY | O_TRUNC);  // fails for a directory
      if (!file_.IsOpen()) Fail();
      return;
    }
    if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) Fail();
  }
  const std::string directory = DirectoryOf(target);
  target_ = target.substr(directory.size());
  if (target_.empty()) Fail(EISDIR);
  ownDirectory_ = Open(AT_FDCWD, directory.empty() ? "." : directory, O_PATH | O_DIRECTORY);
  if (!ownDirectory_.IsOpen()) Fail();
  directory_ = ownDirectory_.Get();
  MakeTemporary();
}

ReplacedFile::~ReplacedFile() {
  file_.Close();
  if (!temporary_.empty()) unlinkat(directory_, temporary_.c_str(), 0);
}

void ReplacedFile::MakeTemporary() {
  static std::atomic<std::uint64_t> number{0};
  struct stat old {};
  const bool replaces =
      fstatat(directory_, target_.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(old.st_mode);
  do {
    std::string name = DirectoryOf(target_)
                           .append(Prefix)
                           .append(std::to_string(getpid()) + "-" + std::to_string(number++))
                           .append(Suffix);
    // Nobody who may not read the old file gets hold of the new one before it has the same permissions.
    file_ = Open(directory_, name, O_WRONLY | O_CREAT | O_EXCL, replaces ? NobodyElse : NewFile);
    if (file_.IsOpen()) temporary_ = std::move(name);
  } while (!file_.IsOpen() && errno == EEXIST);
  if (!file_.IsOpen()) Fail();
  if (!replaces) return;
  mode_t mode = old.st_mode & PermissionBits;
  const auto sameOwner = static_cast<uid_t>(-1);
  if (fchown(file_.Get(), old.st_uid, old.st_gid) != 0 && fchown(file_.Get(), sameOwner, old.st_gid) != 0) {
    mode &= ~mode_t{S_IRWXG};  // they were another group's
  }
  static_cast<void>(!fchmod(file_.Get(), mode));
}

void ReplacedFile::WriteAll(int file, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) Fail();
    if (written == 0) Fail(ENOSPC);
    if (written > 0) bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void ReplacedFile::Write(std::span<const std::uint8_t> bytes) {
  if (temporary_.empty()) {
    const NoPipeSignal noSignal;
    WriteAll(file_.Get(), bytes);
  } else {
    WriteAll(file_.Get(), bytes);
  }
}

void ReplacedFile::Commit() {
  const bool isDirect = temporary_.empty();
  int error = 0;
  do {
    error = isDirect || fsync(file_.Get()) == 0 ? 0 : errno;
  } while (error == EINTR);
  if (error != 0) Fail(error);
  if (close(file_.Release()) != 0) Fail();
  if (isDirect) return;
  if (renameat(directory_, temporary_.c_str(), directory_, target_.c_str()) != 0) Fail();
  temporary_.clear();
  // The new name, too, reaches the disk. By now there is no way back; some file systems do not do this.
  const Descriptor directory = Open(directory_, DirectoryOf(target_) + ".", O_RDONLY | O_DIRECTORY);
  if (directory.IsOpen()) static_cast<void>(fsync(directory.Get()));
}

std::optional<std::uint64_t> ReplacedFile::GetFreeBytes() const {
  struct statvfs disk {};
  if (temporary_.empty() || fstatvfs(file_.Get(), &disk) != 0 || disk.f_blocks == 0) return std::nullopt;
  return std::uint64_t{disk.f_bavail} * disk.f_frsize;
}

bool ReplacedFile::IsTemporary(std::string_view name) {
  return name.starts_with(Prefix) && name.ends_with(Suffix);
}

}  // namespace VELTRO::KELVO::ClientLib
