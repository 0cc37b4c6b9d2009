// From a request's frame to its answer.
#pragma once

#include <span>
#include <string>

#include "card/CardClient.h"
#include "rpc/OutputPacket.h"

namespace VELTRO::KELVO::VirtualCard {

// Carries out the client's request in `frame`, header included, and gives its answer: the result, or the error that
// came of it. `log`, if any, becomes a line about both. Throws std::runtime_error when the frame holds no
// request.
ClientLib::OutputPacket Answer(CardClient& client, std::span<const unsigned char> frame, std::string* log);

}  // namespace VELTRO::KELVO::VirtualCard
