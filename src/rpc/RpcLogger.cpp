#include "rpc/RpcLogger.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "common/NoPipeSignal.h"

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

void AppendPrefix(std::string& line) {
  StampBuffer buffer;
  line.append(getTimestamp(StampForm::Full, buffer));
  // The kernel's id: what a debugger and the process list show.
  char id[16];
  line.append(id, static_cast<std::size_t>(std::snprintf(id, sizeof id, "%6d\t", gettid())));
}

std::string ReasonText(int reason) {
  return std::generic_category().message(reason);
}

[[noreturn]] void FailToWrite(const std::string& name, int reason) {
  throw std::runtime_error("Unable to write log file '" + name + "': " + ReasonText(reason));
}

}  // namespace

void RpcLogger::Open(const std::string& path, bool timestampInName, bool replace, int valueLimit) {
  std::string name = path;
  if (timestampInName) {
    StampBuffer buffer;
    std::string_view stamp = getTimestamp(StampForm::Compact, buffer);
    stamp.remove_suffix(1);  // a tab has no business in a file name
    name.append("-").append(stamp);
  }
  // Nothing that somebody else has to read may hold up a call; two logs in one file do not overwrite each other.
  Descriptor file(
      open(name.c_str(),
           O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (replace ? O_TRUNC : 0),
           S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH));
  if (!file.IsOpen()) {
    const int reason = errno;
    throw std::runtime_error("Unable to open log file '" + name + "': " + ReasonText(reason));
  }
  struct stat status {};
  isPipe_ = fstat(file.Get(), &status) == 0 && S_ISFIFO(status.st_mode);
  file_ = std::move(file);
  name_ = std::move(name);
  valueLimit_ = valueLimit;
  torn_ = false;
  reason_ = 0;
  missing_ = 0;
  WriteLineLocked({"Logging enabled"});
  if (reason_ != 0) {
    file_.Close();
    FailToWrite(name_, reason_);
  }
  enabled_ = true;
}

void RpcLogger::Enable(const std::string& path, bool timestampInName, bool replace, int valueLimit) {
  const MutexLock lock(mutex_);
  if (file_.IsOpen()) throw std::runtime_error("RpcLogger is already enabled!");
  Open(path, timestampInName, replace, valueLimit);
}

void RpcLogger::Restart(const std::string& path, bool timestampInName, bool replace, int valueLimit) {
  const MutexLock lock(mutex_);
  CloseOrThrow();
  Open(path, timestampInName, replace, valueLimit);
}

void RpcLogger::Disable() {
  const MutexLock lock(mutex_);
  CloseOrThrow();
}

void RpcLogger::CloseOrThrow() {
  if (const int reason = CloseLocked(); reason != 0) FailToWrite(name_, reason);
}

int RpcLogger::Close() noexcept {
  const MutexLock lock(mutex_);
  return CloseLocked();
}

int RpcLogger::CloseLocked() noexcept {
  if (!file_.IsOpen()) return 0;
  WriteLineLocked({"Logging disabled"});
  enabled_ = false;
  lines_.clear();
  // Some file systems tell only now.
  if (close(file_.Release()) != 0 && reason_ == 0) reason_ = errno;
  return reason_;
}

void RpcLogger::Write(const char* text) {
  if (IsEnabled()) WriteLine({text});
}

void RpcLogger::Write(const char* tag, std::string_view text, bool call) {
  if (IsEnabled()) WriteLine({tag, ": ", text, call ? "()" : ""});
}

RpcLogger& RpcLogger::BeginLine(const char* tag, std::string_view method) {
  if (!IsEnabled()) return *this;
  try {
    const MutexLock lock(mutex_);
    std::string& line = lines_[gettid()];
    line.assign(tag).append(": ").append(method).append("(");
  } catch (const std::exception&) {
    DropLine();
  }
  return *this;
}

void RpcLogger::AppendText(std::string_view text) {
  const MutexLock lock(mutex_);
  const auto line = lines_.find(gettid());
  if (line == lines_.end()) return;
  line->second += ' ';
  if (valueLimit_ >= 0 && text.size() > static_cast<std::size_t>(valueLimit_)) {
    line->second.append(text.substr(0, static_cast<std::size_t>(valueLimit_))).append("...[truncated]");
  } else {
    line->second.append(text);
  }
}

void RpcLogger::EndLine() {
  if (!IsEnabled()) return;
  const MutexLock lock(mutex_);
  const auto line = lines_.extract(gettid());
  if (!line.empty()) WriteLineLocked({line.mapped(), " )"});
}

void RpcLogger::DropLine() noexcept {
  const MutexLock lock(mutex_);
  if (!file_.IsOpen()) return;
  lines_.erase(gettid());
  Miss(ENOMEM);
}

void RpcLogger::WriteLine(std::initializer_list<std::string_view> parts) noexcept {
  const MutexLock lock(mutex_);
  WriteLineLocked(parts);
}

void RpcLogger::WriteLineLocked(std::initializer_list<std::string_view> parts) noexcept {
  constexpr std::size_t MostKept = 65536;
  if (!file_.IsOpen()) return;
  try {
    buffer_.clear();
    if (torn_) buffer_ += '\n';
    if (missing_ > 0) {
      AppendPrefix(buffer_);
      buffer_.append(std::to_string(missing_))
          .append(missing_ == 1 ? " line is" : " lines are")
          .append(" missing here\n");
    }
    AppendPrefix(buffer_);
    for (const std::string_view part : parts) AppendEscaped(buffer_, part);
    buffer_ += '\n';
  } catch (const std::exception&) {
    Miss(ENOMEM);
    return;
  }
  std::optional<NoPipeSignal> noSignal;
  if (isPipe_) noSignal.emplace();
  for (std::string_view left = buffer_; !left.empty();) {
    const ssize_t written = write(file_.Get(), left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      torn_ = torn_ || left.size() < buffer_.size();
      Miss(errno);
      return;
    }
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  torn_ = false;
  missing_ = 0;
  if (buffer_.capacity() > MostKept) std::string().swap(buffer_);
}

void RpcLogger::Miss(int reason) noexcept {
  reason_ = reason;
  ++missing_;
}

}  // namespace VELTRO::KELVO::ClientLib
