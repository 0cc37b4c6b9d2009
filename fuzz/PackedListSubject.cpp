// CommandFuzzer: lists from the wire are converted and packed again.
#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "CommandSubjects.h"
#include "rpc/Body.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using Views = std::span<const CommandView>;

// The commands as the MessagePack library itself writes them.
msgpack::sbuffer PackPlainly(std::int32_t listField, Views commands) {
  msgpack::sbuffer buffer;
  msgpack::packer packer(buffer);
  packer.pack_array(static_cast<std::uint32_t>(commands.size() + 1));
  packer.pack_int32(listField);
  for (const CommandView& command : commands) {
    packer.pack_array(2);
    packer.pack_int32(command.Code);
    packer.pack_bin(static_cast<std::uint32_t>(command.Payload.size()));
    packer.pack_bin_body(reinterpret_cast<const char*>(command.Payload.data()),
                         static_cast<std::uint32_t>(command.Payload.size()));
  }
  return buffer;
}

bool HoldsExactly(const CommandList& list, Views commands) {
  std::size_t i = 0;
  bool same = true;
  list.ForEach([&](const CommandView& command) {
    same = same && i < commands.size() && SameCommand(command, commands[i]);
    ++i;
  });
  return same && i == commands.size() && i == list.GetCommandCount();
}

void CheckPacked(const CommandList& list, std::size_t first, std::size_t last, Views commands) {
  OutputPacket packet = OutputPacket::AllocateNotification();
  PackArgument(packet, ListPiece{list, first, last});
  std::string packed;
  for (const auto piece : packet.CloseInPieces()) packed.append(piece.begin(), piece.end());
  packed.erase(0, Packet::FullHeaderLen);
  const msgpack::sbuffer plain = PackPlainly(list.GetListField(), commands);
  Require(packed.size() == plain.size() && std::memcmp(packed.data(), plain.data(), plain.size()) == 0,
          "a list travels as the MessagePack library would write it");
  std::size_t used = 0;
  const auto handle = Body::Unpack({packed.data(), packed.size()}, used, Body::UsualDepth);
  const auto reread = handle.get().as<CommandList>();
  Require(used == packed.size() && HoldsExactly(reread, commands), "a list's commands are read back");
  Require(reread.GetListField() == list.GetListField(), "the list field is read back");
}

// The end of the upload that begins at `first`, added up plainly.
std::size_t PlainChunkEnd(Views commands, std::size_t first) {
  std::size_t sum = 0;
  std::size_t end = first;
  for (; end < commands.size(); ++end) {
    sum += commands[end].Payload.size() + 4;
    if (sum > MaxPacketSize) break;
  }
  return end;
}

// Texts of long arrays take longer than all else together.
constexpr std::size_t MostTextBytes = 65536;

std::string TextOf(Views commands) {
  std::string text = "[ ";
  for (const CommandView& command : commands) {
    text.append(text.size() > 2 ? ", " : "").append(command.ToString());
  }
  return text + " ]";
}

}  // namespace

void CheckList(const CommandList& list, std::size_t first, std::size_t last) {
  std::vector<CommandView> commands;
  std::size_t bytes = 0;
  list.ForEach([&](const CommandView& command) {
    Require(SameCommand(command, list.At(commands.size())), "both ways to a command lead to the same");
    commands.push_back(command);
    bytes += command.Payload.size();
  });
  const std::size_t count = commands.size();
  Require(list.GetCommandCount() == count, "every command is visited");
  if (bytes <= MostTextBytes) {
    Require(list.ToString() == TextOf(commands), "a list's text is its commands' texts");
  }
  bool behind = false;
  try {
    list.At(count);
  } catch (const std::out_of_range&) {
    behind = true;
  }
  Require(behind, "no command lies behind the last");
  first = std::min(first, count);
  last = std::clamp(last, first, count);
  CheckPacked(list, first, last, Views(commands).subspan(first, last - first));
  for (std::size_t start = 0; start < count;) {
    const std::size_t expected = PlainChunkEnd(commands, start);
    std::size_t end = start;
    Require(Succeeds([&] { end = list.FindChunkEnd(start); }) == (expected > start) && end == expected,
            "a chunk is as long as it may be");
    start = std::max(end, start + 1);
  }
}

void LookAtList(Cursor input) {
  const std::size_t first = input.Next<std::uint8_t>();
  const std::size_t last = input.Next<std::uint8_t>();
  const auto bytes = input.Rest();
  CommandList list;
  const std::span body(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  std::size_t used = 0;
  msgpack::object_handle handle;
  if (!Succeeds([&] { handle = Body::Unpack(body, used, Body::UsualDepth); })) return;
  const msgpack::object& object = handle.get();
  try {
    object.convert(list);
  } catch (const msgpack::type_error&) {
    Require(list.GetCommandCount() == 0 && list.GetListField() == -1, "a refused list leaves no trace");
    return;
  }
  Require(list.GetCommandCount() + 1 == object.via.array.size, "a received list has all its commands");
  for (std::size_t i = 0; i < list.GetCommandCount(); ++i) {
    const auto& pair = object.via.array.ptr[i + 1].via.array;
    const auto* payload = reinterpret_cast<const unsigned char*>(pair.ptr[1].via.bin.ptr);
    Require(SameCommand(list.At(i), {pair.ptr[0].as<std::int32_t>(), {payload, pair.ptr[1].via.bin.size}}),
            "a received command is what was sent");
  }
  CheckList(list, first, last);
}

}  // namespace VELTRO::KELVO::Fuzz
