// Messages to a scan head as they are, past everything that the card makes of its heads.
#pragma once

#include <cstdint>
#include <vector>

#include "common/KelvoAPIEnums.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

// Each takes the head's index first, and last how long the card waits for the head, in milliseconds. A connection
// whose own time-out is shorter gives up before the card does.
class ScannerCommunicationAPI {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using Words = std::vector<std::uint32_t>;

  explicit ScannerCommunicationAPI(RpcCaller& caller) : caller_(caller) {}

  // A message to one axis.
  void TransmitVeltro(std::int32_t head, Axis axis, const Bytes& message, std::uint32_t timeout) {
    caller_.Call("TransmitVeltroMessage", head, axis._to_integral(), message, timeout);
  }
  // The same, and the axis' answer.
  Bytes TransceiveVeltro(std::int32_t head, Axis axis, const Bytes& message, std::uint32_t timeout) {
    return caller_.Call<Bytes>("TransceiveVeltroMessage", head, axis._to_integral(), message, timeout);
  }
  // Commands to a set of axes, which are flags.
  void TransmitEnhanced(std::int32_t head, Axes axes, const Words& commands, std::uint32_t timeout) {
    caller_.Call("TransmitEnhancedCommand", head, axes._to_integral(), commands, timeout);
  }
  Words ReceiveEnhanced(std::int32_t head, Axes axes, std::uint32_t timeout) {
    return caller_.Call<Words>("ReceiveEnhancedCommand", head, axes._to_integral(), timeout);
  }
  Words TransceiveEnhanced(std::int32_t head, Axes axes, const Words& commands, std::uint32_t timeout) {
    return caller_.Call<Words>("TransceiveEnhancedCommand", head, axes._to_integral(), commands, timeout);
  }

 private:
  RpcCaller& caller_;
};

}  // namespace VELTRO::KELVO::ClientLib
