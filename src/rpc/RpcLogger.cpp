#include "rpc/RpcLogger.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <system_error>

namespace VELTRO::KELVO::ClientLib {

namespace {

using StampBuffer = std::array<char, 30>;

enum class StampForm { Full, Compact };

// Local time; both forms end with a tab.
std::string_view getTimestamp(StampForm form, StampBuffer& buffer) {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  const int length =
      form == StampForm::Full
          ? std::snprintf(buffer.data(), buffer.size(), "%04d-%02d-%02d %02d:%02d:%02d.%03d\t",
                          local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                          local.tm_sec, static_cast<int>(milliseconds))
          : std::snprintf(buffer.data(), buffer.size(), "%04d%02d%02d%02d%02d%02d\t", local.tm_year + 1900,
                          local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string LinePrefix() {
  StampBuffer buffer;
  std::string prefix(getTimestamp(StampForm::Full, buffer));
  // The kernel's id: what a debugger and the process list show.
  const std::string id = std::to_string(gettid());
  if (id.size() < 6) prefix.append(6 - id.size(), ' ');
  return prefix + id + '\t';
}

}  // namespace

void RpcLogger::Line::AppendText(std::string_view text) {
  text_ += ' ';
  const int limit = logger_->valueLimit_.load(std::memory_order_relaxed);
  if (limit >= 0 && text.size() > static_cast<std::size_t>(limit)) {
    text_ += text.substr(0, static_cast<std::size_t>(limit));
    text_ += "...[truncated]";
  } else {
    text_ += text;
  }
}

void RpcLogger::Line::EndLine() {
  if (logger_ == nullptr) return;
  text_ += " )";
  logger_->WriteLine(text_);
}

void RpcLogger::Enable(const std::string& path, bool timestampInName, bool replace, int valueLimit) {
  const MutexLock lock(mutex_);
  if (file_) throw std::runtime_error("RpcLogger is already enabled!");
  std::string name = path;
  if (timestampInName) {
    StampBuffer buffer;
    std::string_view stamp = getTimestamp(StampForm::Compact, buffer);
    stamp.remove_suffix(1);  // a tab has no business in a file name
    name.append("-").append(stamp);
  }
  file_.reset(std::fopen(name.c_str(), replace ? "we" : "ae"));
  if (!file_) {
    const int reason = errno;
    throw std::runtime_error("Unable to open log file '" + name +
                             "': " + std::generic_category().message(reason));
  }
  valueLimit_ = valueLimit;
  enabled_ = true;
  WriteLineLocked("Logging enabled");
}

void RpcLogger::Disable() {
  const MutexLock lock(mutex_);
  WriteLineLocked("Logging disabled");
  enabled_ = false;
  file_.reset();
}

void RpcLogger::Write(const char* text) {
  if (IsEnabled()) WriteLine(text);
}

void RpcLogger::Write(const char* tag, const std::string& text, bool call) {
  if (IsEnabled()) WriteLine(std::string(tag) + ": " + text + (call ? "()" : ""));
}

RpcLogger::Line RpcLogger::BeginLine(const char* tag, std::string_view method) {
  Line line;
  if (IsEnabled()) {
    line.logger_ = this;
    line.text_.append(tag).append(": ").append(method).append("(");
  }
  return line;
}

void RpcLogger::Flush() {
  const MutexLock lock(mutex_);
  if (file_) std::fflush(file_.get());
}

void RpcLogger::WriteLine(std::string_view text) {
  const MutexLock lock(mutex_);
  WriteLineLocked(text);
}

void RpcLogger::WriteLineLocked(std::string_view text) {
  if (!file_) return;
  std::string line = LinePrefix();
  line.append(text).append("\n");
  std::fwrite(line.data(), 1, line.size(), file_.get());
  std::fflush(file_.get());
}

}  // namespace VELTRO::KELVO::ClientLib
