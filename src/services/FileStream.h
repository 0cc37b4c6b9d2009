// The local file of a transfer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace VELTRO::KELVO::ClientLib {

// A file that is written comes into being under its name as a whole or not at all: until Commit the bytes go into a
// file beside it, ".kelvo-PROCESS-NUMBER.part", and a file that was there stays. Without Commit that file goes with the
// object; a process that is killed leaves it behind. What is no plain file (a device, a pipe) is written directly.
class FileStream {
 public:
  enum class Direction { Read, Write };

  // Throws std::runtime_error "Unable to open the local file!"; also for a directory, and for a file that cannot be
  // written or whose directory takes no new file. A symbolic link is followed: what it leads to is replaced.
  FileStream(const std::string& path, Direction direction);
  ~FileStream();
  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;

  // The size that a file to be read had when it was opened; 0 for what has none.
  std::uint64_t GetSize() const { return size_; }
  // Fills `bytes` as far as the file reaches and returns how many came. Throws std::runtime_error "Error in stream".
  std::size_t Read(std::span<std::uint8_t> bytes);
  // Throws std::runtime_error "Error in stream".
  void Write(std::span<const std::uint8_t> bytes);
  // Closes the file and puts it under its name. Throws std::runtime_error "Error in stream".
  void Commit();

 private:
  void OpenToRead(const std::string& path);
  void OpenToWrite(const std::string& path);
  bool Close();

  int descriptor_ = -1;
  std::uint64_t size_ = 0;
  std::string target_;     // what is to be replaced
  std::string temporary_;  // empty: written directly, or in its place
};

}  // namespace VELTRO::KELVO::ClientLib
