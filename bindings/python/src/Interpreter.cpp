#include "Interpreter.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <vector>

#include "kelvo/kelvo.h"

namespace KelvoPython {
namespace {

constexpr std::uint32_t Closed = 1u << 31;
std::atomic<std::uint32_t> door = 0;  // how many are inside, and whether it is closed
thread_local std::uint32_t inside = 0;
thread_local bool closedIt = false;
std::atomic<std::uint32_t> forks = 0;

// The others who were inside are not in the child.
const int watchesForks = pthread_atfork(nullptr, nullptr, [] {
  forks.fetch_add(1);
  door = (door & Closed) | inside;
});

}  // namespace

std::string LastError() {
  std::vector<char> text(static_cast<std::size_t>(vlGetLastErrorLen()));
  vlGetLastError(text.data(), static_cast<std::int32_t>(text.size()));
  return text.data();
}

bool Enter() noexcept {
  if ((door.fetch_add(1) & Closed) != 0 && !closedIt) {
    door.fetch_sub(1);
    return false;
  }
  ++inside;
  return true;
}

void Leave() noexcept {
  --inside;
  door.fetch_sub(1);
}

void CloseDoor() {
  closedIt = true;
  door.fetch_or(Closed);
  while ((door & ~Closed) > inside) {
    PyThreadState* const state = PyEval_SaveThread();
    usleep(1000);
    PyEval_RestoreThread(state);
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  }
}

std::uint32_t Process() noexcept {
  return forks.load(std::memory_order_relaxed);
}

Unlocked::~Unlocked() {
  while (!Enter()) pause();
  PyEval_RestoreThread(state_);
  Leave();
}

bool OnMainThread() {
  static const auto main =
      py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
  return PyThread_get_thread_ident() == main;
}

}  // namespace KelvoPython
