// The shapes of the text form, as these expressions give them (ECMAScript; blanks are " \t\n\v\f\r"):
//
//   command  \{\s*\[?\s*([A-Za-z][A-Za-z0-9]*)\s*(,\s*V([\d]+))?\s*
//            ((,\s*[A-Za-z][A-Za-z0-9]*\s*\[[^\]]*\]\s*)*)\s*\]?\s*\}
//   value    ([A-Za-z][A-Za-z0-9]*)\s*\[\s*([^\]]*?)\s*\]
//   number   [-+]?[\d]*\.?[\d]+([Ee][-+]?[\d]+)?
//
// Numbers are looked for in what a value holds; the rest of it only separates them.
//
// None of them needs to go back further than a version that turns out to be a value's name: every text is
// scanned once, whatever is in it.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace VELTRO::KELVO::ClientLib {

namespace Characters {

enum : unsigned char { Blank = 1, Comma = 2, Letter = 4, Digit = 8 };

inline constexpr auto Classes = [] {
  std::array<unsigned char, 256> classes{};
  for (const char c : std::string_view(" \t\n\v\f\r")) classes[static_cast<unsigned char>(c)] = Blank;
  classes[','] = Comma;
  for (unsigned char c = 'A'; c <= 'Z'; ++c) classes[c] = classes[c + 'a' - 'A'] = Letter;
  for (unsigned char c = '0'; c <= '9'; ++c) classes[c] = Digit;
  return classes;
}();

}  // namespace Characters

// Goes through a text from its front.
class TextCursor {
 public:
  explicit TextCursor(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  const char* At() const { return at_; }
  const char* End() const { return end_; }
  bool AtEnd() const { return at_ == end_; }
  bool IsAt(char c) const { return at_ != end_ && *at_ == c; }
  bool IsAtAny(unsigned classes) const {
    return at_ != end_ && (Characters::Classes[static_cast<unsigned char>(*at_)] & classes) != 0;
  }

  void MoveTo(const char* at) { at_ = at; }
  bool Take(char c) {
    if (!IsAt(c)) return false;
    ++at_;
    return true;
  }
  // These take what there is of it, which may be nothing.
  std::string_view TakeAll(unsigned classes) {
    // A local: the compiler must take it that at_ lies in the text, and would store it at every step.
    const char* at = at_;
    while (at != end_ && (Characters::Classes[static_cast<unsigned char>(*at)] & classes) != 0) ++at;
    const char* const begin = std::exchange(at_, at);
    return {begin, static_cast<std::size_t>(at - begin)};
  }
  std::string_view TakeName() {
    return IsAtAny(Characters::Letter) ? TakeAll(Characters::Letter | Characters::Digit) : std::string_view();
  }
  void SkipBlanks() { TakeAll(Characters::Blank); }
  void SkipBlanksAndCommas() { TakeAll(Characters::Blank | Characters::Comma); }
  // Takes all up to a character and the character; false when it does not follow.
  bool TakeUntil(char c);

 private:
  const char* at_;
  const char* end_;
};

// Takes ", V" and digits, which it returns, when they are a version and not the name of a value; else nothing.
std::string_view TakeVersion(TextCursor& cursor);

// Takes a command, whatever is in it; false when none begins at the cursor, which is where that shows then.
bool TakeCommand(TextCursor& cursor);

}  // namespace VELTRO::KELVO::ClientLib
