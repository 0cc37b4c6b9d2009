#include "card/HostDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "base/Log.h"
#include "card/FileFailure.h"
#include "common/ReplacedFile.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::ReplacedFile;

namespace {

constexpr int DirectoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
// What there is to open, whatever it is, without waiting for anybody.
constexpr int FileFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

[[noreturn]] void RefuseAsNotPlain(const std::string& name) {
  throw std::runtime_error("'" + name + "' is no plain file.");
}

bool IsPlainFile(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_nlink == 1;
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

}  // namespace

HostDirectory::HostDirectory(int parent, const std::string& name, std::string path, int flags)
    : path_(std::move(path)) {
  if (mkdirat(parent, name.c_str(), 0777) != 0 && errno != EEXIST) ThrowCannot("use", path_);
  directory_ = Descriptor(openat(parent, name.c_str(), DirectoryFlags | flags));
  if (!IsThere() || faccessat(directory_.Get(), ".", R_OK | W_OK | X_OK, 0) != 0) ThrowCannot("use", path_);
}

HostDirectory::HostDirectory(const std::string& path) : HostDirectory(AT_FDCWD, path, path, 0) {
  Lock();
  RemoveLeftovers();
}

HostDirectory HostDirectory::Subdirectory(const std::string& name) const {
  if (!IsThere()) return {};
  HostDirectory directory(directory_.Get(), name, path_ + "/" + name, O_NOFOLLOW);
  directory.RemoveLeftovers();
  return directory;
}

void HostDirectory::Lock() const {
  if (flock(directory_.Get(), LOCK_EX | LOCK_NB) == 0) return;
  if (errno == EWOULDBLOCK) throw std::runtime_error("Cannot use '" + path_ + "': another card uses it.");
  // Some file systems of other hosts know no locks of directories.
  LogLine("Cannot lock '" + path_ +
          "', so see to it that no other card uses it: " + std::generic_category().message(errno) + ".");
}

void HostDirectory::RemoveLeftovers() const {
  for (const std::string& name : GetAllNames()) {
    if (ReplacedFile::IsTemporary(name)) unlinkat(directory_.Get(), name.c_str(), 0);
  }
}

std::vector<std::string> HostDirectory::GetAllNames() const {
  // A descriptor of its own, so that it is read from the beginning.
  Descriptor own(openat(directory_.Get(), ".", DirectoryFlags));
  const std::unique_ptr<DIR, CloseDirectory> entries(own.IsOpen() ? fdopendir(own.Get()) : nullptr);
  if (!entries) ThrowCannot("read", path_);
  own.Release();
  std::vector<std::string> names;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else reads from this stream
  while (const dirent* entry = readdir(entries.get())) {
    names.emplace_back(entry->d_name);
  }
  std::erase(names, ".");
  std::erase(names, "..");
  return names;
}

std::vector<std::string> HostDirectory::GetNames() const {
  auto names = GetAllNames();
  std::erase_if(names, ReplacedFile::IsTemporary);
  std::ranges::sort(names);
  return names;
}

bool HostDirectory::IsPlain(const std::string& name) const {
  struct stat status {};
  return fstatat(directory_.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && IsPlainFile(status);
}

Descriptor HostDirectory::Open(const std::string& name, int flags) const {
  Descriptor file(openat(directory_.Get(), name.c_str(), flags | FileFlags, 0666));
  if (!file.IsOpen()) {
    if (errno == ELOOP || errno == EISDIR || errno == ENXIO) RefuseAsNotPlain(name);
    return file;
  }
  struct stat status {};
  if (fstat(file.Get(), &status) != 0 || !IsPlainFile(status)) RefuseAsNotPlain(name);
  return file;
}

void HostDirectory::Replace(const std::string& name, std::string_view bytes) const {
  try {
    ReplacedFile file(directory_.Get(), name);
    file.Write(bytes);
    file.Commit();
  } catch (const std::system_error& error) {
    errno = error.code().value();
    ThrowCannot("write", name);
  }
}

void HostDirectory::Remove(const std::string& name) const {
  if (unlinkat(directory_.Get(), name.c_str(), 0) != 0 && errno != ENOENT) ThrowCannot("delete", name);
  static_cast<void>(fsync(directory_.Get()));  // there is no way back, and some file systems do not do this
}

void HostDirectory::Rename(const std::string& from, const std::string& to) const {
  if (renameat(directory_.Get(), from.c_str(), directory_.Get(), to.c_str()) != 0)
    ThrowCannot("rename", from);
}

}  // namespace VELTRO::KELVO::VirtualCard
