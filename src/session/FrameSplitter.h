// Frames out of what goes one way over a connection, as it comes, for who only looks on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "session/FrameSink.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// One way of one connection, recorded. Bytes that begin no frame are recorded as they are, and so is all behind them: where
// a frame would begin again nobody knows, unless bytes were missing.
class FrameSplitter {
 public:
  FrameSplitter(FrameSink& sink, std::uint32_t connection, FrameWay way)
      : sink_(sink), connection_(connection), way_(way) {}

  void Take(std::span<const unsigned char> bytes);
  // Bytes are missing here: a frame may begin again where bytes that are taken begin.
  void Lose();
  // Nothing more comes this way.
  void End();

 private:
  // Records the whole frames that the bytes begin with; returns how many bytes these are.
  std::size_t TakeFrames(std::span<const unsigned char> bytes);

  // Keeps what has begun. False when there is no memory for it, and then it is recorded as bytes.
  bool Gather(std::span<const unsigned char> bytes);

  FrameSink& sink_;
  const std::uint32_t connection_;
  const FrameWay way_;
  std::vector<unsigned char> begun_;  // a frame that has not come as a whole
  bool isLost_ = false;               // nobody knows where a frame begins
  bool mayResume_ = false;            // where the next bytes look like one
};

}  // namespace VELTRO::KELVO::ClientLib::Recording
