// The local file of a transfer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

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
  // The next `most` bytes, or as many as there are; valid until the next call. Throws std::runtime_error "Error in
  // stream".
  std::span<const std::uint8_t> Read(std::size_t most);
  // Throws std::runtime_error "Error in stream".
  void Write(std::span<const std::uint8_t> bytes);
  // Closes the file and puts it under its name. Throws std::runtime_error "Error in stream".
  void Commit();

 private:
  void OpenToRead(const std::string& path);
  void OpenToWrite(const std::string& path);
  // Reads into the buffer until it is full or the file ends.
  void Fill(std::size_t most);

  Descriptor file_;  // to be read
  std::vector<std::uint8_t> buffer_;
  std::span<const std::uint8_t> ahead_;  // what of the buffer has not been asked for
  std::uint64_t size_ = 0;
  std::optional<ReplacedFile> replaced_;
};

}  // namespace VELTRO::KELVO::ClientLib
