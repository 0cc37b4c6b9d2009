#include "base/Log.h"

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <new>

#include "base/LineWriter.h"

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

}  // namespace

void LogLine(std::initializer_list<std::string_view> pieces) noexcept {
  WriterTo<STDERR_FILENO>().Put(pieces);
}

void SayLine(std::initializer_list<std::string_view> pieces) noexcept {
  WriterTo<STDERR_FILENO>().WaitUntilWritten(Moment);
  WriterTo<STDOUT_FILENO>().Put(pieces);
}

void FinishLog() noexcept {
  WriterTo<STDERR_FILENO>().WaitUntilWritten(Moment);
  WriterTo<STDOUT_FILENO>().WaitUntilWritten(Moment);
}

}  // namespace VELTRO::KELVO::VirtualCard
