#include "services/FileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::size_t ReadAheadBytes = 65536;

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

std::span<const std::uint8_t> FileStream::Read(std::size_t most) {
  if (ahead_.size() < most) Fill(most);
  const auto bytes = ahead_.first(std::min(most, ahead_.size()));
  ahead_ = ahead_.subspan(bytes.size());
  return bytes;
}

void FileStream::Fill(std::size_t most) {
  // A file that has a size is there: some of it is read ahead, which spares system calls. What is written while it is
  // read, as a pipe is, goes on as it comes.
  buffer_.resize(std::max(most, size_ > most ? ReadAheadBytes : 0));
  std::ranges::copy(ahead_, buffer_.begin());
  std::size_t count = ahead_.size();
  while (count < buffer_.size()) {
    const ssize_t got = read(file_.Get(), buffer_.data() + count, buffer_.size() - count);
    if (got == 0) break;
    if (got > 0) count += static_cast<std::size_t>(got);
    if (got < 0 && errno != EINTR) {
      if (count < most) FailInStream();
      break;  // what came before it comes first; then it fails again
    }
  }
  ahead_ = {buffer_.data(), count};
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
