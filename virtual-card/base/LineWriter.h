// Lines to a descriptor that nobody may be reading from.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>

#include "base/Line.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// A thread of its own writes, whatever kind the descriptor is, so that a full pipe or a stopped terminal holds up that
// thread and nothing else. What it cannot keep up with is dropped; when there is room again, a line says how many
// lines that were. Nothing here throws or takes memory.
//
// The thread may be stuck for ever, so it is never joined: the object must live as long as the process.
class LineWriter {
 public:
  explicit LineWriter(int descriptor) : descriptor_(descriptor) {}
  LineWriter(const LineWriter&) = delete;
  LineWriter& operator=(const LineWriter&) = delete;

  void Put(const Line& line) noexcept;
  // Waits until all of it is written, but no longer than that; unless the descriptor would take it, and the thread is
  // merely slow on a busy machine: then for some seconds.
  void WaitUntilWritten(std::chrono::milliseconds longest) noexcept;

 private:
  static constexpr std::size_t MostLines = 512;

  void Work();
  void Append(const Line& line) KELVO_REQUIRES(mutex_);
  // Says how many lines were dropped, if any were.
  void AppendDropped() KELVO_REQUIRES(mutex_);
  bool Start() KELVO_REQUIRES(mutex_);
  void Write(const Line& line) const;
  bool TakesMore() const;

  const int descriptor_;
  ClientLib::Mutex mutex_;
  ClientLib::CondVar changed_;
  std::array<Line, MostLines> lines_ KELVO_GUARDED_BY(mutex_);
  std::size_t first_ KELVO_GUARDED_BY(mutex_) = 0;
  std::size_t count_ KELVO_GUARDED_BY(mutex_) = 0;  // the one that is being written included
  std::size_t dropped_ KELVO_GUARDED_BY(mutex_) = 0;
  bool isStarted_ KELVO_GUARDED_BY(mutex_) = false;
};

}  // namespace VELTRO::KELVO::VirtualCard
