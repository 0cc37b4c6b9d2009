// How a verb ends when it cannot do what it was asked for.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace VELTRO::KELVO::Tool {

// What the program returns.
enum class ExitCode {
  Done = 0,
  Refused = 1,
  WrongUsage = 2,
  NoConnection = 3,
  FaultsFound = 4,
  Interrupted = 130
};

struct ExitCodeRow {
  ExitCode Code;
  std::string_view Word, When;
};
// For help and manual; docs/exit-codes.md has the same.
inline constexpr ExitCodeRow ExitCodes[] = {
    {ExitCode::Done, "done", "Done; also a watch that was ended by Ctrl-C"},
    {ExitCode::Refused, "refused",
     "The card or the library refused, or a local file cannot be read or written"},
    {ExitCode::WrongUsage, "wrong usage",
     "An unknown verb, option, field or name, or a value of another kind; nothing was done"},
    {ExitCode::NoConnection, "no connection", "No connection, or it was lost"},
    {ExitCode::FaultsFound, "done and faults found",
     "Done, and what was checked or compared has faults or differs"},
    {ExitCode::Interrupted, "interrupted", "Interrupted by Ctrl-C or SIGTERM"},
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
