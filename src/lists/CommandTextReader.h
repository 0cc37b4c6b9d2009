// Reads commands from their text form.
//
// A text is taken when it has the shape of CommandScanner.h and every byte of its values is accounted for:
//   - a scalar is one number; "True" or "False" for a Bool;
//   - a point is its coordinates in order, blanks and commas between them, each with or without its name and "=";
//   - an array is its elements in order, blanks and commas between them, a point with or without "(" and ")" around.
// Whole numbers have neither fraction nor exponent and fit their type. A number too large for a double is
// refused, and so are "nan" and "inf", though they are written; one too small becomes 0. Arrays of
// four-dimensional points have no text.
//
// What was written is read as it was, but for two things that have no text of their own: a payload of the usual
// version without values comes back as none, and a Bool of a byte above 1 as 1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lists/Command.h"
#include "lists/CommandScanner.h"

namespace VELTRO::KELVO::ClientLib {

class PackedCommands;

class CommandTextReader {
 public:
  // One command and blanks around it. Throws std::runtime_error, like ReadList: "Unable to parse command",
  // "Unable to parse command code", "Unable to parse Point.", or another that says what was found.
  static Command ReadCommand(std::string_view text);
  // Appends the commands of a list's text. Between them are blanks and commas, around them "[" and "]" or
  // nothing. An empty list has its brackets. When it throws, `list` is left with the commands read so far.
  static void ReadList(std::string_view text, PackedCommands& list);

 private:
  explicit CommandTextReader(PackedCommands& list) : list_(list) {}

  // Appends the command at the cursor.
  void Read(TextCursor& cursor);
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
};

}  // namespace VELTRO::KELVO::ClientLib
