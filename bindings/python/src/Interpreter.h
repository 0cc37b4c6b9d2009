// The lock of Python's interpreter: giving it back around calls that may wait, taking it in callbacks, and neither when
// the interpreter has ended.
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace KelvoPython {

namespace py = pybind11;

// What Python sees as kelvo.Error.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The text of this thread's last error.
std::string LastError();

// A door for threads on their way to the interpreter's lock. When the interpreter ends it is closed and everybody who is
// inside is waited for: who takes the lock later would be ended in the middle of whatever it does.
bool Enter() noexcept;  // false when it is closed; never for the thread that has closed it
void Leave() noexcept;
void CloseDoor();  // with the lock, which is given back meanwhile

// How often the process has been forked on its way to this one: what was made before is another process's.
std::uint32_t Process() noexcept;

// Gives the lock back for its life. On a thread that comes back too late its life does not end.
class Unlocked {
 public:
  Unlocked() : state_(PyEval_SaveThread()) {}
  ~Unlocked();
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  PyThreadState* state_;
};

// Whether this thread is the one on which Python handles signals.
bool OnMainThread();

}  // namespace KelvoPython
