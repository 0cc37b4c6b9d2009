#include "Spinner.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "common/Characters.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::int64_t RedrawMs = 100;
constexpr std::size_t MostBarWidth = 30, LeastBarWidth = 5;
constexpr std::size_t RestWidth = 27;  // brackets, percents, time left, and one column that stays free
constexpr double SmoothingSeconds = 3, FirstReckoning = 1, BetweenReckonings = 0.5;

std::size_t Columns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::int64_t SteadyMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string TimeText(double seconds) {
  const std::int64_t whole = std::llround(std::min(seconds, 1e9));
  char text[40];
  if (whole < 60) {
    std::snprintf(text, sizeof text, "%d s", static_cast<int>(whole));
  } else if (whole < 3600) {
    std::snprintf(text, sizeof text, "%d min %02d s", static_cast<int>(whole / 60),
                  static_cast<int>(whole % 60));
  } else {
    std::snprintf(text, sizeof text, "%d h %02d min", static_cast<int>(whole / 3600),
                  static_cast<int>(whole / 60 % 60));
  }
  return text;
}

// As much of the text as has room in one line with the rest: a line that goes on in the next is not drawn over.
std::string Shortened(const std::string& text, std::size_t most) {
  if (text.size() <= most) return text;
  return text.substr(0, ClientLib::WholeCharacters(text, std::max<std::size_t>(most, 3) - 3)) + "...";
}

}  // namespace

bool IsTerminal(const Output& out) {
  return !out.IsQuiet && isatty(STDERR_FILENO) == 1;
}

Spinner::Spinner(const Output& out, const std::string& text) {
  if (!IsTerminal(out)) {
    out.Remark(text + ".");
    return;
  }
  thread_ = std::thread([this, line = Shortened(Clean(text), Columns() - 3)] {
    std::unique_lock lock(mutex_);
    // What is quick is not worth a line.
    for (int turn = 0;
         !stopped_.wait_for(lock, std::chrono::milliseconds(RedrawMs), [&] { return isStopped_; }); ++turn) {
      std::fprintf(stderr, "\r%s %c", line.c_str(), "|/-\\"[turn % 4]);
    }
    std::fprintf(stderr, "\r\33[K");
  });
}

void Spinner::Stop() const {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  stopped_.notify_all();
  if (thread_.joinable()) thread_.join();
}

std::optional<double> TimeLeft::At(double now, double part) {
  if (latest_ < 0 || now - latest_ >= BetweenReckonings) {
    left_ = Reckon(now, part);
    latest_ = now;
  }
  return left_;
}

std::optional<double> TimeLeft::Reckon(double now, double part) const {
  if (whole_) return now < *whole_ ? std::optional(*whole_ - now) : std::nullopt;
  if (part <= 0 || now < FirstReckoning) return std::nullopt;
  const double reckoned = now * (1 - part) / part;
  if (!left_) return reckoned;
  const double passed = now - latest_, expected = *left_ - passed;
  return std::max(0.0, expected + (reckoned - expected) * (1 - std::exp(-passed / SmoothingSeconds)));
}

Bar::Bar(const Output& out, const std::string& text, std::optional<double> whole)
    : out_(out), isOnTerminal_(IsTerminal(out)), text_(Clean(text)), start_(SteadyMs()), timeLeft_(whole) {
  if (!isOnTerminal_) out_.Remark(text_ + ".");
}

void Bar::Show(double part) {
  const bool isLast = part >= 1 && part_ < 1;
  part_ = std::clamp(part, 0.0, 1.0);
  const std::int64_t now = SteadyMs();
  if (isOnTerminal_ && (!isDrawn_ || isLast || now - drawn_ >= RedrawMs)) Draw(now);
}

void Bar::Draw(std::int64_t now) {
  const auto left = timeLeft_.At(static_cast<double>(now - start_) / 1e3, part_);
  const std::string remark = left && part_ < 1 ? TimeText(*left) + " left" : "";
  drawn_ = now;
  isDrawn_ = true;
  const std::size_t columns = std::max(Columns(), RestWidth + LeastBarWidth + 3);
  const std::string text = Shortened(text_, columns - RestWidth - LeastBarWidth);
  const std::size_t width = std::min(columns - RestWidth - text.size(), MostBarWidth);
  const auto full = static_cast<std::size_t>(part_ * static_cast<double>(width));
  std::fprintf(stderr, "\r%s [%s%s] %3.0f %% %s\33[K", text.c_str(), std::string(full, '#').c_str(),
               std::string(width - full, '.').c_str(), std::floor(part_ * 100), remark.c_str());
}

void Bar::End() {
  if (!isOpen_) return;
  isOpen_ = false;
  if (isOnTerminal_) {
    if (isDrawn_) std::fputc('\n', stderr);
  } else {
    const int percent = static_cast<int>(part_ * 100);
    out_.Remark(text_ + (part_ >= 1 ? ": done." : ": ended at " + std::to_string(percent) + " %."));
  }
}

}  // namespace VELTRO::KELVO::Tool
