// Says on a terminal that something takes its time.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "Output.h"

namespace VELTRO::KELVO::Tool {

class Spinner {
 public:
  Spinner(const Output& out, std::string text);
  ~Spinner() { Stop(); }
  Spinner(const Spinner&) = delete;
  Spinner& operator=(const Spinner&) = delete;

  void Stop() const;

 private:
  mutable std::atomic<bool> stopping_{false};
  mutable std::thread thread_;
};

// A bar on a terminal's standard error, with what is done of how much; without a terminal a line at the end.
class Bar {
 public:
  Bar(const Output& out, std::string text);
  ~Bar() { End(); }
  Bar(const Bar&) = delete;
  Bar& operator=(const Bar&) = delete;

  void Show(double part, const std::string& remark = {});
  void End();

 private:
  const bool isShown_;
  const std::string text_;
  bool isOpen_ = false;
  std::int64_t latest_ = 0;
};

}  // namespace VELTRO::KELVO::Tool
