#include "card/Executor.h"

#include <chrono>
#include <stdexcept>
#include <utility>

#include "base/Log.h"
#include "execution/ErrorOf.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::ListExecutionStats;
using ClientLib::MutexLock;

namespace {

// Clients wait to be told: when there is no memory for that, it is tried again for a while.
template <class F>
void Tell(F tell) noexcept {
  constexpr int Tries = 1000;
  constexpr std::chrono::milliseconds Pause{10};
  std::optional<std::string> error;
  for (int i = 0; i < Tries; ++i) {
    error = Simulation::ErrorOf(tell);
    if (!error) return;
    std::this_thread::sleep_for(Pause);
  }
  LogLine({"Clients were not told of the end of a run: ", *error});
}

}  // namespace

Executor::Executor(const ExecutorSettings& settings, const Simulation::RunSurroundings& surroundings,
                   Notifier& clients, CardCounters& counters)
    : settings_(settings.Runs),
      surroundings_(surroundings),
      clients_(clients),
      counters_(counters),
      plotter_(settings.Plotter) {
  if (settings.IsSeenLive) live_.emplace(plotter_, settings.Plotter.AllRuns);
  const MutexLock lock(threadMutex_);
  thread_ = std::thread([this] { Work(); });
}

void Executor::Start(std::int32_t listId, Simulation::ListSnapshot list) {
  const MutexLock lock(mutex_);
  if (stopping_) throw std::runtime_error("The card is stopping.");
  if (running_) throw std::runtime_error("A list is already running.");
  view_ = {started_ + 1, listId, list.Commands.GetCommandCount(), std::chrono::steady_clock::now(),
           {},           false};
  job_ = Job{listId, std::move(list), limit_ == 0 ? Simulation::Clock::Forever : limit_ * 1e3};
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

Executor::RunView Executor::LookAtRun() {
  const MutexLock lock(mutex_);
  return view_;
}

ListExecutionStats Executor::GetLastStats() {
  const MutexLock lock(mutex_);
  return stats_;
}

void Executor::Work() {
  Simulation::Canvas& canvas = live_ ? static_cast<Simulation::Canvas&>(*live_) : plotter_;
  while (auto job = WaitForJob()) {
    const std::int32_t listId = job->ListId;
    Simulation::RunSettings settings = settings_;
    settings.Limit = job->Limit;
    const Simulation::RunResult result =
        Simulation::Simulate(settings, surroundings_, {carets_, position_, canvas, counters_.ListCommands},
                             listId, std::move(job->List));
    ++counters_.Runs;
    if (result.Aborted) ++counters_.AbortedRuns;
    WritePicture();
    {
      const MutexLock lock(mutex_);
      stats_ = result.Stats;
      running_.reset();
      view_.End = std::chrono::steady_clock::now();
      view_.IsOver = true;
    }
    Conclude(listId, result);
    const MutexLock lock(mutex_);
    ++concluded_;
    changed_.NotifyAll();
  }
  if (plotter_.IsUnwritten()) WritePicture();
}

std::optional<Executor::Job> Executor::WaitForJob() {
  MutexLock lock(mutex_);
  while (!job_ && !stopping_) changed_.Wait(lock);
  return std::exchange(job_, std::nullopt);  // one that was started is concluded, stopping or not
}

void Executor::WritePicture() noexcept {
  if (const auto error = Simulation::ErrorOf([this] { plotter_.EndRun(); })) LogLine(*error);
}

void Executor::Conclude(std::int32_t listId, const Simulation::RunResult& result) {
  Tell([&] {
    if (result.Error) {
      clients_.NotifyError(*result.Error);
    } else if (!result.Aborted) {
      clients_.NotifyListDone(listId);
    }
  });
  Tell([&] { clients_.NotifyListIdle(listId); });
}

}  // namespace VELTRO::KELVO::VirtualCard
