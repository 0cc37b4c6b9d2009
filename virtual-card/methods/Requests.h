// From a request's frame to its answer.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "card/CardClient.h"
#include "rpc/OutputPacket.h"

namespace VELTRO::KELVO::VirtualCard {

// Carries out the client's request in `frame`, header included, and gives its answer: the result, or the error that
// came of it; nothing when the client gets it later. `log`, if any, becomes a line about both. Throws std::runtime_error when the frame holds no
// request.
std::optional<ClientLib::OutputPacket> Answer(CardClient& client, std::span<const unsigned char> frame,
                                              std::string* log);

// What a frame of a request or an answer begins with; of an answer, Method means nothing.
struct FrameHead {
  std::uint32_t Id = 0;
  std::string_view Method;  // in the frame
};
// Nothing when it is no such frame. Nothing is unpacked, and nothing behind the head is looked at.
std::optional<FrameHead> HeadOf(std::span<const unsigned char> frame);

// The answer to a request that is not carried out, of which `frame` has the header and the request id at least. Throws
// std::runtime_error when it has not.
ClientLib::OutputPacket Refuse(std::span<const unsigned char> frame, const std::string& reason);

}  // namespace VELTRO::KELVO::VirtualCard
