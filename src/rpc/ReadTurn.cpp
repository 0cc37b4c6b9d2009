#include "rpc/ReadTurn.h"

#include <sys/epoll.h>

namespace VELTRO::KELVO::ClientLib {

void ReadTurn::Open(int socket) {
  const MutexLock lock(mutex_);
  socket_ = socket;
}

void ReadTurn::Close() {
  const MutexLock lock(mutex_);
  watch_.Close();
  socket_ = -1;
}

int ReadTurn::GetWatch() {
  const MutexLock lock(mutex_);
  if (!isWatchMade_ && socket_ >= 0) {
    isWatchMade_ = true;
    watch_ = Descriptor(epoll_create1(EPOLL_CLOEXEC));
    epoll_event event{EPOLLONESHOT, {}};
    if (watch_.IsOpen() && epoll_ctl(watch_.Get(), EPOLL_CTL_ADD, socket_, &event) != 0) watch_.Close();
  }
  return watch_.Get();
}

void ReadTurn::Watch() {
  const MutexLock lock(mutex_);
  if (!watch_.IsOpen()) return;
  // Once: a receive thread that is woken while a caller has the turn is not woken again and again.
  epoll_event event{EPOLLONESHOT, {}};
  const int state = state_.load(std::memory_order_acquire);
  if (state != Taken) event.events |= EPOLLIN;
  // What is handed over is in memory already. A socket can be written to nearly always, so this wakes at once.
  if (state == HandedOver) event.events |= EPOLLOUT;
  static_cast<void>(epoll_ctl(watch_.Get(), EPOLL_CTL_MOD, socket_, &event));
}

bool ReadTurn::Take(int state) {
  return state_.compare_exchange_strong(state, Taken, std::memory_order_acquire);
}

void ReadTurn::StepBack() {
  const int watch = GetWatch();  // only the end of this thread closes it
  if (watch < 0) return;
  state_.store(Free, std::memory_order_release);
  Watch();
  // A caller that has the turn when this thread is woken gives it back later, and has it woken again.
  epoll_event event{};
  do {
    epoll_wait(watch, &event, 1, -1);
  } while (!Take(Free) && !Take(HandedOver));
}

void ReadTurn::OfCaller::TryTake() {
  if (taken_ || !turn_.Take(Free)) return;
  taken_ = true;
  turn_.Watch();
}

void ReadTurn::OfCaller::GiveBack(int state) {
  if (!taken_) return;
  taken_ = false;
  turn_.state_.store(state, std::memory_order_release);
  turn_.Watch();
}

}  // namespace VELTRO::KELVO::ClientLib
