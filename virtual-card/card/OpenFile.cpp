#include "card/OpenFile.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "card/FileFailure.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::FileMode;

OpenFile::OpenFile(CardFiles& files, CardFiles::Key key, std::shared_ptr<FileContent> file, FileMode mode)
    : files_(files), key_(std::move(key)), file_(std::move(file)), mode_(mode) {}

OpenFile::~OpenFile() {
  if (isUsed_) files_.Closed(key_);
}

bool OpenFile::Is(CardFiles::Directory directory, const std::string& name) const {
  return key_.first == directory._to_integral() && key_.second == name;
}

std::uint64_t OpenFile::GetSize() const {
  const off_t size = file_->Size();
  if (size < 0) ThrowCannot("read", key_.second);
  return static_cast<std::uint64_t>(size);
}

OpenFile::Bytes OpenFile::Read(std::int32_t count) {
  if (count < 0) throw std::runtime_error("The count is negative.");
  if (mode_ == FileMode::Append) {
    throw std::runtime_error("'" + key_.second + "' is open for appending only.");
  }
  const std::uint64_t size = GetSize();
  const auto left = size - std::min(size, static_cast<std::uint64_t>(position_));
  Bytes bytes(std::min({left, static_cast<std::uint64_t>(count), static_cast<std::uint64_t>(MostBytes)}));
  ssize_t got = 0;
  do got = file_->Read(bytes.data(), bytes.size(), position_);
  while (got < 0 && errno == EINTR);
  if (got < 0) ThrowCannot("read", key_.second);
  bytes.resize(static_cast<std::size_t>(got));
  position_ += got;
  return bytes;
}

std::string OpenFile::ReadLine() {
  const off_t begin = position_;
  const Bytes bytes = Read(MostBytes);
  const auto end = std::ranges::find(bytes, '\n');
  if (end == bytes.end() && std::ssize(bytes) == MostBytes) {
    position_ = begin;
    throw std::runtime_error("A line of '" + key_.second + "' is too long.");
  }
  if (end != bytes.end()) position_ = begin + (end - bytes.begin()) + 1;
  return {bytes.begin(), end};
}

void OpenFile::Write(std::string_view bytes) {
  if (mode_ == FileMode::Open) throw std::runtime_error("'" + key_.second + "' is open for reading only.");
  if (mode_ == FileMode::Append) position_ = static_cast<off_t>(GetSize());
  while (!bytes.empty()) {
    const ssize_t written = file_->Write(bytes.data(), bytes.size(), position_);
    if (written < 0 && errno != EINTR) ThrowCannot("write", key_.second);
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    position_ += std::max<ssize_t>(written, 0);
  }
}

std::int32_t OpenFiles::Open(CardFiles::Directory directory, const std::string& name, FileMode mode) {
  if (open_.size() >= Most) throw std::runtime_error("Too many files are open.");
  auto file = files_.Open(directory, name, mode);
  const std::int32_t number = files_.NextNumber();
  open_[number] = std::move(file);
  return number;
}

std::int32_t OpenFiles::Find(CardFiles::Directory directory, const std::string& name) const {
  const auto found =
      std::ranges::find_if(open_, [&](const auto& entry) { return entry.second->Is(directory, name); });
  return found == open_.end() ? -1 : found->first;
}

OpenFile& OpenFiles::Get(std::int32_t number) {
  const auto found = open_.find(number);
  if (found == open_.end()) {
    throw std::runtime_error("There is no open file " + std::to_string(number) + ".");
  }
  return *found->second;
}

void OpenFiles::Close(std::int32_t number) {
  Get(number);
  open_.erase(number);
}

}  // namespace VELTRO::KELVO::VirtualCard
