#include "lists/CommandScanner.h"

#include <cstring>

namespace VELTRO::KELVO::ClientLib {

bool TextCursor::TakeUntil(char c) {
  const void* found = AtEnd() ? nullptr : std::memchr(at_, c, static_cast<std::size_t>(end_ - at_));
  if (found == nullptr) return false;
  at_ = static_cast<const char*>(found) + 1;
  return true;
}

std::string_view TakeVersion(TextCursor& cursor) {
  TextCursor ahead = cursor;
  if (!ahead.Take(',')) return {};
  ahead.SkipBlanks();
  if (!ahead.Take('V')) return {};
  const std::string_view digits = ahead.TakeAll(Characters::Digit);
  ahead.SkipBlanks();
  // A value may be named like a version: its bracket tells.
  if (digits.empty() || !(ahead.IsAt(',') || ahead.IsAt(']') || ahead.IsAt('}'))) return {};
  cursor = ahead;
  return digits;
}

bool TakeCommand(TextCursor& cursor) {
  if (!cursor.Take('{')) return false;
  cursor.SkipBlanks();
  cursor.Take('[');
  cursor.SkipBlanks();
  if (cursor.TakeName().empty()) return false;
  cursor.SkipBlanks();
  TakeVersion(cursor);
  while (cursor.Take(',')) {
    cursor.SkipBlanks();
    if (cursor.TakeName().empty()) return false;
    cursor.SkipBlanks();
    if (!cursor.Take('[')) return false;
    if (!cursor.TakeUntil(']')) {
      cursor.MoveTo(cursor.End());
      return false;
    }
    cursor.SkipBlanks();
  }
  cursor.Take(']');
  cursor.SkipBlanks();
  return cursor.Take('}');
}

}  // namespace VELTRO::KELVO::ClientLib
