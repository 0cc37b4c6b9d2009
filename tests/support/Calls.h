// Calls of exported functions, so that a failing test names the call and tells what the library says to it.
#pragma once

#include "kelvo/kelvo.h"
#include "support/Usual.h"

namespace VELTRO::KELVO::Test {

// The calling thread's last error, which it clears.
std::string LastError();

// The result of a call, or the text of its failure; of a card's refusal, the card's text alone.
std::string Outcome(std::int64_t result);

// The outcome of a call and, behind it, what the call has written: variables, which are looked at after the call.
template <class... Values>
std::string Told(std::int64_t result, const Values&... values) {
  std::ostringstream text;
  text << Outcome(result);
  ((text << " " << values), ...);
  return text.str();
}

testing::AssertionResult Succeeds(const char* call, std::int64_t result);
testing::AssertionResult FailsWith(const char* call, const char*, std::int64_t result,
                                   const std::string& text);

// The call returns 0.
#define EXPECT_OK(...) EXPECT_PRED_FORMAT1(::VELTRO::KELVO::Test::Succeeds, (__VA_ARGS__))
#define ASSERT_OK(...) ASSERT_PRED_FORMAT1(::VELTRO::KELVO::Test::Succeeds, (__VA_ARGS__))
// The call returns -1 and leaves that text as the last error.
#define EXPECT_FAILS(call, text) EXPECT_PRED_FORMAT2(::VELTRO::KELVO::Test::FailsWith, call, text)

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
