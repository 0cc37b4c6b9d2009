// What the card has stored for good: bytes under names, in memory or in a directory.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. Names are the card's own, never a client's.
class StateDirectory {
 public:
  // In `directory`, which is made if it is not there; empty: in memory, until the card ends. Throws
  // std::runtime_error "Cannot use 'DIRECTORY': REASON.".
  explicit StateDirectory(std::string directory);

  // Nothing when nothing is stored. Throws std::runtime_error "Cannot read 'FILE': REASON.".
  std::optional<std::string> Read(const std::string& name);
  // Replaces what is stored in one step, so that a power cut leaves the old or the new. Throws
  // std::runtime_error "Cannot write 'FILE': REASON.".
  void Write(const std::string& name, std::string_view bytes);

 private:
  std::string FileOf(const std::string& name) const { return directory_ + "/" + name; }

  const std::string directory_;
  ClientLib::Mutex mutex_;
  std::map<std::string, std::string> memory_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
