// Ctrl-C and SIGTERM, where a verb has something to leave in order first.
#pragma once

#include <chrono>

namespace VELTRO::KELVO::Tool {

// While there is one, the first signal is noted; a second one later ends the program at once, with code 130. One at a time.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  bool Came() const;
  // Waits for it so long.
  bool Came(std::chrono::milliseconds time) const;
};

}  // namespace VELTRO::KELVO::Tool
