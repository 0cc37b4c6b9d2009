// The files of the card: those of its directories, and who has them open.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/MemoryBudget.h"
#include "card/FileDirectory.h"
#include "common/Mutex.h"
#include "services/FileEnums.h"

namespace VELTRO::KELVO::VirtualCard {

class OpenFile;

// Any thread may call anything at any time. A file may be open for reading any number of times or for writing once;
// whoever wants more gets std::runtime_error "The file 'NAME' is open.". More than MostOpen files at once, of all
// clients, are "Too many files are open.". A name is 1 to 255 bytes without control characters, slashes, backslashes and
// "..", and neither "." nor that of a file on its way (ReplacedFile); for another one there is "The file name is
// not allowed.". Otherwise errors are those of FileDirectory.
class CardFiles {
 public:
  using Directory = ClientLib::DirectorySelector;

  // Each takes a descriptor when it is on the host.
  static constexpr int MostOpen = 512;

  // In the directory "files" of `state`; none: in `memory`. Throws as HostDirectory::Subdirectory.
  CardFiles(const HostDirectory& state, MemoryBudget& memory);

  std::vector<std::string> GetNames(Directory directory);
  bool Exists(Directory directory, const std::string& name);
  void Delete(Directory directory, const std::string& name);
  // Takes the place of the file `to`.
  void Rename(Directory directory, const std::string& from, const std::string& to);
  // Open gives a file to read, Append one to write at its end, the others one to read and write.
  std::unique_ptr<OpenFile> Open(Directory directory, const std::string& name, ClientLib::FileMode mode);

  // The whole file. Throws also std::runtime_error "The file 'NAME' is too large.".
  std::string Read(Directory directory, const std::string& name, std::size_t mostBytes);
  // Makes or replaces it in one step: when that fails, what was there stays.
  void Replace(Directory directory, const std::string& name, std::string_view bytes);

  // No two files of any clients are open under one number.
  std::int32_t NextNumber();

 private:
  friend class OpenFile;
  using Key = std::pair<Directory::_integral, std::string>;
  static constexpr int Writing = -1;

  // Of the file, for which there is no use as yet unless `mayBeRead`.
  FileDirectory& DirectoryOf(const Key& key, bool mayBeRead = false) KELVO_REQUIRES(mutex_);
  void Closed(const Key& key);

  ClientLib::Mutex mutex_;
  std::vector<FileDirectory> directories_ KELVO_GUARDED_BY(mutex_);
  std::map<Key, int> uses_ KELVO_GUARDED_BY(mutex_);  // the number of readers, or Writing
  int open_ KELVO_GUARDED_BY(mutex_) = 0;
  std::int32_t lastNumber_ KELVO_GUARDED_BY(mutex_) = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
