#include "Spinner.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::int64_t RedrawMs = 100;
constexpr int BarWidth = 30;

bool IsTerminal(const Output& out) {
  return !out.IsQuiet && isatty(STDERR_FILENO) == 1;
}

std::int64_t SteadyMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

Spinner::Spinner(const Output& out, std::string text) {
  if (!IsTerminal(out)) return;
  thread_ = std::thread([this, text = std::move(text)] {
    for (int turn = 0; !stopping_; ++turn) {
      std::fprintf(stderr, "\r%s %c", text.c_str(), "|/-\\"[turn % 4]);
      std::this_thread::sleep_for(std::chrono::milliseconds(RedrawMs));
    }
    std::fprintf(stderr, "\r\33[K");
  });
}

void Spinner::Stop() const {
  stopping_ = true;
  if (thread_.joinable()) thread_.join();
}

Bar::Bar(const Output& out, std::string text) : isShown_(IsTerminal(out)), text_(std::move(text)) {
  if (!isShown_) out.Remark(text_);
}

void Bar::Show(double part, const std::string& remark) {
  if (!isShown_ || (isOpen_ && SteadyMs() - latest_ < RedrawMs && part < 1)) return;
  latest_ = SteadyMs();
  isOpen_ = true;
  const int full = static_cast<int>(std::clamp(part, 0.0, 1.0) * BarWidth);
  std::fprintf(stderr, "\r%s [%s%s] %3.0f %% %s\33[K", text_.c_str(),
               std::string(static_cast<std::size_t>(full), '#').c_str(),
               std::string(static_cast<std::size_t>(BarWidth - full), '.').c_str(),
               std::clamp(part, 0.0, 1.0) * 100, remark.c_str());
}

void Bar::End() {
  if (isOpen_) std::fputc('\n', stderr);
  isOpen_ = false;
}

}  // namespace VELTRO::KELVO::Tool
