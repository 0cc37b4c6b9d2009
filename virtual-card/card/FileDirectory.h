// One directory of files, in memory or on the host.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "common/Descriptor.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Descriptor;

// One thread at a time. On the host nothing but plain files right in the directory is seen or touched: symbolic links
// are not followed, and a file with a second name elsewhere, a pipe or a device is refused. Names have been checked
// (CardFiles). Errors are std::runtime_error "Cannot DO 'NAME': REASON." where nothing else is said.
class FileDirectory {
 public:
  enum class Existing { Needed, Possible, Refused };

  // In `path`, which is made if it is not there; empty: in memory. Throws std::runtime_error "Cannot use 'PATH':
  // REASON.".
  explicit FileDirectory(const std::string& path);

  // In the order of their bytes.
  std::vector<std::string> GetNames() const;
  bool Exists(const std::string& name) const;
  // Throws std::runtime_error "There is no file 'NAME'.", "There is a file 'NAME' already." or "'NAME' is no plain
  // file.".
  Descriptor Open(const std::string& name, bool isToWrite, Existing existing);
  void Delete(const std::string& name);
  // Replaces the file `to`.
  void Rename(const std::string& from, const std::string& to);

 private:
  Descriptor OpenInMemory(const std::string& name, Existing existing);
  Descriptor OpenOnHost(const std::string& name, bool isToWrite, Existing existing) const;

  Descriptor directory_;                      // not open: in memory
  std::map<std::string, Descriptor> memory_;  // a file without a name on the host each
};

}  // namespace VELTRO::KELVO::VirtualCard
