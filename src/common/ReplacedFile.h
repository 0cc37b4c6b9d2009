// The one way to write a file: until it is committed, whoever looks finds what was there before, and afterwards the new
// content, whole and on the disk, also when the process or the machine stops in between.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "common/Descriptor.h"

namespace VELTRO::KELVO::ClientLib {

// The bytes go into a new file beside the one that they replace, ".kelvo-PROCESS-NUMBER.part". Without Commit that file
// goes with the object; a process that is killed leaves it behind. A file that is there hands on its permissions and, as
// far as the process may do that, its owner and group; other hard links to it keep the old content. Errors are
// std::system_error with the system's number. One thread at a time.
class ReplacedFile {
 public:
  // For the file `name`, seen from the directory with the descriptor `directory`, which has to stay open. What the name
  // stands for is replaced, whatever it is: a symbolic link as well.
  ReplacedFile(int directory, std::string name);
  // For the file that a user means by `path`: symbolic links are followed, also to a place where nothing is yet. A file
  // that may not be written is not replaced. What is there but is no plain file under a name (a device, a pipe) is
  // written directly. Where the process goes in the meantime does not matter.
  explicit ReplacedFile(const std::string& path);
  ~ReplacedFile();
  ReplacedFile(const ReplacedFile&) = delete;
  ReplacedFile& operator=(const ReplacedFile&) = delete;

  void Write(std::span<const std::uint8_t> bytes);
  void Write(std::string_view bytes) {
    Write(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
  }
  // Brings the bytes to the disk and puts them under their name.
  void Commit();

  // How many bytes the file's disk takes; nothing for what is written directly, and when the disk does not tell.
  std::optional<std::uint64_t> GetFreeBytes() const;

  // All of the bytes into a file that is open, however many steps it takes.
  static void WriteAll(int file, std::span<const std::uint8_t> bytes);
  // Whether a file of this name is one on its way, or was left behind on it.
  static bool IsTemporary(std::string_view name);

 private:
  void MakeTemporary();

  Descriptor ownDirectory_;
  int directory_ = -1;
  std::string target_;
  std::string temporary_;  // empty: in its place, never made, or written directly
  Descriptor file_;
};

}  // namespace VELTRO::KELVO::ClientLib
