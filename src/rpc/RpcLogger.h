// The command log: a text file with a line per request ("TX") and answer ("RX") and free lines between them.
#pragma once

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "common/Mutex.h"
#include "rpc/LogText.h"

namespace VELTRO::KELVO::ClientLib {

// Every operation does nothing while no file is open. Any thread may call any operation.
class RpcLogger {
 public:
  // A call line in the making. It is collected by its own thread and written as a whole by EndLine, so that
  // the lines of calls that run at once do not interleave.
  class Line {
   public:
    // Adds a value: a blank and its text, cut to the limit and marked when it is longer.
    template <class T>
    Line& Append(const T& value) {
      if (logger_ != nullptr) AppendText(LogText(value));
      return *this;
    }
    // Writes the line.
    void EndLine();

   private:
    friend class RpcLogger;
    void AppendText(std::string_view text);

    RpcLogger* logger_ = nullptr;  // null when nothing is logged
    std::string text_;
  };

  ~RpcLogger() { Disable(); }

  // Opens `path` (with "-" and the compact time stamp appended if `timestampInName`), truncating it if
  // `replace`, else to append to it, and writes "Logging enabled". Values are cut to `valueLimit` characters;
  // below 0: no limit. Throws std::runtime_error "RpcLogger is already enabled!" or "Unable to open log file
  // 'PATH': REASON".
  void Enable(const std::string& path, bool timestampInName, bool replace, int valueLimit);
  // Writes "Logging disabled" and closes the file.
  void Disable();
  bool IsEnabled() const { return enabled_.load(std::memory_order_relaxed); }

  // One free line.
  void Write(const char* text);
  // One line: tag, ": ", text, and "()" if `call`.
  void Write(const char* tag, const std::string& text, bool call);
  // Starts a call line: tag, ": ", method, "(".
  Line BeginLine(const char* tag, std::string_view method);
  void Flush();

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void WriteLine(std::string_view text) KELVO_EXCLUDES(mutex_);
  void WriteLineLocked(std::string_view text) KELVO_REQUIRES(mutex_);

  std::atomic<bool> enabled_{false};
  std::atomic<int> valueLimit_{-1};
  Mutex mutex_;
  std::unique_ptr<std::FILE, CloseFile> file_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::ClientLib
