#include "card/CardFiles.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "card/OpenFile.h"
#include "common/ReplacedFile.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::FileMode;
using ClientLib::MutexLock;
using ClientLib::ReplacedFile;

namespace {

constexpr std::size_t MostNameBytes = 255;

bool IsAllowed(std::string_view name) {
  constexpr unsigned char Delete = 0x7F;
  const auto isAllowed = [](char character) {
    const auto code = static_cast<unsigned char>(character);
    return code >= ' ' && code != Delete && code != '/' && code != '\\';
  };
  return !name.empty() && name.size() <= MostNameBytes && name != "." &&
         name.find("..") == std::string_view::npos && std::ranges::all_of(name, isAllowed) &&
         !ReplacedFile::IsTemporary(name);
}

FileDirectory::Existing ExistingFor(FileMode mode) {
  switch (mode) {
    case FileMode::CreateNew:
      return FileDirectory::Existing::Refused;
    case FileMode::Open:
    case FileMode::Truncate:
      return FileDirectory::Existing::Needed;
    default:
      return FileDirectory::Existing::Possible;
  }
}

}  // namespace

CardFiles::CardFiles(const HostDirectory& state, MemoryBudget& memory) {
  const HostDirectory files = state.Subdirectory("files");
  for (const Directory directory : Directory::_values()) {
    directories_.emplace_back(files.Subdirectory(directory._to_string()), memory);
  }
}

FileDirectory& CardFiles::DirectoryOf(const Key& key, bool mayBeRead) {
  if (!IsAllowed(key.second)) throw std::runtime_error("The file name is not allowed.");
  const auto use = uses_.find(key);
  if (use != uses_.end() && !(mayBeRead && use->second > 0)) {
    throw std::runtime_error("The file '" + key.second + "' is open.");
  }
  return directories_[static_cast<std::size_t>(key.first)];
}

std::vector<std::string> CardFiles::GetNames(Directory directory) {
  const MutexLock lock(mutex_);
  auto names = directories_[static_cast<std::size_t>(directory._to_integral())].GetNames();
  std::erase_if(names, [](const std::string& name) { return !IsAllowed(name); });
  return names;
}

bool CardFiles::Exists(Directory directory, const std::string& name) {
  const MutexLock lock(mutex_);
  if (!IsAllowed(name)) throw std::runtime_error("The file name is not allowed.");
  return directories_[static_cast<std::size_t>(directory._to_integral())].Exists(name);
}

void CardFiles::Delete(Directory directory, const std::string& name) {
  const MutexLock lock(mutex_);
  DirectoryOf({directory, name}).Delete(name);
}

void CardFiles::Rename(Directory directory, const std::string& from, const std::string& to) {
  const MutexLock lock(mutex_);
  DirectoryOf({directory, from});
  DirectoryOf({directory, to}).Rename(from, to);
}

std::unique_ptr<OpenFile> CardFiles::Open(Directory directory, const std::string& name, FileMode mode) {
  const Key key(directory, name);
  const bool isToWrite = mode != FileMode::Open;
  const MutexLock lock(mutex_);
  if (open_ >= MostOpen) throw std::runtime_error("Too many files are open.");
  auto file = DirectoryOf(key, !isToWrite).Open(name, isToWrite, ExistingFor(mode));
  if ((mode == FileMode::Create || mode == FileMode::Truncate) && file->Truncate() != 0) {
    throw std::runtime_error("Cannot truncate '" + name + "': " + std::generic_category().message(errno) +
                             ".");
  }
  auto open = std::make_unique<OpenFile>(*this, key, std::move(file), mode);
  isToWrite ? uses_[key] = Writing : ++uses_[key];
  ++open_;
  open->BeginUse();
  return open;
}

void CardFiles::Closed(const Key& key) {
  const MutexLock lock(mutex_);
  --open_;
  const auto use = uses_.find(key);
  if (use->second == Writing || --use->second == 0) uses_.erase(use);
}

std::string CardFiles::Read(Directory directory, const std::string& name, std::size_t mostBytes) {
  const auto file = Open(directory, name, FileMode::Open);
  if (file->GetSize() > mostBytes) throw std::runtime_error("The file '" + name + "' is too large.");
  std::string bytes;
  for (OpenFile::Bytes piece; !(piece = file->Read(OpenFile::MostBytes)).empty();) {
    bytes.append(piece.begin(), piece.end());
  }
  return bytes;
}

void CardFiles::Replace(Directory directory, const std::string& name, std::string_view bytes) {
  const MutexLock lock(mutex_);
  DirectoryOf({directory, name}).Replace(name, bytes);
}

std::int32_t CardFiles::NextNumber() {
  const MutexLock lock(mutex_);
  lastNumber_ = lastNumber_ == std::numeric_limits<std::int32_t>::max() ? 1 : lastNumber_ + 1;
  return lastNumber_;
}

}  // namespace VELTRO::KELVO::VirtualCard
