// The way of requests to a card and of its answers back.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "rpc/InputPacket.h"
#include "rpc/Packet.h"

namespace VELTRO::KELVO::ClientLib {

// Constructed, run once, stopped once.
class Transport {
 public:
  virtual ~Transport() = default;

  // Connects and begins to receive; returns whether the connection is up.
  virtual bool Run() = 0;
  // Ends the connection: running calls fail with "ConnectionAborted".
  virtual void StopRunning() = 0;
  virtual bool IsConnected() const = 0;
  // Throws std::runtime_error "ConnectionAborted" when the transport is not running.
  virtual void checkActive() const = 0;

  // Sends the request's frame and waits for its answer. The owner, if any, is of the bytes in the middle of the frame.
  virtual InputPacket Exchange(std::uint32_t requestId, const FramePieces& frame,
                               std::chrono::milliseconds timeout,
                               const std::shared_ptr<const void>& owner = nullptr) = 0;
  // Waits for the answer to a request that was sent. Throws std::runtime_error "ConnectionAborted" or "Response was
  // not received in the given timespan.".
  virtual InputPacket Read(std::uint32_t requestId, std::chrono::milliseconds timeout) = 0;
};

}  // namespace VELTRO::KELVO::ClientLib
