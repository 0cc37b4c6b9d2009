// What the process under test holds: descriptors, threads, memory. And clocks for tests.
#pragma once

#include "support/Calls.h"

namespace VELTRO::KELVO::Test {

// Sanitizers keep memory of their own: figures of it mean nothing under them.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool Sanitized = true;
#else
inline constexpr bool Sanitized = false;
#endif
// The one for threads makes each byte that is moved a slow one, too.
#if defined(__SANITIZE_THREAD__)
inline constexpr bool ThreadSanitized = true;
#else
inline constexpr bool ThreadSanitized = false;
#endif
// For long tests of one thread, or of threads that meet as they do in shorter ones.
#define SKIP_UNDER_THREAD_SANITIZER() \
  if (ThreadSanitized) GTEST_SKIP() << "The thread sanitizer would find nothing more here."

inline std::size_t CountEntries(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}
inline std::size_t OpenDescriptors() {
  return CountEntries("/proc/self/fd");
}
// The threads that have not ended. Who has joined one may still find it in the table for a moment: a flag says so.
inline std::size_t Threads() {
  constexpr unsigned long Exiting = 4;
  std::size_t count = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string line, word;
    std::getline(std::ifstream(task.path() / "stat"), line);
    // Behind the name, which may hold anything: the state, five numbers, the flags.
    std::istringstream words(line.substr(std::min(line.rfind(')') + 1, line.size())));
    for (int i = 0; i < 7; ++i) words >> word;
    count += words && (std::stoul(word) & Exiting) == 0 ? 1 : 0;
  }
  return count;
}
inline std::size_t ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t total = 0, resident = 0;
  file >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// A shell command's exit code and output.
inline std::pair<int, std::string> Shell(const std::string& command) {
  std::string output;
  std::FILE* const pipe = popen(("exec 2>&1; " + command).c_str(), "re");
  for (int next; (next = fgetc(pipe)) != EOF;) output += static_cast<char>(next);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

// Runs f(0) to f(count - 1) at once.
inline void Together(std::uint32_t count, const std::function<void(std::uint32_t)>& f) {
  std::vector<std::jthread> threads;
  for (std::uint32_t i = 0; i < count; ++i) threads.emplace_back([&f, i] { f(i); });
}

// Milliseconds that this thread has computed, whatever else the machine does.
inline double ComputingTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

// Milliseconds since it was made.
class Stopwatch {
 public:
  double Milliseconds() const {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// The test fails when this lives longer than so many milliseconds.
class AtMost : Stopwatch {
 public:
  explicit AtMost(double most, std::string what = "") : most_(most), what_(std::move(what)) {}
  ~AtMost() { EXPECT_LT(Milliseconds(), most_) << what_; }

 private:
  const double most_;
  const std::string what_;
};

}  // namespace VELTRO::KELVO::Test
