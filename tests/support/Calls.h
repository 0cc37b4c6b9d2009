// Calls of exported functions, so that a failing test names the call and tells what the library says to it.
#pragma once

#include "kelvo/kelvo.h"
#include "support/Usual.h"

namespace VELTRO::KELVO::Test {

// The calling thread's last error, which it clears.
inline std::string LastError() {
  std::vector<char> text(static_cast<std::size_t>(vlGetLastErrorLen()));
  vlGetLastError(text.data(), static_cast<int>(text.size()));
  return text.data();
}

// The result of a call, or the text of its failure; of a card's refusal, the card's text alone.
inline std::string Outcome(std::int64_t result) {
  const std::string error = LastError();
  if (error.empty()) return std::to_string(result);
  // A card's text is the second line, below the one that opens the report of an exception.
  const std::size_t begin = error.find("----\n") == std::string::npos ? 0 : error.find('\n') + 1;
  return (result < 0 ? "" : "no failure, but: ") + error.substr(begin, error.find('\n', begin) - begin);
}

// The outcome of a call and, behind it, what the call has written: variables, which are looked at after the call.
template <class... Values>
std::string Told(std::int64_t result, const Values&... values) {
  std::ostringstream text;
  text << Outcome(result);
  ((text << " " << values), ...);
  return text.str();
}

inline testing::AssertionResult Succeeds(const char* call, std::int64_t result) {
  if (result == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << call << " returned " << result << ": " << LastError();
}
inline testing::AssertionResult FailsWith(const char* call, const char*, std::int64_t result,
                                          const std::string& text) {
  const std::string error = LastError();
  if (result == -1 && error == text) return testing::AssertionSuccess();
  return testing::AssertionFailure() << call << " returned " << result << ": '" << error
                                     << "'\ninstead of failing with: '" << text << "'";
}

// The call returns 0.
#define EXPECT_OK(...) EXPECT_PRED_FORMAT1(::VELTRO::KELVO::Test::Succeeds, (__VA_ARGS__))
#define ASSERT_OK(...) ASSERT_PRED_FORMAT1(::VELTRO::KELVO::Test::Succeeds, (__VA_ARGS__))
// The call returns -1 and leaves that text as the last error.
#define EXPECT_FAILS(call, text) EXPECT_PRED_FORMAT2(::VELTRO::KELVO::Test::FailsWith, call, text)

// The text of a list.
inline std::string TextOf(std::int64_t list) {
  std::string text(static_cast<std::size_t>(vlListStringLen(list)) + 2, '?');
  std::uint32_t length = 0;
  EXPECT_FAILS(vlListToString(list, text.data(), static_cast<std::uint32_t>(text.size() - 1), &length),
               "Buffer is too small.");
  EXPECT_OK(vlListToString(list, text.data(), static_cast<std::uint32_t>(text.size()), &length));
  return text.substr(0, length);
}

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
