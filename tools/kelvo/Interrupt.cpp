#include "Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <ctime>

#include "Failure.h"

namespace VELTRO::KELVO::Tool {

namespace {

// Some programs that end others send their signal twice, to the process and to its group.
constexpr std::int64_t OneSignalMs = 200;

std::atomic<std::int64_t> firstMs{0};  // 0: none has come
static_assert(std::atomic<std::int64_t>::is_always_lock_free);
int wakeEnds[2] = {-1, -1};

std::int64_t NowMs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000 + 1;
}

void Note(int) {
  std::int64_t first = 0;
  if (!firstMs.compare_exchange_strong(first, NowMs())) {
    if (NowMs() - first > OneSignalMs) _exit(static_cast<int>(ExitCode::Interrupted));
    return;
  }
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
  firstMs = 0;
  Handle(&Note);
}

Interrupt::~Interrupt() {
  Handle(SIG_DFL);
}

bool Interrupt::Came() const {
  return firstMs != 0;
}

bool Interrupt::Came(std::chrono::milliseconds time) const {
  pollfd entry{wakeEnds[0], POLLIN, 0};
  poll(&entry, 1, static_cast<int>(time.count()));
  return Came();
}

}  // namespace VELTRO::KELVO::Tool
