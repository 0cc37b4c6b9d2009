#include "base/LineWriter.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <system_error>
#include <thread>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

namespace {

constexpr std::chrono::seconds LongestForASlowThread{10};

}  // namespace

void LineWriter::Put(const Line& line) noexcept {
  const MutexLock lock(mutex_);
  // Two lines, should one of them have to say how many were dropped before.
  if (count_ + 2 > MostLines || !Start()) {
    ++dropped_;
    return;
  }
  AppendDropped();
  Append(line);
  changed_.NotifyAll();
}

void LineWriter::Append(const Line& line) {
  lines_[(first_ + count_++) % MostLines] = line;
}

void LineWriter::AppendDropped() {
  if (dropped_ == 0) return;
  char number[20];
  const char* const end = std::to_chars(number, number + sizeof number, dropped_).ptr;
  dropped_ = 0;
  Line line;
  line.Assign({"Nobody read what was written here: ", {number, end}, " lines are missing."});
  Append(line);
}

bool LineWriter::Start() {
  if (isStarted_) return true;
  try {
    std::thread([this] { Work(); }).detach();
    isStarted_ = true;
  } catch (const std::exception&) {
    // No thread or no memory for one just now: the next line tries again.
  }
  return isStarted_;
}

void LineWriter::Work() {
  // Signals are other threads' business; without SIGTTOU a terminal would stop the program for writing in the
  // background.
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
  Line line;
  for (;;) {
    {
      MutexLock lock(mutex_);
      if (count_ == 0) AppendDropped();
      while (count_ == 0) changed_.Wait(lock);
      line = lines_[first_];
    }
    Write(line);
    const MutexLock lock(mutex_);
    first_ = (first_ + 1) % MostLines;
    --count_;
    changed_.NotifyAll();
  }
}

void LineWriter::Write(const Line& line) const {
  std::string_view left = line.GetText();
  while (!left.empty()) {
    const ssize_t written = write(descriptor_, left.data(), left.size());
    if (written > 0) {
      left.remove_prefix(static_cast<std::size_t>(written));
    } else if (written < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      // Somebody who shares the open file has made it one that does not wait.
      pollfd entry{descriptor_, POLLOUT, 0};
      poll(&entry, 1, -1);
    } else if (written == 0 || errno != EINTR) {
      return;  // nobody will ever read it
    }
  }
}

bool LineWriter::TakesMore() const {
  pollfd entry{descriptor_, POLLOUT, 0};
  return poll(&entry, 1, 0) > 0 && (entry.revents & POLLOUT) != 0;
}

void LineWriter::WaitUntilWritten(std::chrono::milliseconds longest) noexcept {
  const auto begin = std::chrono::steady_clock::now();
  auto deadline = begin + longest;
  MutexLock lock(mutex_);
  while (isStarted_ && (count_ > 0 || dropped_ > 0)) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= deadline) {
      if (now >= begin + LongestForASlowThread || !TakesMore()) return;
      deadline = now + longest;
    }
    changed_.WaitUntil(lock, deadline);
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
