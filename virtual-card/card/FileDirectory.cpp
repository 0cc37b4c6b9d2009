#include "card/FileDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "card/FileFailure.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

// What there is to open, whatever it is, without waiting for anybody.
constexpr int OpenFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

[[noreturn]] void Refuse(const std::string& name, int error) {
  if (error == ENOENT) throw std::runtime_error("There is no file '" + name + "'.");
  if (error == EEXIST) throw std::runtime_error("There is a file '" + name + "' already.");
  if (error == ELOOP || error == EISDIR || error == ENXIO) {
    throw std::runtime_error("'" + name + "' is no plain file.");
  }
  errno = error;
  FailToUse("open", name);
}

bool IsPlain(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_nlink == 1;
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

}  // namespace

FileDirectory::FileDirectory(const std::string& path) {
  if (path.empty()) return;
  if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) FailToUse("use", path);
  directory_ = Descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!directory_.IsOpen() || faccessat(directory_.Get(), ".", R_OK | W_OK | X_OK, 0) != 0)
    FailToUse("use", path);
}

std::vector<std::string> FileDirectory::GetNames() const {
  std::vector<std::string> names;
  if (!directory_.IsOpen()) {
    for (const auto& file : memory_) names.push_back(file.first);
    return names;
  }
  // A descriptor of its own, so that it is read from the beginning.
  Descriptor own(openat(directory_.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, CloseDirectory> entries(own.IsOpen() ? fdopendir(own.Get()) : nullptr);
  if (!entries) FailToUse("read", ".");
  own.Release();
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else reads from this stream
  while (const dirent* entry = readdir(entries.get())) {
    if (Exists(entry->d_name)) names.emplace_back(entry->d_name);
  }
  std::ranges::sort(names);
  return names;
}

bool FileDirectory::Exists(const std::string& name) const {
  if (!directory_.IsOpen()) return memory_.contains(name);
  struct stat status {};
  return fstatat(directory_.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && IsPlain(status);
}

Descriptor FileDirectory::Open(const std::string& name, bool isToWrite, Existing existing) {
  return directory_.IsOpen() ? OpenOnHost(name, isToWrite, existing) : OpenInMemory(name, existing);
}

Descriptor FileDirectory::OpenInMemory(const std::string& name, Existing existing) {
  const auto found = memory_.find(name);
  if (found == memory_.end()) {
    if (existing == Existing::Needed) Refuse(name, ENOENT);
    Descriptor file(memfd_create("file", MFD_CLOEXEC));
    Descriptor copy(fcntl(file.Get(), F_DUPFD_CLOEXEC, 0));
    if (!copy.IsOpen()) FailToUse("open", name);
    memory_.emplace(name, std::move(file));
    return copy;
  }
  if (existing == Existing::Refused) Refuse(name, EEXIST);
  Descriptor copy(fcntl(found->second.Get(), F_DUPFD_CLOEXEC, 0));
  if (!copy.IsOpen()) FailToUse("open", name);
  return copy;
}

Descriptor FileDirectory::OpenOnHost(const std::string& name, bool isToWrite, Existing existing) const {
  int flags = OpenFlags | (isToWrite ? O_RDWR : O_RDONLY);
  if (existing != Existing::Needed) flags |= O_CREAT;
  if (existing == Existing::Refused) flags |= O_EXCL;
  Descriptor file(openat(directory_.Get(), name.c_str(), flags, 0666));
  if (!file.IsOpen()) Refuse(name, errno);
  struct stat status {};
  if (fstat(file.Get(), &status) != 0 || !IsPlain(status)) Refuse(name, ELOOP);
  return file;
}

void FileDirectory::Delete(const std::string& name) {
  if (!Exists(name)) Refuse(name, ENOENT);
  if (!directory_.IsOpen()) {
    memory_.erase(name);
  } else if (unlinkat(directory_.Get(), name.c_str(), 0) != 0) {
    FailToUse("delete", name);
  }
}

void FileDirectory::Rename(const std::string& from, const std::string& to) {
  if (!Exists(from)) Refuse(from, ENOENT);
  if (!directory_.IsOpen()) {
    memory_.insert_or_assign(to, std::move(memory_.extract(from).mapped()));
  } else if (renameat(directory_.Get(), from.c_str(), directory_.Get(), to.c_str()) != 0) {
    FailToUse("rename", from);
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
