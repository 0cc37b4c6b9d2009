#include "card/FileDirectory.h"

#include <fcntl.h>

#include <cerrno>
#include <stdexcept>

#include "card/FileFailure.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

[[noreturn]] void ThrowCannotOpen(const std::string& name, int error) {
  if (error == ENOENT) throw std::runtime_error("There is no file '" + name + "'.");
  if (error == EEXIST) throw std::runtime_error("There is a file '" + name + "' already.");
  errno = error;
  ThrowCannot("open", name);
}

}  // namespace

std::vector<std::string> FileDirectory::GetNames() const {
  std::vector<std::string> names;
  if (host_.IsThere()) {
    names = host_.GetNames();
    std::erase_if(names, [this](const std::string& name) { return !Exists(name); });
  } else {
    for (const auto& file : files_) names.push_back(file.first);
  }
  return names;
}

bool FileDirectory::Exists(const std::string& name) const {
  return host_.IsThere() ? host_.IsPlain(name) : files_.contains(name);
}

std::shared_ptr<FileContent> FileDirectory::Open(const std::string& name, bool isToWrite, Existing existing) {
  if (!host_.IsThere()) return OpenInMemory(name, existing);
  return std::make_shared<HostFile>(OpenOnHost(name, isToWrite, existing));
}

std::shared_ptr<FileContent> FileDirectory::OpenInMemory(const std::string& name, Existing existing) {
  const auto found = files_.find(name);
  if (found != files_.end()) {
    if (existing == Existing::Refused) ThrowCannotOpen(name, EEXIST);
    return found->second;
  }
  if (existing == Existing::Needed) ThrowCannotOpen(name, ENOENT);
  return files_.emplace(name, std::make_shared<MemoryFile>(memory_)).first->second;
}

Descriptor FileDirectory::OpenOnHost(const std::string& name, bool isToWrite, Existing existing) const {
  int flags = isToWrite ? O_RDWR : O_RDONLY;
  if (existing != Existing::Needed) flags |= O_CREAT;
  if (existing == Existing::Refused) flags |= O_EXCL;
  Descriptor file = host_.Open(name, flags);
  if (!file.IsOpen()) ThrowCannotOpen(name, errno);
  return file;
}

void FileDirectory::Replace(const std::string& name, std::string_view bytes) {
  if (host_.IsThere()) return host_.Replace(name, bytes);
  auto file = std::make_shared<MemoryFile>(memory_);
  if (file->Write(bytes.data(), bytes.size(), 0) < 0) ThrowCannot("write", name);
  files_.insert_or_assign(name, std::move(file));
}

void FileDirectory::Delete(const std::string& name) {
  if (!Exists(name)) ThrowCannotOpen(name, ENOENT);
  host_.IsThere() ? host_.Remove(name) : static_cast<void>(files_.erase(name));
}

void FileDirectory::Rename(const std::string& from, const std::string& to) {
  if (!Exists(from)) ThrowCannotOpen(from, ENOENT);
  if (host_.IsThere()) return host_.Rename(from, to);
  files_.insert_or_assign(to, std::move(files_.extract(from).mapped()));
}

}  // namespace VELTRO::KELVO::VirtualCard
