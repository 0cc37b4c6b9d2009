#include "lists/CommandList.h"

#include <limits>
#include <stdexcept>

#include "lists/CommandTextReader.h"

namespace VELTRO::KELVO::ClientLib {

CommandList::CommandList(std::span<const Command> commands) {
  for (const Command& command : commands) Append(command.View());
}

CommandList CommandList::FromString(Text text) {
  CommandList list;
  CommandTextReader::ReadList(text, list);
  return list;
}

void CommandList::Clear() {
  ClearCommands();
  labels_.Clear();
}

std::int32_t CommandList::NextIndex() const {
  if (GetCommandCount() > static_cast<std::size_t>(std::numeric_limits<Int>::max())) {
    throw std::runtime_error("The list is too long for labels.");
  }
  return static_cast<Int>(GetCommandCount());
}

void CommandList::AppendLabel(Text name) {
  labels_.AddDeclaration(name, NextIndex());
}

void CommandList::CheckLoopOpened() const {
  if (loopDepth_ < 1) throw std::runtime_error("No loop opened!");
}

// What is several commands is put together first, so that all of it is appended or nothing.

void CommandList::AppendMarkText(Text text) {
  CommandList characters;
  for (const char character : text) characters.AppendMarkChar(character);
  Append(characters);
}

void CommandList::AppendWobble(const WobbleShape& shape) {
  CommandList wobble;
  wobble.AppendWobbleAmplitude(shape.Amplitude);
  wobble.AppendWobbleFrequency(shape.Frequency);
  wobble.AppendWobblePhase(shape.Phase);
  Append(wobble);
}

void PackArgument(OutputPacket& packet, const ListPiece& piece) {
  msgpack::packer packer(packet);
  packer.pack_array(static_cast<std::uint32_t>(piece.Last - piece.First + 1));
  packer.pack_int32(piece.List.GetListField());
  packet.WriteByReference(piece.List.Bytes(piece.First, piece.Last), piece.List.Share());
}

void CommandList::msgpack_unpack(const msgpack::object& object) {
  if (object.type != msgpack::type::ARRAY || object.via.array.size < 1) throw msgpack::type_error();
  const std::span elements(object.via.array.ptr, object.via.array.size);
  CommandList received;
  received.listField_ = elements[0].as<std::int32_t>();
  received.UnpackCommands(elements.subspan(1));
  *this = std::move(received);
}

void CommandList::TakeFrom(Body::Reader& reader) {
  *this = CommandList();
  const std::uint32_t elements = reader.TakeArray();
  if (elements < 1) throw msgpack::type_error();
  listField_ = reader.Take().as<std::int32_t>();
  TakeCommands(reader, elements - 1);
}

}  // namespace VELTRO::KELVO::ClientLib
