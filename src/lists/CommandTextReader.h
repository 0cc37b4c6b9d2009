// Reads commands from their text form.
//
// A text is taken when it has the shape of CommandScanner.h. In the brackets of a value the numbers of the number
// expression count, found one after the other; whatever else is there separates them: blanks, commas, semicolons,
// parentheses, names of coordinates.
//   - a scalar is one number; a Bool "True" or "False" and nothing else;
//   - a point has as many numbers as coordinates;
//   - an array has any number of elements; where it has none, there are only blanks.
// Nothing is lost in silence: a number too many or too few is refused, and so is a word "nan", "inf" or "infinity",
// which is no number of the expression, though the first two are written. Whole numbers have neither fraction nor
// exponent and fit their type. A number too large for a double is refused; one too small becomes 0. Arrays of
// four-dimensional points have no text.
//
// What was written is read as it was, but for two things that have no text of their own: a payload of the usual
// version without values comes back as none, and a Bool of a byte above 1 as 1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "lists/Command.h"
#include "lists/CommandScanner.h"
#include "lists/TextForm.h"

namespace VELTRO::KELVO::ClientLib {

class PackedCommands;

// A text that cannot be parsed.
class CommandTextError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class CommandTextReader {
 public:
  // One command and blanks around it. Throws CommandTextError, like ReadList: "Unable to parse command",
  // "Unable to parse command code", "Unable to parse Point.", or another that says what was found. A command that becomes too
  // large throws what appending to it throws (PayloadRoom).
  static Command ReadCommand(std::string_view text);
  // Appends the commands of a list's text. Between them are blanks and commas, around them "[" and "]" or
  // nothing. An empty list has its brackets. When it throws, `list` is left with the commands read so far.
  static void ReadList(std::string_view text, PackedCommands& list);

  // For who has the text of a list in parts, or goes on behind a fault.
  explicit CommandTextReader(PackedCommands& list) : list_(list) {}
  // Appends the commands at the cursor, with blanks and commas around them, up to whatever is no "{". When it throws, the
  // cursor is where the fault is.
  void ReadCommands(TextCursor& cursor);
  // The command that it threw for.
  const char* GetBegin() const { return begin_; }

 private:
  // The numbers of a value: where each begins and ends.
  class Places;

  // Appends the command at the cursor.
  void Read(TextCursor& cursor);
  // The same when its text is that of the one before but for the numbers of its only value, a T; else false.
  template <class T>
  bool ReadAgain(TextCursor& cursor);
  // Lets ReadAgain read the commands that repeat the one from `begin` to `end`, if they can be told by their form.
  template <class T>
  void Remember(const char* begin, const Places& numbers, const char* end);
  // The same, but of several faults in the text it need not name the first.
  void ReadParts(TextCursor& cursor);
  void ReadVersion();
  // Puts the value at the cursor into the payload. True when it has appended the command: a scalar that is all
  // that a command has goes straight into the list.
  bool ReadValue(std::string_view acronym, TextCursor& cursor);
  template <class T>
  void ReadElements(TextCursor& cursor);
  [[noreturn]] void Fail(std::string what, std::string_view reason) const;

  // Makes `count` more bytes of the payload, whether they are within its limit or not.
  unsigned char* Extend(std::size_t count);

  PackedCommands& list_;
  std::optional<std::size_t> index_;  // of the command in the text of a list
  // The command that is read.
  std::int32_t code_ = 0;
  std::string_view version_;            // its digits; empty for none
  std::vector<unsigned char> payload_;  // its first size_ bytes; the rest is room
  std::size_t size_ = 0;
  PayloadRoom room_;

  // The form of the command before, when it can be repeated. It has proved to be worth keeping by its code's coming
  // twice.
  bool (CommandTextReader::*readAgain_)(TextCursor&) = nullptr;
  TextForm form_;
  const char* begin_ = nullptr;  // of the command that is read
  std::optional<std::int32_t> codeBefore_;
};

}  // namespace VELTRO::KELVO::ClientLib
