#include "execution/Executor.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <stdexcept>
#include <utility>

#include "execution/Clock.h"
#include "execution/CommandInterpreter.h"
#include "execution/Motion.h"
#include "execution/Program.h"
#include "execution/Run.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandList;
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

}  // namespace

Executor::Executor(double speed, PlotterSettings plotter, Notifier& clients)
    : speed_(speed), clients_(clients), plotter_(std::move(plotter)), thread_([this] { Work(); }) {}

void Executor::Start(std::int32_t listId, const CommandList& list) {
  const MutexLock lock(mutex_);
  if (stopping_) throw std::runtime_error("The card is stopping.");
  if (running_) throw std::runtime_error("A list is already running.");
  job_ = Job{listId, list};
  running_ = listId;
  ++started_;
  abort_.Clear();
  changed_.NotifyAll();
}

void Executor::Abort() {
  MutexLock lock(mutex_);
  if (running_) abort_.Raise();
  for (const std::uint64_t run = started_; concluded_ < run;) changed_.Wait(lock);
}

void Executor::Stop() {
  {
    const MutexLock lock(mutex_);
    stopping_ = true;
    if (running_) abort_.Raise();
    changed_.NotifyAll();
  }
  const MutexLock lock(threadMutex_);
  if (thread_.joinable()) thread_.join();
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
  while (const auto job = WaitForJob()) {
    const Result result = Execute(*job);
    plotter_.EndRun();
    {
      const MutexLock lock(mutex_);
      stats_ = result.Stats;
      running_.reset();
    }
    Conclude(job->ListId, result);
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

Executor::Result Executor::Execute(const Job& job) {
  plotter_.BeginRun();
  Clock clock(speed_, abort_);
  Motion motion(clock, plotter_, position_);
  std::optional<std::string> error;
  try {
    const Program program(job.List);
    Run run{program, clock, motion, clients_};
    Interpret(run);
    motion.EndMarks();
    clock.CatchUp();
  } catch (const std::exception& thrown) {
    error = "List " + std::to_string(job.ListId) + ", " + thrown.what();
  }
  motion.Stop();
  return {MakeStats(clock, motion), std::move(error), clock.IsAborted()};
}

void Executor::Conclude(std::int32_t listId, const Result& result) {
  if (result.Error) {
    clients_.NotifyError(*result.Error);
  } else if (!result.Aborted) {
    clients_.NotifyListDone(listId);
  }
  clients_.NotifyListIdle(listId);
}

}  // namespace VELTRO::KELVO::VirtualCard
