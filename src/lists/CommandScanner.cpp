#include "lists/CommandScanner.h"

#include <array>
#include <cstring>

namespace VELTRO::KELVO::ClientLib {

namespace {

enum : unsigned char { Blank = 1, Comma = 2, Letter = 4, Digit = 8 };

constexpr auto Classes = [] {
  std::array<unsigned char, 256> classes{};
  for (const unsigned char c : std::string_view(" \t\n\v\f\r")) classes[c] = Blank;
  classes[','] = Comma;
  for (unsigned char c = 'A'; c <= 'Z'; ++c) classes[c] = classes[c + 'a' - 'A'] = Letter;
  for (unsigned char c = '0'; c <= '9'; ++c) classes[c] = Digit;
  return classes;
}();

bool Is(char c, unsigned classes) {
  return (Classes[static_cast<unsigned char>(c)] & classes) != 0;
}

const char* SkipAll(const char* at, const char* end, unsigned classes) {
  while (at != end && Is(*at, classes)) ++at;
  return at;
}

}  // namespace

bool TextCursor::Take(char c) {
  if (!IsAt(c)) return false;
  ++at_;
  return true;
}

void TextCursor::SkipBlanks() {
  at_ = SkipAll(at_, end_, Blank);
}

void TextCursor::SkipBlanksAndCommas() {
  at_ = SkipAll(at_, end_, Blank | Comma);
}

std::string_view TextCursor::TakeName() {
  const char* const begin = at_;
  if (at_ != end_ && Is(*at_, Letter)) at_ = SkipAll(at_, end_, Letter | Digit);
  return From(begin);
}

std::string_view TextCursor::TakeDigits() {
  const char* const begin = at_;
  at_ = SkipAll(at_, end_, Digit);
  return From(begin);
}

std::string_view TextCursor::TakeNumber() {
  const char* const begin = at_;
  const auto skipSign = [&](const char* at) {
    return at != end_ && (*at == '-' || *at == '+') ? at + 1 : at;
  };
  const char* const digits = skipSign(begin);
  const char* at = SkipAll(digits, end_, Digit);
  if (end_ - at >= 2 && at[0] == '.' && Is(at[1], Digit)) {
    at = SkipAll(at + 2, end_, Digit);
  } else if (at == digits) {
    return {};
  }
  if (at != end_ && (*at == 'e' || *at == 'E')) {
    const char* const exponent = skipSign(at + 1);
    if (exponent != end_ && Is(*exponent, Digit)) at = SkipAll(exponent, end_, Digit);
  }
  at_ = at;
  return From(begin);
}

bool TextCursor::TakeUntil(char c) {
  const void* found = at_ == end_ ? nullptr : std::memchr(at_, c, static_cast<std::size_t>(end_ - at_));
  if (found == nullptr) return false;
  at_ = static_cast<const char*>(found) + 1;
  return true;
}

std::optional<CommandMatch> TakeCommand(TextCursor& cursor) {
  CommandMatch match;
  if (!cursor.Take('{')) return std::nullopt;
  cursor.SkipBlanks();
  cursor.Take('[');
  cursor.SkipBlanks();
  match.Mnemonic = cursor.TakeName();
  if (match.Mnemonic.empty()) return std::nullopt;
  cursor.SkipBlanks();

  TextCursor ahead = cursor;
  ahead.Take(',');
  ahead.SkipBlanks();
  if (cursor.IsAt(',') && ahead.Take('V')) {
    const std::string_view digits = ahead.TakeDigits();
    ahead.SkipBlanks();
    // A value may be named like a version: its bracket tells.
    if (!digits.empty() && (ahead.IsAt(',') || ahead.IsAt(']') || ahead.IsAt('}'))) {
      match.Version = digits;
      cursor = ahead;
    }
  }

  const char* const values = cursor.At();
  while (cursor.Take(',')) {
    cursor.SkipBlanks();
    if (cursor.TakeName().empty()) return std::nullopt;
    cursor.SkipBlanks();
    if (!cursor.Take('[') || !cursor.TakeUntil(']')) return std::nullopt;
    cursor.SkipBlanks();
  }
  match.Values = {values, static_cast<std::size_t>(cursor.At() - values)};
  cursor.Take(']');
  cursor.SkipBlanks();
  if (!cursor.Take('}')) return std::nullopt;
  return match;
}

ValueMatch TakeValue(TextCursor& cursor) {
  ValueMatch match;
  cursor.Take(',');
  cursor.SkipBlanks();
  match.Acronym = cursor.TakeName();
  cursor.SkipBlanks();
  cursor.Take('[');
  cursor.SkipBlanks();
  const char* const begin = cursor.At();
  cursor.TakeUntil(']');
  const char* end = cursor.At() - 1;
  while (end != begin && Is(end[-1], Blank)) --end;
  match.Text = {begin, static_cast<std::size_t>(end - begin)};
  cursor.SkipBlanks();
  return match;
}

}  // namespace VELTRO::KELVO::ClientLib
