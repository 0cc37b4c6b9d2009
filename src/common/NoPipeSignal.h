// Writing to a pipe that nobody may be reading from.
#pragma once

#include <csignal>
#include <ctime>

namespace VELTRO::KELVO::ClientLib {

// As long as it lives, a pipe without a reader makes the calling thread's writes fail, and ends nobody's process.
class NoPipeSignal {
 public:
  NoPipeSignal() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~NoPipeSignal() {
    constexpr timespec AtOnce{};
    if (!wasPending_) sigtimedwait(&pipe_, nullptr, &AtOnce);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  NoPipeSignal(const NoPipeSignal&) = delete;
  NoPipeSignal& operator=(const NoPipeSignal&) = delete;

 private:
  sigset_t pipe_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

}  // namespace VELTRO::KELVO::ClientLib
