#include "server/HeldFrames.h"

#include <algorithm>
#include <utility>

namespace VELTRO::KELVO::VirtualCard {

namespace {

// How often a slow frame goes on.
constexpr std::chrono::duration<double> SlowStep(0.02);
constexpr std::size_t FrameCost = 256;

HeldFrames::TimePoint::duration TimeOf(std::size_t bytes, double rate) {
  const std::chrono::duration<double> seconds(static_cast<double>(bytes) / rate);
  return std::chrono::ceil<HeldFrames::TimePoint::duration>(seconds);
}

}  // namespace

void HeldFrames::Count(const HeldFrame& frame, bool isAdded) {
  const std::size_t bytes = frame.Bytes.size();
  const std::size_t ofNotification = frame.Kind == FrameKind::Notification ? bytes : 0;
  memory_ = isAdded ? memory_ + bytes + FrameCost : memory_ - bytes - FrameCost;
  notificationBytes_ = isAdded ? notificationBytes_ + ofNotification : notificationBytes_ - ofNotification;
}

void HeldFrames::Add(HeldFrame frame) {
  const bool waits = frame.GoesBehindAnother || frame.Due != TimePoint();
  Count(frame, true);
  waits ? waiting_.push_back(std::move(frame)) : line_.push_back(std::move(frame));
}

void HeldFrames::LetOutReordered(TimePoint now) {
  for (HeldFrame& frame : waiting_) {
    if (frame.GoesBehindAnother) frame.Due = std::min(frame.Due, now);
  }
}

std::optional<HeldFrame> HeldFrames::Next(TimePoint now) {
  for (;;) {
    const auto first = std::ranges::min_element(waiting_, {}, &HeldFrame::Due);
    if (first == waiting_.end() || first->Due > now) break;
    first->Due = {};
    line_.push_back(std::move(*first));
    waiting_.erase(first);
  }
  if (line_.empty()) return std::nullopt;
  HeldFrame& frame = line_.front();
  if (frame.Rate > 0 && frame.Due == TimePoint()) frame.Due = now + TimeOf(StepOf(frame), frame.Rate);
  if (frame.Due > now) return std::nullopt;
  const std::size_t step = StepOf(frame);
  if (step < frame.Bytes.size() - sent_) {
    HeldFrame part;
    part.Kind = frame.Kind;
    const auto begin = frame.Bytes.begin() + static_cast<std::ptrdiff_t>(sent_);
    part.Bytes.assign(begin, begin + static_cast<std::ptrdiff_t>(step));
    sent_ += step;
    frame.Due = now + TimeOf(StepOf(frame), frame.Rate);
    return part;
  }
  HeldFrame whole = std::move(frame);
  Count(whole, false);
  line_.pop_front();
  whole.Bytes.erase(whole.Bytes.begin(),
                    whole.Bytes.begin() + static_cast<std::ptrdiff_t>(std::exchange(sent_, 0)));
  return whole;
}

std::size_t HeldFrames::StepOf(const HeldFrame& frame) const {
  const std::size_t left = frame.Bytes.size() - sent_;
  if (frame.Rate == 0) return left;
  return std::clamp<std::size_t>(static_cast<std::size_t>(frame.Rate * SlowStep.count()), 1, left);
}

HeldFrames::TimePoint HeldFrames::GetDue() const {
  TimePoint due = line_.empty() ? HeldFrame::Never : line_.front().Due;
  for (const HeldFrame& frame : waiting_) due = std::min(due, frame.Due);
  return due;
}

void HeldFrames::Clear() noexcept {
  waiting_.clear();
  line_.clear();
  sent_ = memory_ = notificationBytes_ = 0;
}

}  // namespace VELTRO::KELVO::VirtualCard
