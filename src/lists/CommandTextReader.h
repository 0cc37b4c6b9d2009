// Reads commands from their text form.
//
// A text is taken when it has the shape of CommandScanner.h and every byte of its values is accounted for:
//   - a scalar is one number; "True" or "False" for a Bool;
//   - a point is its coordinates in order, blanks and commas between them, each with or without its name and "=";
//   - an array is its elements in order, blanks and commas between them, a point with or without "(" and ")" around.
// Whole numbers have neither fraction nor exponent and fit their type. A number too large for a double is
// refused, and so are "nan" and "inf", though they are written; one too small becomes 0. Arrays of
// four-dimensional points have no text.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

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
  // The command that matched, until the next one is read.
  CommandView Read(const CommandMatch& match);
  void ReadVersion(std::string_view digits);
  void ReadValue(const ValueMatch& value);
  [[noreturn]] void Fail(std::string what, std::string_view reason) const;

  Command values_{0};  // a payload under construction; its memory serves all commands
  std::optional<std::size_t> index_;
};

}  // namespace VELTRO::KELVO::ClientLib
