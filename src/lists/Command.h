// One command of a list: a code and a run of typed values in one payload.
//
// Payload: a version byte (1), the count of the bytes behind the header as 24-bit big-endian, then the values
// (CommandValue.h). A command without values has no payload at all.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lists/CommandValue.h"
#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

class PackedCommands;

// The largest payload of one command, of one piece of a list upload and of one file write.
inline constexpr std::size_t MaxPacketSize = 921600;

// Keeps a payload within its limit. Deliberate leniency, and part of what is required: the limit is looked at
// only when the payload outgrows the room made so far, and room grows by half at least.
class PayloadRoom {
 public:
  explicit PayloadRoom(std::size_t allocated = 0) : allocated_(allocated) {}
  // Makes sure of room up to `end`. Throws std::runtime_error "Command exceeds the maximum allowed command
  // size of 921600 . Please split into several commands.".
  void Extend(std::size_t end) {
    if (end <= allocated_) return;
    if (end + 4 > MaxPacketSize) ThrowTooLarge();
    allocated_ = std::max(allocated_ + allocated_ / 2, end);
  }

 private:
  [[noreturn]] static void ThrowTooLarge();

  std::size_t allocated_;
};

// A command where it lies: in a Command or packed in a list.
struct CommandView {
  std::int32_t Code = 0;
  std::span<const unsigned char> Payload;

  std::string ToString() const;
};

class Command {
 public:
  static constexpr std::size_t HeaderBytes = 4;
  static constexpr unsigned char PayloadVersion = 1;

  class CommandValueReader;
  class ArrayValue;

  explicit Command(std::int32_t code) : code_(code) {}
  // Begins the payload at once and reserves room for `reserve` value bytes.
  Command(std::int32_t code, unsigned long reserve);
  // Takes over a payload as received, whatever is in it.
  Command(std::int32_t code, std::span<const unsigned char> payload);

  std::int32_t GetCode() const { return code_; }
  std::span<const unsigned char> GetPayload() const { return payload_; }
  CommandView View() const { return {code_, payload_}; }
  operator CommandView() const { return View(); }

  // The payload's version byte; 0 without a payload.
  unsigned char GetVersion() const { return payload_.empty() ? 0 : payload_[0]; }
  void setVersion(unsigned char version);
  // Bytes of the payload, header included; 0 for a command without values.
  std::size_t GetByteCount() const { return payload_.size(); }
  // How many values there are. Throws std::runtime_error for a payload that is malformed.
  std::size_t GetValueCount() const;

  // Appends one value. T is bool, a 16-, 32- or 64-bit integer, double, a point, or a span of const bytes,
  // 16-bit unsigned integers, doubles or points. Throws as PayloadRoom does, or std::runtime_error
  // "Command payload is malformed." for an adopted payload without a whole header, and leaves the command as
  // it was.
  template <class T>
  void Add(const T& value);
  // Empties the payload.
  void Clear();

  std::string ToString() const { return View().ToString(); }
  // The command of a text, blanks around it allowed (CommandTextReader.h).
  static Command FromMatch(std::string_view commandText);
  static Command FromString(std::string_view commandText) { return FromMatch(commandText); }
  // Appends the commands of a list's text. A text that is refused leaves the list as it was.
  static void AppendCommandsFromString(std::string_view text, PackedCommands& list);

  // The type of an acronym of the text form; false when there is none.
  static bool TryParseValueType(std::string_view text, CommandValueType& type);

  friend bool operator==(const Command& a, const Command& b) {
    return a.code_ == b.code_ && a.payload_ == b.payload_;
  }

 private:
  unsigned char* Extend(std::size_t count);

  std::int32_t code_;
  std::vector<unsigned char> payload_;
  PayloadRoom room_;
};

template <class T>
void Command::Add(const T& value) {
  PutValue(Extend(ValueSize(value)), value);
}

}  // namespace VELTRO::KELVO::ClientLib
