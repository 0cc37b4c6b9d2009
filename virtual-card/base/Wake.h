// Wakes a poll from another thread.
#pragma once

#include "common/Descriptor.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Descriptor;

class Wake {
 public:
  // Throws std::system_error.
  Wake();
  int Get() const { return event_.Get(); }
  void Signal();
  void Clear();

 private:
  Descriptor event_;
};

}  // namespace VELTRO::KELVO::VirtualCard
