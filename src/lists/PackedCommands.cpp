#include "lists/PackedCommands.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

#include "lists/CommandTextWriter.h"

namespace VELTRO::KELVO::ClientLib {

CommandView PackedCommands::ReadAt(std::size_t& place) const {
  const unsigned char* const begin = packed_.Bytes().data() + place;
  CommandView view;
  std::size_t size = 0;
  const unsigned char* const payload = Envelope::Get(begin, view.Code, size);
  view.Payload = {payload, size};
  place += static_cast<std::size_t>(payload - begin) + size;
  return view;
}

std::size_t PackedCommands::PlaceOf(std::size_t i) const {
  if (i > count_) throw std::out_of_range("Command index out of range.");
  if (i == count_) return packed_.Size();
  std::size_t place = notes_[i / Stride].Place;
  for (std::size_t steps = i % Stride; steps > 0; --steps) ReadAt(place);
  return place;
}

CommandView PackedCommands::At(std::size_t i) const {
  std::size_t place = PlaceOf(i);
  if (i == count_) throw std::out_of_range("Command index out of range.");
  return ReadAt(place);
}

std::span<unsigned char> PackedCommands::WritablePayload(std::size_t i) {
  const auto payload = At(i).Payload;
  const auto place = static_cast<std::size_t>(payload.data() - packed_.Bytes().data());
  return packed_.WritableBytes().subspan(place, payload.size());
}

void PackedCommands::ClearCommands() {
  packed_.Clear();
  notes_ = {};
  count_ = 0;
  counted_ = 0;
  tooLarge_.reset();
}

void PackedCommands::Append(const CommandView& command) {
  // A command of this very list moves when the block grows for its copy.
  const auto own = packed_.Bytes();
  const std::less<const unsigned char*> before;
  const unsigned char* payload = command.Payload.data();
  const bool isOwn = !before(payload, own.data()) && before(payload, own.data() + own.size());
  const auto place = isOwn ? payload - own.data() : 0;
  unsigned char* at = AppendEnvelope(command.Code, command.Payload.size());
  if (isOwn) payload = packed_.Bytes().data() + place;
  if (!command.Payload.empty()) std::memcpy(at, payload, command.Payload.size());
}

void PackedCommands::Append(const PackedCommands& other) {
  const std::size_t bytes = other.packed_.Size();
  if (bytes == 0) return;
  // By leaps: short runs appended to a long one would else copy its notes each time.
  const std::size_t notes = (count_ + other.count_) / Stride + 1;
  if (notes > notes_.capacity()) notes_.reserve(std::max(notes, 2 * notes_.capacity()));
  std::size_t place = packed_.Size();
  unsigned char* at = packed_.Extend(bytes);
  // Looked up only now: the other list may be this one, which has just moved.
  std::memcpy(at, other.packed_.Bytes().data(), bytes);
  while (place < packed_.Size()) {
    NotePlace(place);
    Count(ReadAt(place).Payload.size());
  }
}

void PackedCommands::UnpackCommands(std::span<const msgpack::object> commands) {
  for (const msgpack::object& pair : commands) UnpackCommand(pair);
}

void PackedCommands::TakeCommands(Body::Reader& reader, std::uint32_t count) {
  while (count-- > 0) UnpackCommand(reader.Take());
}

void PackedCommands::UnpackCommand(const msgpack::object& pair) {
  if (pair.type != msgpack::type::ARRAY || pair.via.array.size != 2) throw msgpack::type_error();
  const msgpack::object& payload = pair.via.array.ptr[1];
  if (payload.type != msgpack::type::BIN) throw msgpack::type_error();
  Append(CommandView{pair.via.array.ptr[0].as<std::int32_t>(),
                     {reinterpret_cast<const unsigned char*>(payload.via.bin.ptr), payload.via.bin.size}});
}

std::span<const unsigned char> PackedCommands::Bytes(std::size_t first, std::size_t last) const {
  const std::size_t begin = PlaceOf(first);
  return packed_.Bytes().subspan(begin, PlaceOf(last) - begin);
}

void PackedCommands::CheckEachFits() const {
  if (tooLarge_) {
    throw std::runtime_error("Command " + std::to_string(*tooLarge_) + " is too large to be uploaded.");
  }
}

std::size_t PackedCommands::FindChunkEnd(std::size_t first) const {
  if (first >= count_) return count_;
  // From the note before `first`, then from the last note up to which everything fits.
  const std::size_t before = first / Stride;
  std::size_t counted = notes_[before].Counted;
  std::size_t place = notes_[before].Place;
  for (std::size_t i = before * Stride; i < first; ++i) {
    counted += ReadAt(place).Payload.size() + CountedBesidesPayload;
  }
  const std::size_t limit = counted + MaxPacketSize;
  const auto beyond =
      std::upper_bound(notes_.begin(), notes_.end(), limit,
                       [](std::size_t value, const Note& note) { return value < note.Counted; });
  const auto last = static_cast<std::size_t>(beyond - notes_.begin()) - 1;
  std::size_t end = first;
  if (last > before) {
    end = last * Stride;
    counted = notes_[last].Counted;
    place = notes_[last].Place;
  }
  for (; end < count_; ++end) {
    counted += ReadAt(place).Payload.size() + CountedBesidesPayload;
    if (counted > limit) break;
  }
  return end;
}

std::string PackedCommands::ToString(std::size_t first, std::size_t last) const {
  std::size_t place = PlaceOf(first);
  const std::size_t end = PlaceOf(last);
  std::string text;
  CommandTextWriter writer(text, end - place);
  writer.Put("[ ");
  for (const std::size_t begin = place; place < end;) {
    if (place > begin) writer.Put(", ");
    writer.PutCommand(ReadAt(place));
  }
  writer.Put(" ]");
  writer.Flush();
  return text;
}

}  // namespace VELTRO::KELVO::ClientLib
