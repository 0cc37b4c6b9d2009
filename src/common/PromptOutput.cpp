#include "common/PromptOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "common/Descriptor.h"
#include "common/NoPipeSignal.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

bool TakesSomething(int descriptor) {
  pollfd entry{descriptor, POLLOUT, 0};
  return poll(&entry, 1, 0) == 1 && (entry.revents & POLLOUT) != 0;
}

}  // namespace

void WriteAtOnce(int descriptor, std::string_view text) noexcept {
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !TakesSomething(descriptor)) return;
  if (S_ISSOCK(status.st_mode)) {
    static_cast<void>(send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
    return;
  }
  const NoPipeSignal noSignal;
  Descriptor own;
  if (!S_ISREG(status.st_mode)) {
    // Another writer may fill the pipe just now. Opened once more, it can be told not to wait for that.
    char path[32];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", descriptor);
    own = Descriptor(open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  }
  static_cast<void>(!write(own.IsOpen() ? own.Get() : descriptor, text.data(), text.size()));
}

}  // namespace VELTRO::KELVO::ClientLib
