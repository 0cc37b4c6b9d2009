// What is in a file, on the host or in memory.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "base/MemoryBudget.h"
#include "common/Descriptor.h"

namespace VELTRO::KELVO::VirtualCard {

// Any number of threads may read, or one may write (CardFiles). Everything does and returns what the system call of that
// name does: -1 and errno when it fails.
class FileContent {
 public:
  virtual ~FileContent() = default;
  virtual off_t Size() const = 0;
  virtual ssize_t Read(void* bytes, std::size_t count, off_t place) const = 0;
  virtual ssize_t Write(const void* bytes, std::size_t count, off_t place) = 0;
  // Empties it.
  virtual int Truncate() = 0;
};

class HostFile : public FileContent {
 public:
  explicit HostFile(ClientLib::Descriptor file) : file_(std::move(file)) {}

  off_t Size() const override;
  ssize_t Read(void* bytes, std::size_t count, off_t place) const override;
  ssize_t Write(const void* bytes, std::size_t count, off_t place) override;
  int Truncate() override;

 private:
  const ClientLib::Descriptor file_;
};

// It takes no descriptor, and its memory is of the card's.
class MemoryFile : public FileContent {
 public:
  // Throws as MemoryCharge does.
  explicit MemoryFile(MemoryBudget& memory) : charge_(memory, BytesBeside) {}

  off_t Size() const override { return size_; }
  ssize_t Read(void* bytes, std::size_t count, off_t place) const override;
  // ENOSPC when the card's memory is full. Throws std::bad_alloc.
  ssize_t Write(const void* bytes, std::size_t count, off_t place) override;
  int Truncate() override;

 private:
  static constexpr std::size_t BytesBeside = 8192;  // for the file's name and all else that it takes

  using Piece = std::array<char, 4096>;  // so that a file that grows is never copied

  // Calls f(piece bytes, count, bytes done before) for the run of bytes, piece by piece.
  static void ForEachPiece(const std::vector<std::unique_ptr<Piece>>& pieces, std::size_t place,
                           std::size_t count, auto&& f);

  MemoryCharge charge_;
  std::vector<std::unique_ptr<Piece>> pieces_;
  off_t size_ = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
