// What the process under test holds: descriptors, threads, memory. And clocks for tests.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "kelvo/kelvo.h"

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

// The calling thread's last error, which it clears.
std::string LastError();

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

// A connection that is made when it is declared and ended with it; the handle is -1 when it failed.
class Connection {
 public:
  explicit Connection(int port) : handle_(vlConnect("127.0.0.1", port)) {}
  ~Connection() {
    if (handle_ > 0) vlDisconnect(handle_);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  operator std::int32_t() const { return handle_; }

 private:
  std::int32_t handle_;
};

}  // namespace VELTRO::KELVO::Test
