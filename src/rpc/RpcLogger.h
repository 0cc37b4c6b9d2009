// The command log: a text file with a line per request ("TX") and answer ("RX") and free lines between them.
//
// A line is one line whatever is in it (AppendEscaped). Logging never makes a call wait for a reader or fail: a line
// that cannot be written, or has no memory, is missing. The next one that is written says how many are, and Disable
// fails.
#pragma once

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>

#include "common/Descriptor.h"
#include "common/Mutex.h"
#include "rpc/LogText.h"

namespace VELTRO::KELVO::ClientLib {

// Every operation does nothing while no file is open. Any thread may call any operation.
class RpcLogger {
 public:
  ~RpcLogger() { Close(); }

  // Opens `path` (with "-" and the compact time stamp appended if `timestampInName`), truncating it if
  // `replace`, else to append to it, and writes "Logging enabled". Values are cut to `valueLimit` characters;
  // below 0: no limit. Throws std::runtime_error "RpcLogger is already enabled!", "Unable to open log file
  // 'PATH': REASON" or "Unable to write log file 'PATH': REASON".
  void Enable(const std::string& path, bool timestampInName, bool replace, int valueLimit);
  // Disable and Enable in one step. When Disable fails no log is begun.
  void Restart(const std::string& path, bool timestampInName, bool replace, int valueLimit);
  // Writes "Logging disabled" and closes the file. Throws std::runtime_error "Unable to write log file 'PATH':
  // REASON" when lines of it are missing, with the reason of the last one; it is closed all the same.
  void Disable();
  bool IsEnabled() const { return enabled_.load(std::memory_order_relaxed); }

  // One free line.
  void Write(const char* text);
  // One line: tag, ": ", text, and "()" if `call`.
  void Write(const char* tag, std::string_view text, bool call);

  // A call line in the making: tag, ": ", method, "(". Each thread has its own, which EndLine writes as a whole, so
  // that the lines of calls that run at once do not interleave.
  RpcLogger& BeginLine(const char* tag, std::string_view method);
  // Adds a value: a blank and its text, cut to the limit and marked when it is longer.
  template <class T>
  RpcLogger& Append(const T& value) {
    if (!IsEnabled()) return *this;
    try {
      AppendText(LogText(value));
    } catch (const std::exception&) {
      DropLine();
    }
    return *this;
  }
  // Writes the line.
  void EndLine();
  // Nothing is held back: a line is in the file when what wrote it returns.
  void Flush() {}

 private:
  void Open(const std::string& path, bool timestampInName, bool replace, int valueLimit)
      KELVO_REQUIRES(mutex_);
  // Ends the log. Returns why lines of it are missing, or 0.
  int Close() noexcept;
  int CloseLocked() noexcept KELVO_REQUIRES(mutex_);
  void CloseOrThrow() KELVO_REQUIRES(mutex_);

  void AppendText(std::string_view text);
  void DropLine() noexcept;
  // One line of the parts, one behind the other.
  void WriteLine(std::initializer_list<std::string_view> parts) noexcept;
  void WriteLineLocked(std::initializer_list<std::string_view> parts) noexcept KELVO_REQUIRES(mutex_);
  void Miss(int reason) noexcept KELVO_REQUIRES(mutex_);

  std::atomic<bool> enabled_{false};
  Mutex mutex_;
  Descriptor file_ KELVO_GUARDED_BY(mutex_);
  bool isPipe_ KELVO_GUARDED_BY(mutex_) = false;
  std::string name_ KELVO_GUARDED_BY(mutex_);
  int valueLimit_ KELVO_GUARDED_BY(mutex_) = -1;
  std::map<pid_t, std::string> lines_ KELVO_GUARDED_BY(mutex_);  // of each thread that makes one
  std::string buffer_ KELVO_GUARDED_BY(mutex_);                  // what is written; keeps its memory
  bool torn_ KELVO_GUARDED_BY(mutex_) = false;                   // the file's last line has no end
  int reason_ KELVO_GUARDED_BY(mutex_) = 0;                      // of the last line that is missing, or 0
  std::uint64_t missing_ KELVO_GUARDED_BY(mutex_) = 0;           // lines, and no line says so
};

}  // namespace VELTRO::KELVO::ClientLib
