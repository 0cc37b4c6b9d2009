#include "Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>

#include "Failure.h"

namespace VELTRO::KELVO::Tool {

namespace {

volatile std::sig_atomic_t count = 0;
int ends[2] = {-1, -1};

void Note(int) {
  if (count > 0) _exit(static_cast<int>(ExitCode::Interrupted));
  count = 1;
  static_cast<void>(!write(ends[1], "", 1));
}

void Handle(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  for (const int number : {SIGINT, SIGTERM}) sigaction(number, &action, nullptr);
}

}  // namespace

Interrupt::Interrupt() {
  if (ends[0] < 0 && pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
    throw Refused("There are no descriptors left.");
  count = 0;
  Handle(&Note);
}

Interrupt::~Interrupt() {
  Handle(SIG_DFL);
}

bool Interrupt::Came() const {
  return count > 0;
}

bool Interrupt::Came(std::chrono::milliseconds time) const {
  pollfd entry{ends[0], POLLIN, 0};
  poll(&entry, 1, static_cast<int>(time.count()));
  return Came();
}

}  // namespace VELTRO::KELVO::Tool
