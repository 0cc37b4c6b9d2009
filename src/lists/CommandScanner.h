// The shapes of the text form, as these expressions give them (ECMAScript; blanks are " \t\n\v\f\r"):
//
//   command  \{\s*\[?\s*([A-Za-z][A-Za-z0-9]*)\s*(,\s*V([\d]+))?\s*
//            ((,\s*[A-Za-z][A-Za-z0-9]*\s*\[[^\]]*\]\s*)*)\s*\]?\s*\}
//   value    ([A-Za-z][A-Za-z0-9]*)\s*\[\s*([^\]]*?)\s*\]
//   number   [-+]?[\d]*\.?[\d]+([Ee][-+]?[\d]+)?
//
// None of them needs to go back further than a version that turns out to be a value's name: every text is
// scanned once, whatever is in it.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

// Goes through a text from its front.
class TextCursor {
 public:
  explicit TextCursor(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  bool AtEnd() const { return at_ == end_; }
  const char* At() const { return at_; }
  std::string_view Rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }
  bool IsAt(char c) const { return at_ != end_ && *at_ == c; }

  bool Take(char c);
  void SkipBlanks();
  void SkipBlanksAndCommas();
  // These take what there is of it, which may be nothing.
  std::string_view TakeName();
  std::string_view TakeDigits();
  std::string_view TakeNumber();
  // Takes all up to a character and the character; false when it does not follow.
  bool TakeUntil(char c);

 private:
  std::string_view From(const char* begin) const { return {begin, static_cast<std::size_t>(at_ - begin)}; }

  const char* at_;
  const char* end_;
};

// The groups of the command expression.
struct CommandMatch {
  std::string_view Mnemonic;
  std::string_view Version;  // its digits; empty for none
  std::string_view Values;   // each with the comma before it
};

// Takes a command at the cursor; nothing when none begins there, and the cursor is then anywhere.
std::optional<CommandMatch> TakeCommand(TextCursor& cursor);

// The groups of the value expression.
struct ValueMatch {
  std::string_view Acronym;
  std::string_view Text;  // without the blanks around it
};

// Takes a value and the comma before it at the cursor, which is in a command's values.
ValueMatch TakeValue(TextCursor& cursor);

}  // namespace VELTRO::KELVO::ClientLib
