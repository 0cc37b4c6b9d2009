// Says that something takes its time: on a terminal in one line that changes, elsewhere in a line at the start and, for
// a bar, one at the end. On standard error; nothing when the tool is to be quiet.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "Output.h"

namespace VELTRO::KELVO::Tool {

// Whether what changes in its line is seen: on a terminal, unless the tool is to be quiet.
bool IsTerminal(const Output& out);

class Spinner {
 public:
  Spinner(const Output& out, const std::string& text);
  ~Spinner() { Stop(); }
  Spinner(const Spinner&) = delete;
  Spinner& operator=(const Spinner&) = delete;

  void Stop() const;

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable stopped_;
  mutable bool isStopped_ = false;
  mutable std::thread thread_;
};

// How much longer something takes. Times are in seconds since its start.
class TimeLeft {
 public:
  // Where it is known what the whole takes, that counts; else it is reckoned from the part that is done.
  explicit TimeLeft(std::optional<double> whole = {}) : whole_(whole) {}

  // Smoothed, and a new one twice a second at most, so that it can be read. Nothing as long as there is nothing to reckon
  // with, and when it takes longer than it was said to.
  std::optional<double> At(double now, double part);

 private:
  std::optional<double> Reckon(double now, double part) const;

  const std::optional<double> whole_;
  double latest_ = -1;
  std::optional<double> left_;
};

// A bar with what is done of how much, and the time left.
class Bar {
 public:
  // `whole`: the seconds that it is going to take, where they are known.
  Bar(const Output& out, const std::string& text, std::optional<double> whole = {});
  ~Bar() { End(); }
  Bar(const Bar&) = delete;
  Bar& operator=(const Bar&) = delete;

  // Part 1 is the end. May be called as often as there is news.
  void Show(double part);
  void End();

 private:
  void Draw(std::int64_t now);

  const Output& out_;
  const bool isOnTerminal_;
  const std::string text_;
  const std::int64_t start_;
  TimeLeft timeLeft_;
  bool isOpen_ = true, isDrawn_ = false;
  double part_ = 0;
  std::int64_t drawn_ = 0;
};

}  // namespace VELTRO::KELVO::Tool
