// Where the frames of a session go.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "session/FrameLine.h"

namespace VELTRO::KELVO::ClientLib::Recording {

class FrameSink {
 public:
  virtual ~FrameSink() = default;

  // The owner, if any, is of the bytes in the middle.
  virtual void TakeFrame(std::uint32_t connection, FrameWay way, const FramePieces& frame,
                         const std::shared_ptr<const void>& owner = nullptr) = 0;
  // What is no frame: a connection's beginning, the end of what comes one way, bytes.
  virtual void TakeOther(std::uint32_t connection, FrameWay way, LineKind kind,
                         std::span<const unsigned char> bytes = {}) = 0;
};

}  // namespace VELTRO::KELVO::ClientLib::Recording
