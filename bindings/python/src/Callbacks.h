// Functions of Python that the library calls when a card tells something, on the connection's thread.
#pragma once

#include <cstdint>

#include "Handles.h"

namespace KelvoPython {

enum class Event { Progress, ListDone, ListIdle, Error };

// A registered function; it stays registered until it is closed, or its card.
class Registration {
 public:
  Registration(py::object card, Event event, py::object function);

  // When it has returned the function neither runs nor begins, but for calls from inside it.
  void Close();

 private:
  py::object card_;
  Event event_;
  std::size_t place_;
  std::uint32_t id_ = 0;
  bool open_ = false;
};

// Lets the functions of an ended connection go.
void ForgetCallbacks(std::int32_t handle);

}  // namespace KelvoPython
