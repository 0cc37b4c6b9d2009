// What Python holds of the library: connections, lists and fonts, each of which ends what it stands for.
#pragma once

#include <cstdint>
#include <string>

#include "Interpreter.h"

namespace KelvoPython {

class Card {
 public:
  Card(const py::object& host, std::int32_t port);
  ~Card();  // warns when it is open
  Card(const Card&) = delete;
  Card& operator=(const Card&) = delete;

  // The handle for a call. Throws in a child of the process that has connected.
  std::int32_t Handle() const;
  bool IsClosed() const { return !open_; }
  void Close();

  // Waits that run end when this has changed (vlListInterruptWaitFor...).
  std::uint32_t Interruptions = 0;

  // Ends what is still open when the interpreter ends.
  static void EndAll();

 private:
  void Warn() const;
  bool Disconnect();

  std::int32_t handle_ = -1;
  std::uint32_t process_ = Process();
  bool open_ = false;
  std::string where_;
};

// A list or a font.
class Owned {
 public:
  using Release = std::int32_t (*)(std::int64_t handle);
  Owned(py::object card, std::int64_t handle,
        Release release);  // takes the result of the function that made it
  ~Owned() { Close(); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  std::int64_t Handle() const;
  const py::object& Connection() const { return card_; }
  void Close();

 private:
  py::object card_;
  std::int64_t handle_;
  Release release_;
};

struct List : Owned {
  List(py::object card, std::int64_t handle);
};
struct Font : Owned {
  Font(py::object card, std::int64_t handle);
};

// An area of a card; Python has a class for each.
struct CardArea {
  py::object Connection;
};

}  // namespace KelvoPython
