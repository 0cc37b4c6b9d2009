#include "support/Calls.h"

namespace VELTRO::KELVO::Test {

std::string LastError() {
  std::vector<char> text(static_cast<std::size_t>(vlGetLastErrorLen()));
  vlGetLastError(text.data(), static_cast<int>(text.size()));
  return text.data();
}

std::string Outcome(std::int64_t result) {
  const std::string error = LastError();
  if (error.empty()) return std::to_string(result);
  // A card's text is the second line, below the one that opens the report of an exception.
  const std::size_t begin = error.find("----\n") == std::string::npos ? 0 : error.find('\n') + 1;
  return (result < 0 ? "" : "no failure, but: ") + error.substr(begin, error.find('\n', begin) - begin);
}

testing::AssertionResult Succeeds(const char* call, std::int64_t result) {
  if (result == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << call << " returned " << result << ": " << LastError();
}

testing::AssertionResult FailsWith(const char* call, const char*, std::int64_t result,
                                   const std::string& text) {
  const std::string error = LastError();
  if (result == -1 && error == text) return testing::AssertionSuccess();
  return testing::AssertionFailure() << call << " returned " << result << ": '" << error
                                     << "'\ninstead of failing with: '" << text << "'";
}

}  // namespace VELTRO::KELVO::Test
