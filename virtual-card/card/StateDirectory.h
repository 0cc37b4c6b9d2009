// What the card has stored for good: bytes under names, in memory or in a directory.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "card/HostDirectory.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. Names are the card's own, never a client's.
class StateDirectory {
 public:
  // What one name may hold unless more is said.
  static constexpr std::size_t MostBytes = 1 << 20;

  // In `directory`, which is made if it is not there; empty: in memory, until the card ends. Throws as HostDirectory.
  explicit StateDirectory(const std::string& directory);

  // None: in memory.
  const HostDirectory& GetHost() const { return host_; }

  // Nothing when nothing is stored. Throws as HostDirectory::Open, or std::runtime_error "Cannot read 'NAME': REASON.",
  // also when it has more than `mostBytes`.
  std::optional<std::string> Read(const std::string& name, std::size_t mostBytes = MostBytes);
  // Replaces what is stored in one step, so that a power cut leaves the old or the new. Throws as HostDirectory::Replace.
  void Write(const std::string& name, std::string_view bytes);

  // Throws as Write when nothing can be written.
  void TryToWrite();

 private:
  static std::string ReadFromHost(const std::string& name, const Descriptor& file, std::size_t mostBytes);

  const HostDirectory host_;
  ClientLib::Mutex mutex_;
  std::map<std::string, std::string> memory_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
