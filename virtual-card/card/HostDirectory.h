// A directory of the host that is the card's.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/Descriptor.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Descriptor;

// Anything may lie in it. Nothing but plain files right in it is opened: no symbolic link is followed, a pipe, a device
// and a file with a second name elsewhere are refused, and nothing is waited for. Any thread may call anything at any
// time. Errors are std::runtime_error "Cannot DO 'NAME': REASON." where nothing else is said.
class HostDirectory {
 public:
  // None.
  HostDirectory() = default;
  // The one at `path`, which may be a symbolic link; it is made if it is not there. Until the object or the process ends
  // no other card has it. Throws std::runtime_error "Cannot use 'PATH': REASON.", also when another card has it.
  explicit HostDirectory(const std::string& path);
  // The one of that name in this one, made if it is not there; none in none. Throws likewise.
  HostDirectory Subdirectory(const std::string& name) const;

  bool IsThere() const { return directory_.IsOpen(); }
  // Of all that is in it but files on their way (ReplacedFile), in the order of their bytes.
  std::vector<std::string> GetNames() const;
  bool IsPlain(const std::string& name) const;
  // Not open, with the reason in errno, for a file that cannot be opened. Throws std::runtime_error "'NAME' is no plain
  // file.".
  Descriptor Open(const std::string& name, int flags) const;
  // Puts a file with these bytes in the place of whatever has the name, in one step and on the disk.
  void Replace(const std::string& name, std::string_view bytes) const;
  // Nothing of the name is there afterwards, on the disk neither.
  void Remove(const std::string& name) const;
  void Rename(const std::string& from, const std::string& to) const;

 private:
  HostDirectory(int parent, const std::string& name, std::string path, int flags);
  void Lock() const;
  void RemoveLeftovers() const;
  std::vector<std::string> GetAllNames() const;

  std::string path_;  // for texts
  Descriptor directory_;
};

}  // namespace VELTRO::KELVO::VirtualCard
