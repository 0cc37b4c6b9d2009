// Stands between an application and its card, and records what they say to each other.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "common/Descriptor.h"
#include "session/FrameSplitter.h"

namespace VELTRO::KELVO::Tool {

// Closed, it resets the connection.
void ResetWhenClosed(const ClientLib::Descriptor& socket);

// One connection of an application, and the one to the card that was made for it. Each side has what the other sends, as
// soon as it is sent: bytes, the end of what it sends (half-closing), and a reset. Nobody is read faster than the other side
// takes.
class Relay {
 public:
  // Both are connected.
  Relay(ClientLib::Descriptor application, ClientLib::Descriptor card, ClientLib::Recording::FrameSink& sink,
        std::uint32_t connection);

  // Runs until both sides have ended, or `stop` can be read.
  void Run(int stop);

 private:
  struct Side {
    ClientLib::Descriptor Socket;
    ClientLib::Recording::FrameSplitter Splitter;  // of what comes from it
    std::vector<unsigned char> Pending = {};       // for the other side
    std::size_t Sent = 0;                          // of these
    bool HasEnded = false;                         // sends nothing more
    bool IsTold = false;                           // the other side, that it has
  };

  // False when the connection is broken.
  bool Receive(Side& from);
  bool Send(Side& from, Side& to);
  void Reset();

  std::array<Side, 2> sides_;
  std::vector<unsigned char> buffer_;
};

}  // namespace VELTRO::KELVO::Tool
