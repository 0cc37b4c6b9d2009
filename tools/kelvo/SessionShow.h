// A recorded session for people: a line for each of its lines, and how long answers took.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "Output.h"
#include "session/LineReader.h"

namespace VELTRO::KELVO::Tool {

// Which request is whose, while a session is read from its beginning.
class AnswerTimes {
 public:
  // How long the answer took that the line is; nothing for what is none, or is one to what was asked before.
  std::optional<std::chrono::microseconds> Take(const ClientLib::Recording::Line& line);

 private:
  std::unordered_map<std::uint64_t, std::chrono::microseconds> asked_;
};

// A line; a long value is cut in the one for people.
std::string ShownLine(const ClientLib::Recording::Line& line, std::optional<std::chrono::microseconds> took);
Json JsonOfLine(const ClientLib::Recording::Line& line, std::optional<std::chrono::microseconds> took);

// The answers of each method, by how long they took.
class AnswerStatistics {
 public:
  void Take(const ClientLib::Recording::Line& line, std::optional<std::chrono::microseconds> took);
  void Print(const Output& out) const;

 private:
  struct Method {
    std::uint64_t Calls = 0, Errors = 0;
    std::vector<std::chrono::microseconds> Times;
  };
  struct Bin {
    std::int64_t Below;  // microseconds, a power of two
    std::size_t Count;
  };

  static std::vector<Bin> Histogram(const std::vector<std::chrono::microseconds>& sorted);

  std::map<std::string, Method> methods_;
};

}  // namespace VELTRO::KELVO::Tool
