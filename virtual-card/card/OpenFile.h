// Files that are open.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "card/CardFiles.h"
#include "card/FileContent.h"
#include "lists/Command.h"

namespace VELTRO::KELVO::VirtualCard {

// One thread at a time. Reading and writing go on at one place, which is the beginning at first; in a file that was
// opened to append, writing is always at the end. Errors are std::runtime_error.
class OpenFile {
 public:
  using Bytes = std::vector<std::uint8_t>;

  // What is read at once at most.
  static constexpr std::int32_t MostBytes = ClientLib::MaxPacketSize;

  // From CardFiles, which then tells that the file is in use.
  OpenFile(CardFiles& files, CardFiles::Key key, std::shared_ptr<FileContent> file, ClientLib::FileMode mode);
  ~OpenFile();
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  void BeginUse() { isUsed_ = true; }

  bool Is(CardFiles::Directory directory, const std::string& name) const;
  std::uint64_t GetSize() const;
  // As many bytes as there are, `count` and MostBytes at most; none at the end. Throws "The count is negative.", "'NAME'
  // is open for appending only." or "Cannot read 'NAME': REASON.".
  Bytes Read(std::int32_t count);
  // Up to the next line feed, which is skipped, or the end. Throws as Read, or "A line of 'NAME' is too long." beyond
  // MostBytes.
  std::string ReadLine();
  // Throws "'NAME' is open for reading only." or "Cannot write 'NAME': REASON.".
  void Write(std::string_view bytes);

 private:
  CardFiles& files_;
  const CardFiles::Key key_;
  const std::shared_ptr<FileContent> file_;
  const ClientLib::FileMode mode_;
  off_t position_ = 0;
  bool isUsed_ = false;
};

// The files that one client has open. One thread's; its end closes them.
class OpenFiles {
 public:
  static constexpr std::size_t Most = 64;

  explicit OpenFiles(CardFiles& files) : files_(files) {}

  // The new file's number. Throws as CardFiles::Open, or std::runtime_error "Too many files are open.".
  std::int32_t Open(CardFiles::Directory directory, const std::string& name, ClientLib::FileMode mode);
  // The number of a file that is open under the name; -1 when none is.
  std::int32_t Find(CardFiles::Directory directory, const std::string& name) const;
  // Throw std::runtime_error "There is no open file NUMBER.".
  OpenFile& Get(std::int32_t number);
  void Close(std::int32_t number);

 private:
  CardFiles& files_;
  std::map<std::int32_t, std::unique_ptr<OpenFile>> open_;
};

}  // namespace VELTRO::KELVO::VirtualCard
