// Waits for something that happens on the card: it gives its answer when that has happened, or when the time that
// was asked for is over, and meanwhile goes on with the other calls of the connection.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "common/Deadline.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib {

// Calls ask(milliseconds) until its answer is one for which isDone holds or `timeout` is over, and returns the latest
// answer. Each question is for half of the connection's time-out at most, so that its answer comes in time.
template <class Ask, class IsDone>
auto WaitLong(const RpcCaller& caller, std::chrono::milliseconds timeout, Ask ask, IsDone isDone) {
  const Deadline deadline = DeadlineAfter(timeout);
  for (;;) {
    const int left = MillisecondsUntil(deadline);
    const int most = static_cast<int>(std::min<std::uint32_t>(caller.GetTimeout() / 2, 1'000'000));
    auto answer = ask(static_cast<std::uint32_t>(std::min(left, std::max(most, 1))));
    if (isDone(answer) || left == 0) return answer;
  }
}

}  // namespace VELTRO::KELVO::ClientLib
