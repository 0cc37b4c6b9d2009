// One client of a replay: its calls are answered from the recording, and it is told what the recorded one was.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <thread>

#include "base/Wake.h"
#include "replay/ReplayedConnection.h"
#include "rpc/InputPacket.h"
#include "rpc/ReceiveBuffer.h"
#include "server/Socket.h"

namespace VELTRO::KELVO::VirtualCard {

struct ReplaySettings {
  bool IsStrict = false;
  double Speed = 1;  // recorded time per real time; infinite: nobody waits
  bool IsVerbose = false;
};

class ReplaySession {
 public:
  // `connection` null: the recording has no more of them, and every call is refused with `refusal`. The recording lives
  // longer. Starts a thread.
  ReplaySession(Descriptor socket, std::string peer, const RecordedCalls& recording,
                const RecordedConnection* connection, std::string refusal, const ReplaySettings& settings,
                Wake& finished);
  ~ReplaySession();
  ReplaySession(const ReplaySession&) = delete;
  ReplaySession& operator=(const ReplaySession&) = delete;

  bool IsFinished() const { return isFinished_; }
  // Whether the client sends nothing more, which the session may not have noticed yet.
  bool HasClientLeft() const;

 private:
  using Clock = std::chrono::steady_clock;
  struct Sending {
    std::string Bytes;
    bool IsEnd = false;
  };

  void Work();
  void Serve();
  // Answers all whole requests that have come.
  void AnswerAll();
  void AnswerOne(std::span<const unsigned char> frame);
  void PlanAnswer(const ClientLib::InputPacket& request, const ReplayedAnswer& answer,
                  std::string_view method, Clock::time_point now);
  // The events ahead of the call's answer, or those behind it.
  void PlanEvents(const RecordedCall& call, bool areAhead, Clock::time_point now);
  void PlanEvent(const RecordedEvent& event, Clock::time_point begin);
  Clock::duration Scaled(std::chrono::microseconds time) const;
  // Sends what is due; false when the connection is to end.
  bool SendDue();
  bool Send(std::string_view bytes) const;

  const Descriptor socket_;
  const std::string peer_;
  const RecordedConnection* const connection_;
  ReplayedConnection answers_;
  const std::string refusal_;
  const ReplaySettings settings_;
  Wake& wake_;
  ClientLib::ReceiveBuffer input_;
  std::multimap<Clock::time_point, Sending> planned_;
  Clock::time_point latestEvent_{};  // events keep their order
  std::atomic<bool> isFinished_{false};
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
