// Reads a recorded session, line by line.
#pragma once

#include <cstddef>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>

#include "session/LineReader.h"
#include "session/SessionHead.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// The recording ends in the middle of a line, as it does when the recorder was killed or the disk is full. What stands
// above that line is sound.
class CutShort : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class SessionReader {
 public:
  // Throws std::runtime_error "Unable to open recording 'PATH': REASON", "'PATH' is no recorded session.", "'PATH' is a
  // session of version N; this program reads version 1.", or CutShort "PATH:1: The recording ends in the middle of a
  // line."
  explicit SessionReader(const std::string& path);

  const SessionHead& GetHead() const { return head_; }
  const std::string& GetStarted() const { return started_; }  // as it stands in the file
  std::size_t GetLineNumber() const { return lineNumber_; }   // of the latest line

  // The next line, or nothing behind the last. Throws std::runtime_error "PATH:N: REASON", and CutShort.
  std::optional<Line> Next();

 private:
  bool TakeText();
  std::string Place() const { return path_ + ":" + std::to_string(lineNumber_) + ": "; }

  const std::string path_;
  std::ifstream file_;
  std::string text_;
  std::size_t lineNumber_ = 0;
  SessionHead head_;
  std::string started_;
};

}  // namespace VELTRO::KELVO::ClientLib::Recording
