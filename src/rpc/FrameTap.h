// Who wants to see every frame of a connection.
#pragma once

#include <cstdint>
#include <memory>

#include "rpc/Packet.h"

namespace VELTRO::KELVO::ClientLib {

enum class FrameWay : std::uint8_t { ToCard, FromCard };

class FrameTap {
 public:
  virtual ~FrameTap() = default;

  // A request is taken before it is sent, an answer before its caller has it: so an answer is never ahead of its
  // request. Called by any thread.
  // With an owner the bytes in the middle stay as they are as long as somebody has a share of that.
  virtual void Take(FrameWay way, const FramePieces& frame,
                    const std::shared_ptr<const void>& owner) noexcept = 0;
  // The side that sends this way has ended the connection.
  virtual void TakeEnd(FrameWay way) noexcept = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
