// A run of commands, packed one behind the other in one block, in the form in which they travel: appending is
// a copy of a few bytes, an upload needs no packing. A copy shares the block until either is changed, so
// taking a snapshot of a long run costs nothing. `Command` is the value to build, read and copy one command.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "lists/Command.h"
#include "lists/Envelope.h"
#include "lists/PackedBlock.h"
#include "rpc/Body.h"
#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

class PackedCommands {
 public:
  std::size_t GetCommandCount() const { return count_; }
  // Command `i` where it lies, until the list changes. Throws std::out_of_range.
  CommandView At(std::size_t i) const;
  // The payload of command `i`, to be changed in place. Throws std::out_of_range.
  std::span<unsigned char> WritablePayload(std::size_t i);
  // Calls `f` with every command in order.
  template <class F>
  void ForEach(F&& f) const {
    for (std::size_t place = 0; place < packed_.Size();) f(ReadAt(place));
  }

  // Makes room for commands of so many bytes in all, packed; the room costs no memory before it is used.
  void Reserve(std::size_t bytes) { packed_.Reserve(bytes); }

  // Appends one command as it stands; it may lie in this list.
  void Append(const CommandView& command);
  // Appends all commands of another run, which may be this one.
  void Append(const PackedCommands& other);
  // Appends a command with these values, in this order (the types are those of Command::Add).
  template <class... Values>
  void Append(std::int32_t code, const Values&... values);

  // All commands as they travel; commands [first, last), too. Throws std::out_of_range.
  std::span<const unsigned char> Bytes() const { return packed_.Bytes(); }
  std::span<const unsigned char> Bytes(std::size_t first, std::size_t last) const;
  // A share of these bytes, which stay as they are as long as somebody has one.
  std::shared_ptr<const void> Share() const { return std::make_shared<PackedBlock>(packed_); }
  // Throws std::runtime_error when a command alone is too large for an upload.
  void CheckEachFits() const;
  // The end of the longest run of commands from `first` on that fits one upload: each counts its payload and
  // 4 bytes, MaxPacketSize in all. Every single command must fit.
  std::size_t FindChunkEnd(std::size_t first) const;

  // All commands and nothing else, as an array: a glyph of a font.
  void PackCommands(auto& packer) const;
  // Appends commands as they stand in such an array. Throws msgpack::type_error.
  void UnpackCommands(std::span<const msgpack::object> commands);
  // The same with the next `count` objects.
  void TakeCommands(Body::Reader& reader, std::uint32_t count);

  std::string ToString() const { return ToString(0, count_); }
  // Of commands [first, last). Throws std::out_of_range.
  std::string ToString(std::size_t first, std::size_t last) const;

 protected:
  void ClearCommands();
  // Commands that are already MessagePack, as they lie.
  static void PackBytes(auto& packer, std::span<const unsigned char> commands);

 private:
  void UnpackCommand(const msgpack::object& pair);

  // Every so many commands the place of one is noted, so that any is found without walking the list.
  static constexpr std::size_t Stride = 64;
  static constexpr std::size_t CountedBesidesPayload = 4;
  struct Note {
    std::size_t Place;    // in the block
    std::size_t Counted;  // bytes that the commands before it count in an upload
  };

  // Notes the place where the next command will stand. Ahead of growing the block: should that fail, the note
  // is right for the command that comes then.
  void NotePlace(std::size_t place) {
    if (notes_.size() * Stride == count_) notes_.push_back({place, counted_});
  }
  void Count(std::size_t payloadSize) {
    const std::size_t counts = payloadSize + CountedBesidesPayload;
    if (counts > MaxPacketSize && !tooLarge_) tooLarge_ = count_;
    counted_ += counts;
    ++count_;
  }
  // Makes room for a command, puts its envelope there and returns where its payload belongs.
  unsigned char* AppendEnvelope(std::int32_t code, std::size_t payloadSize);
  // The place of command `i`, or of the end.
  std::size_t PlaceOf(std::size_t i) const;
  // The command at `place` in the block; moves `place` behind it.
  CommandView ReadAt(std::size_t& place) const;

  PackedBlock packed_;
  std::vector<Note> notes_;  // of commands 0, Stride, 2 * Stride, ...
  std::size_t count_ = 0;
  std::size_t counted_ = 0;
  std::optional<std::size_t> tooLarge_;  // the first command that fits no upload
};

inline unsigned char* PackedCommands::AppendEnvelope(std::int32_t code, std::size_t payloadSize) {
  NotePlace(packed_.Size());
  unsigned char* const at = packed_.Extend(Envelope::MostBytes + payloadSize);
  unsigned char* const payload = Envelope::Put(at, code, payloadSize);
  packed_.Truncate(packed_.Size() - Envelope::MostBytes + static_cast<std::size_t>(payload - at));
  Count(payloadSize);
  return payload;
}

template <class... Values>
inline void PackedCommands::Append(std::int32_t code, const Values&... values) {
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

void PackedCommands::PackBytes(auto& packer, std::span<const unsigned char> commands) {
  if (commands.size() > UINT32_MAX) throw msgpack::container_size_overflow("container size overflow");
  // What pack_bin_body does is write bytes as they are.
  packer.pack_bin_body(reinterpret_cast<const char*>(commands.data()),
                       static_cast<std::uint32_t>(commands.size()));
}

void PackedCommands::PackCommands(auto& packer) const {
  packer.pack_array(static_cast<std::uint32_t>(count_));
  PackBytes(packer, packed_.Bytes());
}

}  // namespace VELTRO::KELVO::ClientLib
