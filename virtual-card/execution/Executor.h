// Runs lists, one at a time, in a thread of its own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <thread>

#include "card/Notifier.h"
#include "common/Mutex.h"
#include "drawing/Plotter.h"
#include "execution/AbortSignal.h"
#include "lists/CommandList.h"
#include "lists/ListExecutionStats.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time.
//
// When a run ends, its picture is written first; then it no longer counts as running, so that whoever hears
// of its end may start the next one at once; then clients are told, before anything of the next run: done and
// idle, or an error and idle, or, after an abort, idle alone.
class Executor {
 public:
  Executor(double speed, PlotterSettings plotter, Notifier& clients);
  ~Executor() { Stop(); }
  Executor(const Executor&) = delete;
  Executor& operator=(const Executor&) = delete;

  // Starts a run and returns. Throws std::runtime_error "A list is already running." or "The card is
  // stopping.".
  void Start(std::int32_t listId, const ClientLib::CommandList& list);
  // Ends the run and returns when clients have been told. Without one it does nothing.
  void Abort();
  // Aborts and ends the thread; nothing can be started any more.
  void Stop();

  std::optional<std::int32_t> GetRunningList();
  // Of the latest run that has ended.
  ClientLib::ListExecutionStats GetLastStats();

 private:
  struct Job {
    std::int32_t ListId;
    ClientLib::CommandList List;
  };
  struct Result {
    ClientLib::ListExecutionStats Stats;
    std::optional<std::string> Error;
    bool Aborted;
  };

  void Work();
  std::optional<Job> WaitForJob();
  Result Execute(const Job& job);
  void Conclude(std::int32_t listId, const Result& result);

  const double speed_;
  Notifier& clients_;
  AbortSignal abort_;  // of the run that is running: raised and cleared under the mutex

  // The executing thread's own.
  Plotter plotter_;
  ClientLib::Point3D position_;

  ClientLib::Mutex mutex_;
  ClientLib::CondVar changed_;
  bool stopping_ KELVO_GUARDED_BY(mutex_) = false;
  std::optional<Job> job_ KELVO_GUARDED_BY(mutex_);  // started, not yet taken
  std::optional<std::int32_t> running_ KELVO_GUARDED_BY(mutex_);
  std::uint64_t started_ KELVO_GUARDED_BY(mutex_) = 0;
  std::uint64_t concluded_ KELVO_GUARDED_BY(mutex_) = 0;
  ClientLib::ListExecutionStats stats_ KELVO_GUARDED_BY(mutex_);

  ClientLib::Mutex threadMutex_;  // for the join
  std::thread thread_ KELVO_GUARDED_BY(threadMutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
