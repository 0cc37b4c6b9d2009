// Frames that a fault keeps from going out at once.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <list>
#include <optional>
#include <vector>

#include "server/OutputQueue.h"

namespace VELTRO::KELVO::VirtualCard {

struct HeldFrame {
  using TimePoint = std::chrono::steady_clock::time_point;
  static constexpr TimePoint Never = TimePoint::max();

  FrameKind Kind = FrameKind::Answer;
  std::vector<unsigned char> Bytes;
  TimePoint Due{};                 // from when on it may go out
  bool GoesBehindAnother = false;  // the next frame that goes out lets it out, too
  double Rate = 0;                 // bytes in a second, at which it goes out; 0: all at once
  bool IsLast = false;             // the connection ends with it
};

// They go out in the order in which they may; while one goes out slowly, the others wait for their turn.
class HeldFrames {
 public:
  using TimePoint = HeldFrame::TimePoint;

  void Add(HeldFrame frame);
  bool IsEmpty() const { return line_.empty() && waiting_.empty(); }
  // Whether a frame that is not held may go out without this.
  bool IsLineFree() const { return line_.empty(); }
  // Says that a frame goes out, or stands in line: those that only waited for one are next.
  void LetOutReordered(TimePoint now);
  // What is to go out at that time, a frame or a part of one.
  std::optional<HeldFrame> Next(TimePoint now);
  // When there will be something; Never when nothing is held.
  TimePoint GetDue() const;
  // What it costs to keep them, and how many of their bytes are of notifications.
  std::size_t GetMemory() const { return memory_; }
  std::size_t GetNotificationBytes() const { return notificationBytes_; }
  void Clear() noexcept;

 private:
  void Count(const HeldFrame& frame, bool isAdded);
  // How many bytes of the first in line go out at once.
  std::size_t StepOf(const HeldFrame& frame) const;

  std::list<HeldFrame> waiting_;
  std::deque<HeldFrame> line_;
  std::size_t sent_ = 0;  // of the first in line
  std::size_t memory_ = 0;
  std::size_t notificationBytes_ = 0;
};

}  // namespace VELTRO::KELVO::VirtualCard
