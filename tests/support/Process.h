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

std::size_t OpenDescriptors();
std::size_t Threads();
std::size_t ResidentBytes();

// Runs f(0) to f(count - 1) at once.
void Together(std::uint32_t count, const std::function<void(std::uint32_t)>& f);

// Milliseconds since it was made.
class Stopwatch {
 public:
  double Milliseconds() const {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace VELTRO::KELVO::Test
