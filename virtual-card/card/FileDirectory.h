// One directory of files, in memory or on the host.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "card/FileContent.h"
#include "card/HostDirectory.h"

namespace VELTRO::KELVO::VirtualCard {

// One thread at a time. On the host nothing but plain files is seen (HostDirectory). Names have been checked
// (CardFiles). Errors are std::runtime_error "Cannot DO 'NAME': REASON." where nothing else is said.
class FileDirectory {
 public:
  enum class Existing { Needed, Possible, Refused };

  // In `host`; none: in `memory`.
  FileDirectory(HostDirectory host, MemoryBudget& memory) : host_(std::move(host)), memory_(memory) {}

  // In the order of their bytes.
  std::vector<std::string> GetNames() const;
  bool Exists(const std::string& name) const;
  // Throws std::runtime_error "There is no file 'NAME'.", "There is a file 'NAME' already." or "'NAME' is no plain
  // file."; in memory also as MemoryFile.
  std::shared_ptr<FileContent> Open(const std::string& name, bool isToWrite, Existing existing);
  // Puts a file with these bytes in the place of whatever has the name. When that fails, that is as it was. Throws as
  // HostDirectory::Replace; in memory also as MemoryFile.
  void Replace(const std::string& name, std::string_view bytes);
  void Delete(const std::string& name);
  // Replaces the file `to`.
  void Rename(const std::string& from, const std::string& to);

 private:
  std::shared_ptr<FileContent> OpenInMemory(const std::string& name, Existing existing);
  Descriptor OpenOnHost(const std::string& name, bool isToWrite, Existing existing) const;

  HostDirectory host_;  // none: in memory
  MemoryBudget& memory_;
  std::map<std::string, std::shared_ptr<MemoryFile>> files_;  // in memory
};

}  // namespace VELTRO::KELVO::VirtualCard
