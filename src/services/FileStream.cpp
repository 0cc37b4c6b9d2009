#include "services/FileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace VELTRO::KELVO::ClientLib {

namespace {

[[noreturn]] void FailToOpen() {
  throw std::runtime_error("Unable to open the local file!");
}

[[noreturn]] void FailInStream() {
  throw std::runtime_error("Error in stream");
}

}  // namespace

FileStream::FileStream(const std::string& path, Direction direction) {
  direction == Direction::Read ? OpenToRead(path) : OpenToWrite(path);
}

void FileStream::OpenToRead(const std::string& path) {
  int file = -1;
  do {
    file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  } while (file < 0 && errno == EINTR);
  file_ = Descriptor(file);
  struct stat status {};
  if (!file_.IsOpen() || fstat(file_.Get(), &status) != 0 || S_ISDIR(status.st_mode)) FailToOpen();
  if (S_ISREG(status.st_mode)) size_ = static_cast<std::uint64_t>(status.st_size);
}

void FileStream::OpenToWrite(const std::string& path) {
  try {
    replaced_.emplace(path);
  } catch (const std::system_error&) {
    FailToOpen();
  }
}

void FileStream::CheckRoom(std::uint64_t size) const {
  if (size > replaced_->GetFreeBytes().value_or(size)) {
    throw std::runtime_error("The local disk has no room for the file.");
  }
}

std::size_t FileStream::Read(std::span<std::uint8_t> bytes) {
  std::size_t count = 0;
  while (count < bytes.size()) {
    const ssize_t got = read(file_.Get(), bytes.data() + count, bytes.size() - count);
    if (got == 0) break;
    if (got > 0) count += static_cast<std::size_t>(got);
    if (got < 0 && errno != EINTR) FailInStream();
  }
  return count;
}

void FileStream::Write(std::span<const std::uint8_t> bytes) {
  try {
    replaced_->Write(bytes);
  } catch (const std::system_error&) {
    FailInStream();
  }
}

void FileStream::Commit() {
  try {
    replaced_->Commit();
  } catch (const std::system_error&) {
    FailInStream();
  }
}

}  // namespace VELTRO::KELVO::ClientLib
