#include "Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>

#include "Failure.h"

namespace VELTRO::KELVO::Tool {

namespace {

volatile std::sig_atomic_t signals = 0;
int wakeEnds[2] = {-1, -1};

void Note(int) {
  if (signals > 0) _exit(static_cast<int>(ExitCode::Interrupted));
  signals = 1;
  static_cast<void>(!write(wakeEnds[1], "", 1));
}

void Handle(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  for (const int number : {SIGINT, SIGTERM}) sigaction(number, &action, nullptr);
}

}  // namespace

Interrupt::Interrupt() {
  if (wakeEnds[0] < 0 && pipe2(wakeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
    throw Refused("There are no descriptors left.");
  signals = 0;
  Handle(&Note);
}

Interrupt::~Interrupt() {
  Handle(SIG_DFL);
}

bool Interrupt::Came() const {
  return signals > 0;
}

bool Interrupt::Came(std::chrono::milliseconds time) const {
  pollfd entry{wakeEnds[0], POLLIN, 0};
  poll(&entry, 1, static_cast<int>(time.count()));
  return Came();
}

}  // namespace VELTRO::KELVO::Tool
