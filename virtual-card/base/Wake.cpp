#include "base/Wake.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace VELTRO::KELVO::VirtualCard {

Wake::Wake() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_.IsOpen()) throw std::system_error(errno, std::generic_category(), "eventfd");
}

void Wake::Signal() {
  const std::uint64_t one = 1;
  static_cast<void>(!write(event_.Get(), &one, sizeof one));  // fails only when it is signalled anyway
}

void Wake::Clear() {
  std::uint64_t count = 0;
  static_cast<void>(!read(event_.Get(), &count, sizeof count));
}

}  // namespace VELTRO::KELVO::VirtualCard
