// The commands of one list, in order.
//
// They are kept packed, one behind the other in one block, in the form in which they travel: appending is a
// copy of a few bytes, an upload needs no packing. A copy of a list shares the block until either is changed,
// so taking a snapshot of a long list costs nothing. `Command` is the value to build, read and copy one
// command.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "lists/Command.h"
#include "lists/PackedBlock.h"
#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

class CommandList {
 public:
  CommandList() = default;
  explicit CommandList(std::span<const Command> commands);

  std::size_t GetCommandCount() const { return count_; }
  // Command `i` where it lies, until the list changes. Throws std::out_of_range.
  CommandView At(std::size_t i) const;
  // Calls `f` with every command in order.
  template <class F>
  void ForEach(F&& f) const;

  // Empties commands and labels.
  void Clear();
  // Appends one command as it stands; it may lie in this list.
  void Append(const CommandView& command);
  // Appends the commands of another list.
  void Append(const CommandList& other);

  // Appends a command with these values, in this order (the types are those of Command::Add). Every Append...
  // method below is one line on top of this.
  template <class... Values>
  void Append(std::int32_t code, const Values&... values);

  void AppendJumpAbs(Point2D p);
  void AppendJumpAbs(Point3D p);
  void AppendJumpRel(Point2D p);
  void AppendJumpRel(Point3D p);
  void AppendMarkAbs(Point2D p);
  void AppendMarkAbs(Point3D p);
  void AppendMarkRel(Point2D p);
  void AppendMarkRel(Point3D p);
  void AppendJumpSpeed(double speed);
  void AppendMarkSpeed(double speed);
  void AppendJumpDelay(double delay);
  void AppendMarkDelay(double delay);
  void AppendPolyDelay(double delay);
  void AppendLaserOnDelay(double delay);
  void AppendLaserOffDelay(double delay);
  void AppendSleep(double duration);
  void AppendLaserOn();
  void AppendLaserOff();
  void AppendProgress(std::int32_t value);
  // Opens a loop: one deeper from here on.
  void AppendLoopStart(std::int32_t count);
  // Closes a loop. Deliberately unguarded: without an open loop the depth goes below 0.
  void AppendLoopEnd();
  // Throws std::runtime_error "No loop opened!".
  void AppendLoopBreak();

  // A number that travels ahead of the commands; -1 in a new list.
  std::int32_t GetListField() const { return listField_; }
  void SetListField(std::int32_t field) { listField_ = field; }
  // Open loops: 0 when every loop is closed.
  std::int32_t GetLoopDepth() const { return loopDepth_; }

  // Commands [first, last) are what the list is packed as, up to the number of commands.
  void SetRange(std::size_t first, std::size_t last);
  // The end of the longest run of commands from `first` on that fits one upload: each counts its payload and
  // 4 bytes, MaxPacketSize in all. Throws std::runtime_error when not even one does.
  std::size_t FindChunkEnd(std::size_t first) const;

  std::string ToString() const;
  // The list of a text (CommandTextReader.h).
  static CommandList FromString(std::string_view text);
  // The text of the commands that the list is packed as: of one piece of an upload, not of the whole for each piece.
  std::string RangeToString() const;

  void msgpack_pack(auto& packer) const;
  void msgpack_unpack(const msgpack::object& object);

 private:
  // Bytes of one packed command before its payload at most: array header, code, bin header.
  static constexpr std::size_t MostEnvelopeBytes = 1 + 5 + 5;
  // Every so many commands the place of one is noted, so that any is found without walking the list.
  static constexpr std::size_t Stride = 64;

  static std::size_t PutEnvelope(unsigned char* at, std::int32_t code, std::size_t payloadSize);
  unsigned char* AppendEnvelope(std::int32_t code, std::size_t payloadSize);
  std::size_t PlaceOf(std::size_t i) const;
  std::string TextOf(std::size_t place, std::size_t end) const;
  // The command at `place` in the block; moves `place` behind it.
  CommandView ReadAt(std::size_t& place) const;

  PackedBlock packed_;
  std::vector<std::size_t> places_;  // of commands 0, Stride, 2 * Stride, ...
  std::size_t count_ = 0;
  std::int32_t listField_ = -1;
  std::int32_t loopDepth_ = 0;
  std::size_t first_ = 0;
  std::size_t last_ = 0;
};

// A list in the command log: what of it travels, or all of a list that was received.
inline std::string LogText(const CommandList& list) {
  return list.RangeToString();
}

template <class F>
void CommandList::ForEach(F&& f) const {
  for (std::size_t place = 0; place < packed_.Size();) f(ReadAt(place));
}

template <class... Values>
void CommandList::Append(std::int32_t code, const Values&... values) {
  if constexpr (sizeof...(Values) == 0) {
    AppendEnvelope(code, 0);
  } else {
    PayloadRoom room;
    std::size_t size = Command::HeaderBytes;
    (room.Extend(size += ValueSize(values)), ...);
    unsigned char* at = AppendEnvelope(code, size);
    *at = Command::PayloadVersion;
    PutUInt24(at + 1, size - Command::HeaderBytes);
    at += Command::HeaderBytes;
    ((at = PutValue(at, values)), ...);
  }
}

void CommandList::msgpack_pack(auto& packer) const {
  const std::size_t begin = PlaceOf(first_);
  const auto commands = packed_.Bytes().subspan(begin, PlaceOf(last_) - begin);
  if (commands.size() > UINT32_MAX) throw msgpack::container_size_overflow("container size overflow");
  packer.pack_array(static_cast<std::uint32_t>(last_ - first_ + 1));
  packer.pack_int32(listField_);
  // They are MessagePack already: what pack_bin_body does is write bytes as they are.
  packer.pack_bin_body(reinterpret_cast<const char*>(commands.data()),
                       static_cast<std::uint32_t>(commands.size()));
}

}  // namespace VELTRO::KELVO::ClientLib
