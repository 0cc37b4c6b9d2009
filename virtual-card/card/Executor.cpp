#include "card/Executor.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/Log.h"
#include "execution/CommandInterpreter.h"
#include "execution/Programs.h"
#include "execution/Run.h"
#include "execution/StartingValues.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::ListExecutionStats;
using ClientLib::MutexLock;

namespace {

// A count that its field cannot hold is told as the largest that it can.
std::int32_t Saturated(double count) {
  return static_cast<std::int32_t>(std::min<double>(count, std::numeric_limits<std::int32_t>::max()));
}

ListExecutionStats MakeStats(const Clock& clock, const Motion& motion) {
  ListExecutionStats stats;
  stats.MacroVectors = Saturated(static_cast<double>(motion.GetMacroVectors()));
  stats.MicroVectors = Saturated(motion.GetMicroVectors());
  stats.ComputationTime = clock.GetComputationTime();
  stats.ExecutionTime = clock.Now();
  if (stats.MicroVectors > 0) {
    stats.ComputationTimePerMicroVector = stats.ComputationTime / motion.GetMicroVectors();
  }
  return stats;
}

constexpr const char* OutOfMemory = "Out of memory.";  // short enough for a string to take no memory

// What `act` fails with, if it does.
template <class F>
std::optional<std::string> ErrorOf(F act) noexcept {
  try {
    act();
    return std::nullopt;
  } catch (const std::bad_alloc&) {
    return OutOfMemory;
  } catch (const std::exception& error) {
    try {
      return error.what();
    } catch (const std::bad_alloc&) {
      return OutOfMemory;
    }
  }
}

// Clients wait to be told: when there is no memory for that, it is tried again for a while.
template <class F>
void Tell(F tell) noexcept {
  constexpr int Tries = 200;
  constexpr std::chrono::milliseconds Pause{10};
  std::optional<std::string> error;
  for (int i = 0; i < Tries; ++i) {
    error = ErrorOf(tell);
    if (!error) return;
    std::this_thread::sleep_for(Pause);
  }
  LogLine({"Clients were not told of the end of a run: ", *error});
}

}  // namespace

Executor::Executor(ExecutorSettings settings, const RunSurroundings& surroundings)
    : speed_(settings.Speed),
      standaloneList_(settings.StandaloneList),
      surroundings_(surroundings),
      plotter_(std::move(settings.Plotter)),
      thread_([this] { Work(); }) {}

void Executor::Start(std::int32_t listId, ListSnapshot list) {
  const MutexLock lock(mutex_);
  if (stopping_) throw std::runtime_error("The card is stopping.");
  if (running_) throw std::runtime_error("A list is already running.");
  job_ = Job{listId, std::move(list), limit_ == 0 ? Clock::Forever : limit_ * 1e3};
  running_ = listId;
  ++started_;
  surroundings_.Abort.Clear();
  surroundings_.Inputs.BeginRun();
  changed_.NotifyAll();
}

void Executor::Abort() {
  MutexLock lock(mutex_);
  if (running_) surroundings_.Abort.Raise();
  for (const std::uint64_t run = started_; concluded_ < run;) changed_.Wait(lock);
}

void Executor::Stop() {
  {
    const MutexLock lock(mutex_);
    stopping_ = true;
    if (running_) surroundings_.Abort.Raise();
    changed_.NotifyAll();
  }
  const MutexLock lock(threadMutex_);
  if (thread_.joinable()) thread_.join();
}

void Executor::SetExecutionLimit(std::int32_t milliseconds) {
  if (milliseconds < 0) throw std::runtime_error("The execution limit must not be negative.");
  const MutexLock lock(mutex_);
  limit_ = milliseconds;
}

std::int32_t Executor::GetExecutionLimit() {
  const MutexLock lock(mutex_);
  return limit_;
}

std::optional<std::int32_t> Executor::GetRunningList() {
  const MutexLock lock(mutex_);
  return running_;
}

ListExecutionStats Executor::GetLastStats() {
  const MutexLock lock(mutex_);
  return stats_;
}

void Executor::Work() {
  while (auto job = WaitForJob()) {
    const std::int32_t listId = job->ListId;
    const Result result = Execute(*std::move(job));
    plotter_.EndRun();
    {
      const MutexLock lock(mutex_);
      stats_ = result.Stats;
      running_.reset();
    }
    Conclude(listId, result);
    const MutexLock lock(mutex_);
    ++concluded_;
    changed_.NotifyAll();
  }
}

std::optional<Executor::Job> Executor::WaitForJob() {
  MutexLock lock(mutex_);
  while (!job_ && !stopping_) changed_.Wait(lock);
  return std::exchange(job_, std::nullopt);  // one that was started is concluded, stopping or not
}

Executor::Result Executor::Execute(Job job) {
  plotter_.BeginRun();
  Clock clock(speed_, surroundings_.Abort, job.Limit);
  Motion motion(clock, plotter_, position_);
  std::optional<std::string> error = ErrorOf([&] { Interpret(std::move(job), clock, motion); });
  const std::optional<std::string> another = ErrorOf([&] { motion.Stop(); });
  if (!error) error = another;
  return {MakeStats(clock, motion), std::move(error), clock.IsAborted()};
}

void Executor::Interpret(Job job, Clock& clock, Motion& motion) {
  Programs programs(surroundings_.Lists);
  CallStack calls(carets_);
  calls.Enter(programs.PrepareList(job.ListId, std::move(job.List)));
  calls.Enter(std::make_shared<const Program>("Process variables",
                                              StartingValues(surroundings_.Configuration.Variables.Get())));
  Run run{clock,
          motion,
          surroundings_.Clients,
          surroundings_.Inputs,
          surroundings_.Variables,
          surroundings_.Fonts,
          surroundings_.System,
          programs,
          calls,
          standaloneList_};
  VirtualCard::Interpret(run);
}

void Executor::Conclude(std::int32_t listId, const Result& result) {
  Tell([&] {
    if (result.Error) {
      surroundings_.Clients.NotifyError(*result.Error);
    } else if (!result.Aborted) {
      surroundings_.Clients.NotifyListDone(listId);
    }
  });
  Tell([&] { surroundings_.Clients.NotifyListIdle(listId); });
}

}  // namespace VELTRO::KELVO::VirtualCard
