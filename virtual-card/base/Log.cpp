#include "base/Log.h"

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <new>

#include "base/LineWriter.h"
#include "base/RecentLines.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr std::chrono::milliseconds Moment{300};  // that a reader who is there is given

// It needs no memory to be made, and is never destroyed.
template <int descriptor>
LineWriter& WriterTo() {
  alignas(LineWriter) static std::byte place[sizeof(LineWriter)];
  static LineWriter& writer = *new (place) LineWriter(descriptor);
  return writer;
}

RecentLines& RecentlyLogged() {
  alignas(RecentLines) static std::byte place[sizeof(RecentLines)];
  static RecentLines& lines = *new (place) RecentLines;
  return lines;
}

}  // namespace

void LogLine(std::initializer_list<std::string_view> pieces) noexcept {
  Line line;
  line.Assign(pieces);
  RecentlyLogged().Add(line);
  WriterTo<STDERR_FILENO>().Put(line);
}

std::string RecentLog() {
  return RecentlyLogged().Get();
}

void SayLine(std::initializer_list<std::string_view> pieces) noexcept {
  WriterTo<STDERR_FILENO>().WaitUntilWritten(Moment);
  Line line;
  line.Assign(pieces);
  WriterTo<STDOUT_FILENO>().Put(line);
}

void FinishLog() noexcept {
  WriterTo<STDERR_FILENO>().WaitUntilWritten(Moment);
  WriterTo<STDOUT_FILENO>().WaitUntilWritten(Moment);
}

}  // namespace VELTRO::KELVO::VirtualCard
