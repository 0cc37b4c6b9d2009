#include "card/FileContent.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace VELTRO::KELVO::VirtualCard {

off_t HostFile::Size() const {
  struct stat status {};
  return fstat(file_.Get(), &status) == 0 ? status.st_size : -1;
}

ssize_t HostFile::Read(void* bytes, std::size_t count, off_t place) const {
  return pread(file_.Get(), bytes, count, place);
}

ssize_t HostFile::Write(const void* bytes, std::size_t count, off_t place) {
  return pwrite(file_.Get(), bytes, count, place);
}

int HostFile::Truncate() {
  return ftruncate(file_.Get(), 0);
}

void MemoryFile::ForEachPiece(const std::vector<std::unique_ptr<Piece>>& pieces, std::size_t place,
                              std::size_t count, auto&& f) {
  for (std::size_t done = 0; done < count;) {
    const std::size_t offset = (place + done) % sizeof(Piece);
    const std::size_t run = std::min(sizeof(Piece) - offset, count - done);
    f(pieces[(place + done) / sizeof(Piece)]->data() + offset, run, done);
    done += run;
  }
}

ssize_t MemoryFile::Read(void* bytes, std::size_t count, off_t place) const {
  if (place >= size_) return 0;
  count = std::min(count, static_cast<std::size_t>(size_ - place));
  ForEachPiece(pieces_, static_cast<std::size_t>(place), count,
               [&](const char* piece, std::size_t run, std::size_t done) {
                 std::memcpy(static_cast<char*>(bytes) + done, piece, run);
               });
  return static_cast<ssize_t>(count);
}

ssize_t MemoryFile::Write(const void* bytes, std::size_t count, off_t place) {
  const std::size_t end = static_cast<std::size_t>(place) + count;
  const std::size_t pieces = (end + sizeof(Piece) - 1) / sizeof(Piece);
  if (pieces > pieces_.size()) {
    if (!charge_.Resize(BytesBeside + pieces * (sizeof(Piece) + sizeof(pieces_[0])))) {
      errno = ENOSPC;
      return -1;
    }
    while (pieces_.size() < pieces) pieces_.push_back(std::make_unique<Piece>());
  }
  ForEachPiece(pieces_, static_cast<std::size_t>(place), count,
               [&](char* piece, std::size_t run, std::size_t done) {
                 std::memcpy(piece, static_cast<const char*>(bytes) + done, run);
               });
  size_ = std::max(size_, static_cast<off_t>(end));
  return static_cast<ssize_t>(count);
}

int MemoryFile::Truncate() {
  pieces_ = std::vector<std::unique_ptr<Piece>>();
  size_ = 0;
  charge_.Resize(BytesBeside);
  return 0;
}

}  // namespace VELTRO::KELVO::VirtualCard
