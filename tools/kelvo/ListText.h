// The text of a list in a file, read part by part: however long it is, only its commands are kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/Descriptor.h"
#include "lists/CommandList.h"
#include "lists/CommandTextReader.h"

namespace VELTRO::KELVO::Tool {

struct TextPlace {
  std::uint64_t Line = 1, Column = 1;  // from 1, columns in characters
  std::string Excerpt;                 // of the line, without comments
  std::size_t Caret = 0;               // characters of the excerpt ahead of the place
};

struct TextFault {
  TextPlace Place;
  std::string Text;
};

// Comments go from "#" to the end of a line. They become blanks, so that what is left stands where it stood; the state says
// whether a part begins in one, and whether the next does.
void BlankComments(char* begin, char* end, bool& isInComment);

class ListText {
 public:
  static constexpr std::size_t MostCommandBytes = std::size_t{64} << 20;

  // "-" is standard input. That, and whatever is no plain file, is kept in a temporary one. Throws Failure, Refused.
  explicit ListText(const std::string& path);
  // Of a text that is there, told by this name.
  ListText(const std::string& name, std::string_view text);

  // The commands that can be read, and what cannot, up to so many faults.
  std::vector<TextFault> Read(ClientLib::CommandList& list, std::size_t mostFaults);
  // The same, but throws Failure, Refused, with the place of the first fault.
  ClientLib::CommandList ReadWhole();
  // Of a command that has been read. Throws Failure when the file is not what it was.
  TextPlace PlaceOf(std::size_t command);

 private:
  // Where a part of the text begins.
  struct Mark {
    std::uint64_t Offset = 0;
    std::size_t Command = 0;  // the index of its first
    bool IsInComment = false;
  };
  // The lines and columns up to a place in the file. They are counted only when there is something to tell.
  struct Counted {
    std::uint64_t Offset = 0, Line = 1, Column = 1;
  };

  // These go through the text once.
  bool ReadMore();
  void Take(std::size_t count);
  // Reads the commands in the part that are whole, and returns where the rest begins.
  const char* ReadPart(ClientLib::CommandTextReader& reader, std::vector<TextFault>& faults,
                       std::size_t mostFaults);
  void CheckEnd(std::vector<TextFault>& faults);
  void AddFault(const char* at, std::string text, std::vector<TextFault>& faults);
  TextPlace CountUpTo(std::uint64_t offset);

  const std::string path_;
  ClientLib::Descriptor file_;
  std::string part_;       // of the text, comments blanked; begins at mark_
  std::uint64_t end_ = 0;  // where the part ends in the file
  bool isInComment_ = false, isAtBegin_ = true, isEnclosed_ = false, isWhole_ = false;
  bool isLost_ = false;  // behind a fault, as long as nothing begins like a command
  Mark mark_;
  Counted counted_;
  std::vector<Mark> marks_;
};

inline ClientLib::CommandList ReadListFile(const std::string& path) {
  return ListText(path).ReadWhole();
}
// "FILE:3:7: TEXT".
std::string Shown(const std::string& path, const TextFault& fault);

}  // namespace VELTRO::KELVO::Tool
