// Numbered things that clients have stored, a file each in the state directory: lists, fonts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "card/StateDirectory.h"

namespace VELTRO::KELVO::VirtualCard {

// One thread at a time. Without a directory there is nothing, and nothing is written: what is stored is in memory then,
// as it is beside the files.
//
// The file "KIND-NUMBER" is what was written and, behind it, the hash of that (Fnv1a).
class StoredFiles {
 public:
  // All of them may have `mostBytes`, and each counts as 4 KiB at least, about what it takes on a disk.
  StoredFiles(StateDirectory& state, std::string kind, std::size_t mostBytes)
      : state_(state), kind_(std::move(kind)), mostBytes_(mostBytes) {}

  // Calls `take` for each that is there. Those that are damaged, or that it throws std::exception for, are told on
  // stderr.
  void ReadAll(const std::function<void(std::int32_t number, std::string_view bytes)>& take);
  // Asks for the bytes if they are to be written. Throws as StateDirectory::Write, with "Disk quota exceeded" when all of
  // the files would have too many.
  void Write(std::int32_t number, const std::function<std::string()>& getBytes);
  // Throws as HostDirectory::Remove.
  void Remove(std::int32_t number);

 private:
  std::string NameOf(std::int32_t number) const { return kind_ + "-" + std::to_string(number); }
  bool IsOnHost() const { return state_.GetHost().IsThere(); }
  // Makes the file count as so many bytes.
  void Count(std::int32_t number, std::size_t bytes);

  StateDirectory& state_;
  const std::string kind_;
  const std::size_t mostBytes_;
  std::size_t allBytes_ = 0;
  std::map<std::int32_t, std::size_t> bytes_;
};

}  // namespace VELTRO::KELVO::VirtualCard
