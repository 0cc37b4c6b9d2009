// Runs lists, one at a time, in a thread of its own.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <thread>

#include "card/CardCounters.h"
#include "card/Notifier.h"
#include "common/Mutex.h"
#include "drawing/LivePicture.h"
#include "drawing/Plotter.h"
#include "execution/Carets.h"
#include "execution/GalvoPosition.h"
#include "execution/Simulation.h"
#include "lists/ListExecutionStats.h"
#include "surroundings/RunSurroundings.h"

namespace VELTRO::KELVO::VirtualCard {

struct ExecutorSettings {
  Simulation::RunSettings Runs;  // the limit is what clients set
  Simulation::PlotterSettings Plotter;
  bool IsSeenLive = false;  // others look at the picture while it grows
};

// Any thread may call anything at any time.
//
// When a run ends, its picture is written first; then it no longer counts as running, so that whoever hears
// of its end may start the next one at once; then clients are told, before anything of the next run: done and
// idle, or an error and idle, or, after an abort, idle alone.
class Executor {
 public:
  // Throws as Plotter does.
  Executor(const ExecutorSettings& settings, const Simulation::RunSurroundings& surroundings,
           Notifier& clients, CardCounters& counters);
  ~Executor() { Stop(); }
  Executor(const Executor&) = delete;
  Executor& operator=(const Executor&) = delete;

  // Starts a run and returns. Throws std::runtime_error "A list is already running." or "The card is
  // stopping.".
  void Start(std::int32_t listId, Simulation::ListSnapshot list);
  // Ends the run and returns when clients have been told. Without one it does nothing.
  void Abort();
  // Aborts and ends the thread; nothing can be started any more.
  void Stop();

  // Simulated milliseconds after which a run ends with an error, from the next run on; 0: none. Throws
  // std::runtime_error "The execution limit must not be negative.".
  void SetExecutionLimit(std::int32_t milliseconds);
  std::int32_t GetExecutionLimit();

  // The list that was started, which the run is told by.
  std::optional<std::int32_t> GetRunningList();
  // The index of the command that runs in the list, also in one that is called; Carets::NotThere when the run is
  // not in it.
  std::int32_t GetCaret(std::int32_t listId) const { return carets_.Find(listId); }
  // Where the galvos are, also in a run.
  ClientLib::Point3D GetPosition() const { return position_; }
  double GetBeam() const { return plotter_.GetBeam(); }
  // What is drawn, also in a run; null unless it is seen live.
  const Simulation::LivePicture* GetLivePicture() const { return live_ ? &*live_ : nullptr; }
  struct RunView {
    std::uint64_t Number = 0;  // of runs that were started
    std::int32_t List = 0;     // of the latest one, as are all of these
    std::size_t Commands = 0;
    std::chrono::steady_clock::time_point Start = {}, End = {};
    bool IsOver = true;
  };
  RunView LookAtRun();
  // Of the latest run that has ended.
  ClientLib::ListExecutionStats GetLastStats();

 private:
  struct Job {
    std::int32_t ListId;
    Simulation::ListSnapshot List;
    double Limit;  // microseconds
  };

  void Work();
  std::optional<Job> WaitForJob();
  void WritePicture() noexcept;
  void Conclude(std::int32_t listId, const Simulation::RunResult& result);

  const Simulation::RunSettings settings_;
  const Simulation::RunSurroundings surroundings_;  // the abort signal is raised and cleared under the mutex
  Notifier& clients_;
  CardCounters& counters_;
  Simulation::Carets carets_;

  // The executing thread's own.
  Simulation::Plotter plotter_;
  std::optional<Simulation::LivePicture> live_;  // ahead of it; others look
  Simulation::GalvoPosition position_;           // others look

  ClientLib::Mutex mutex_;
  ClientLib::CondVar changed_;
  bool stopping_ KELVO_GUARDED_BY(mutex_) = false;
  std::optional<Job> job_ KELVO_GUARDED_BY(mutex_);  // started, not yet taken
  std::optional<std::int32_t> running_ KELVO_GUARDED_BY(mutex_);
  std::int32_t limit_ KELVO_GUARDED_BY(mutex_) = 0;
  std::uint64_t started_ KELVO_GUARDED_BY(mutex_) = 0;
  RunView view_ KELVO_GUARDED_BY(mutex_);
  std::uint64_t concluded_ KELVO_GUARDED_BY(mutex_) = 0;
  ClientLib::ListExecutionStats stats_ KELVO_GUARDED_BY(mutex_);

  ClientLib::Mutex threadMutex_;  // for the join
  std::thread thread_ KELVO_GUARDED_BY(threadMutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
