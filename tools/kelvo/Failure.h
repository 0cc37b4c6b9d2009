// How a verb ends when it cannot do what it was asked for.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace VELTRO::KELVO::Tool {

// What the program returns; docs/kelvo.md tells when.
enum class ExitCode {
  Done = 0,
  Refused = 1,
  WrongUsage = 2,
  NoConnection = 3,
  FaultsFound = 4,
  Interrupted = 130
};

class Failure : public std::runtime_error {
 public:
  // `hint`, if any, says what to do about it.
  Failure(ExitCode code, const std::string& text, std::string hint = {})
      : runtime_error(text), Code(code), Hint(std::move(hint)) {}

  const ExitCode Code;
  const std::string Hint;

  // Text and hint as one line.
  std::string Told() const {
    const std::string text = what();
    const bool isSentence = text.ends_with('.') || text.ends_with('!') || text.ends_with('?');
    return text + (Hint.empty() ? "" : isSentence ? " " + Hint : ". " + Hint);
  }
};

inline Failure WrongUsage(const std::string& text, std::string hint = {}) {
  return {ExitCode::WrongUsage, text, std::move(hint)};
}
inline Failure Refused(const std::string& text, std::string hint = {}) {
  return {ExitCode::Refused, text, std::move(hint)};
}

}  // namespace VELTRO::KELVO::Tool
