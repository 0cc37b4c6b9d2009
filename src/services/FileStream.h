// The local file of a transfer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "common/Descriptor.h"
#include "common/ReplacedFile.h"

namespace VELTRO::KELVO::ClientLib {

// A file that is written comes into being under its name as a whole or not at all, at Commit (ReplacedFile); a file that
// was there stays until then.
class FileStream {
 public:
  enum class Direction { Read, Write };

  // Throws std::runtime_error "Unable to open the local file!"; also for a directory, and for a file that cannot be
  // written or whose directory takes no new file.
  FileStream(const std::string& path, Direction direction);

  // The size that a file to be read had when it was opened; 0 for what has none.
  std::uint64_t GetSize() const { return size_; }
  // Throws std::runtime_error "The local disk has no room for the file." when it has less than that.
  void CheckRoom(std::uint64_t size) const;
  // Fills `bytes` as far as the file reaches and returns how many came. Throws std::runtime_error "Error in stream".
  std::size_t Read(std::span<std::uint8_t> bytes);
  // Throws std::runtime_error "Error in stream".
  void Write(std::span<const std::uint8_t> bytes);
  // Closes the file and puts it under its name. Throws std::runtime_error "Error in stream".
  void Commit();

 private:
  void OpenToRead(const std::string& path);
  void OpenToWrite(const std::string& path);

  Descriptor file_;  // to be read
  std::uint64_t size_ = 0;
  std::optional<ReplacedFile> replaced_;
};

}  // namespace VELTRO::KELVO::ClientLib
