#include "lists/CommandList.h"

#include <functional>
#include <stdexcept>

#include "lists/CommandCodes.h"
#include "lists/CommandTextReader.h"
#include "lists/CommandTextWriter.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// MessagePack's heads, as they stand in a packed list. Multi-byte numbers are big-endian.
constexpr unsigned char PairHead = 0x92;  // an array of two: code and payload

unsigned char* PutHead(unsigned char* at, unsigned char head, std::uint32_t number, unsigned bytes) {
  *at++ = head;
  while (bytes-- > 0) *at++ = static_cast<unsigned char>(number >> (8 * bytes));
  return at;
}

// An integer in its shortest form.
unsigned char* PutInteger(unsigned char* at, std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  if (value >= 0) {
    if (value < 0x80) return PutHead(at, static_cast<unsigned char>(value), 0, 0);
    if (value <= 0xFF) return PutHead(at, 0xCC, bits, 1);
    if (value <= 0xFFFF) return PutHead(at, 0xCD, bits, 2);
    return PutHead(at, 0xCE, bits, 4);
  }
  if (value >= -0x20) return PutHead(at, static_cast<unsigned char>(value), 0, 0);
  if (value >= -0x80) return PutHead(at, 0xD0, bits, 1);
  if (value >= -0x8000) return PutHead(at, 0xD1, bits, 2);
  return PutHead(at, 0xD2, bits, 4);
}

unsigned char* PutBinHead(unsigned char* at, std::size_t size) {
  const auto number = static_cast<std::uint32_t>(size);
  if (size <= 0xFF) return PutHead(at, 0xC4, number, 1);
  if (size <= 0xFFFF) return PutHead(at, 0xC5, number, 2);
  return PutHead(at, 0xC6, number, 4);
}

std::uint32_t GetNumber(const unsigned char* at, unsigned bytes) {
  std::uint32_t number = 0;
  while (bytes-- > 0) number = number << 8 | *at++;
  return number;
}

std::int32_t GetInteger(const unsigned char*& at) {
  const unsigned char head = *at++;
  if (head < 0x80 || head >= 0xE0) return static_cast<std::int8_t>(head);
  const unsigned bytes = 1U << ((head - (head >= 0xD0 ? 0xD0U : 0xCCU)));
  const std::uint32_t number = GetNumber(at, bytes);
  at += bytes;
  if (head == 0xD0) return static_cast<std::int8_t>(number);
  if (head == 0xD1) return static_cast<std::int16_t>(number);
  return static_cast<std::int32_t>(number);
}

}  // namespace

CommandList::CommandList(std::span<const Command> commands) {
  for (const Command& command : commands) Append(command.View());
}

std::size_t CommandList::PutEnvelope(unsigned char* at, std::int32_t code, std::size_t payloadSize) {
  unsigned char* const begin = at;
  *at++ = PairHead;
  at = PutBinHead(PutInteger(at, code), payloadSize);
  return static_cast<std::size_t>(at - begin);
}

unsigned char* CommandList::AppendEnvelope(std::int32_t code, std::size_t payloadSize) {
  unsigned char envelope[MostEnvelopeBytes];
  const std::size_t size = PutEnvelope(envelope, code, payloadSize);
  // Noted before the block grows: should that fail, the note is right for the next command, too.
  if (places_.size() * Stride == count_) places_.push_back(packed_.Size());
  unsigned char* at = packed_.Extend(size + payloadSize);
  std::memcpy(at, envelope, size);
  ++count_;
  return at + size;
}

CommandView CommandList::ReadAt(std::size_t& place) const {
  const unsigned char* const begin = packed_.Bytes().data() + place;
  const unsigned char* at = begin + 1;
  CommandView view;
  view.Code = GetInteger(at);
  const unsigned sizeBytes = 1U << (*at++ - 0xC4);
  const std::size_t size = GetNumber(at, sizeBytes);
  at += sizeBytes;
  view.Payload = {at, size};
  place += static_cast<std::size_t>(at - begin) + size;
  return view;
}

std::size_t CommandList::PlaceOf(std::size_t i) const {
  if (i > count_) throw std::out_of_range("Command index out of range.");
  if (i == count_) return packed_.Size();
  std::size_t place = places_[i / Stride];
  for (std::size_t steps = i % Stride; steps > 0; --steps) ReadAt(place);
  return place;
}

CommandView CommandList::At(std::size_t i) const {
  std::size_t place = PlaceOf(i);
  if (i == count_) throw std::out_of_range("Command index out of range.");
  return ReadAt(place);
}

void CommandList::Clear() {
  packed_.Clear();
  places_ = {};
  count_ = 0;
}

void CommandList::Append(const CommandView& command) {
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

void CommandList::Append(const CommandList& other) {
  const std::size_t bytes = other.packed_.Size();
  if (bytes == 0) return;
  places_.reserve((count_ + other.count_) / Stride + 1);
  std::size_t place = packed_.Size();
  unsigned char* at = packed_.Extend(bytes);
  // Looked up only now: the other list may be this one, which has just moved.
  std::memcpy(at, other.packed_.Bytes().data(), bytes);
  while (place < packed_.Size()) {
    if (places_.size() * Stride == count_) places_.push_back(place);
    ReadAt(place);
    ++count_;
  }
}

void CommandList::AppendJumpAbs(Point2D p) {
  Append(CommandCode::JUMP_ABS, p);
}
void CommandList::AppendJumpAbs(Point3D p) {
  Append(CommandCode::JUMP_3D_ABS, p);
}
void CommandList::AppendJumpRel(Point2D p) {
  Append(CommandCode::JUMP_REL, p);
}
void CommandList::AppendJumpRel(Point3D p) {
  Append(CommandCode::JUMP_3D_REL, p);
}
void CommandList::AppendMarkAbs(Point2D p) {
  Append(CommandCode::MARK_ABS, p);
}
void CommandList::AppendMarkAbs(Point3D p) {
  Append(CommandCode::MARK_3D_ABS, p);
}
void CommandList::AppendMarkRel(Point2D p) {
  Append(CommandCode::MARK_REL, p);
}
void CommandList::AppendMarkRel(Point3D p) {
  Append(CommandCode::MARK_3D_REL, p);
}
void CommandList::AppendJumpSpeed(double speed) {
  Append(CommandCode::JUMP_SPEED, speed);
}
void CommandList::AppendMarkSpeed(double speed) {
  Append(CommandCode::MARK_SPEED, speed);
}
void CommandList::AppendJumpDelay(double delay) {
  Append(CommandCode::JUMP_DELAY, delay);
}
void CommandList::AppendMarkDelay(double delay) {
  Append(CommandCode::MARK_DELAY, delay);
}
void CommandList::AppendPolyDelay(double delay) {
  Append(CommandCode::POLY_DELAY, delay);
}
void CommandList::AppendLaserOnDelay(double delay) {
  Append(CommandCode::LON_DELAY, delay);
}
void CommandList::AppendLaserOffDelay(double delay) {
  Append(CommandCode::LOFF_DELAY, delay);
}
void CommandList::AppendSleep(double duration) {
  Append(CommandCode::SLEEP, duration);
}
void CommandList::AppendLaserOn() {
  Append(CommandCode::LASER_ON);
}
void CommandList::AppendLaserOff() {
  Append(CommandCode::LASER_OFF);
}
void CommandList::AppendProgress(std::int32_t value) {
  Append(CommandCode::PROGRESS_ID, value);
}

void CommandList::AppendLoopStart(std::int32_t count) {
  ++loopDepth_;
  Append(CommandCode2::LOOP_START, count, loopDepth_);
}

void CommandList::AppendLoopEnd() {
  Append(CommandCode2::LOOP_END, loopDepth_);
  --loopDepth_;
}

void CommandList::AppendLoopBreak() {
  if (loopDepth_ < 1) throw std::runtime_error("No loop opened!");
  Append(CommandCode2::LOOP_BREAK);
}

void CommandList::SetRange(std::size_t first, std::size_t last) {
  first_ = first;
  last_ = last;
}

std::size_t CommandList::FindChunkEnd(std::size_t first) const {
  constexpr std::size_t CountedBesidesPayload = 4;
  std::size_t sum = 0;
  std::size_t end = first;
  for (std::size_t place = PlaceOf(first); end < count_; ++end) {
    sum += ReadAt(place).Payload.size() + CountedBesidesPayload;
    if (sum > MaxPacketSize) break;
  }
  if (end == first && first < count_) {
    throw std::runtime_error("Command " + std::to_string(first) + " is too large to be uploaded.");
  }
  return end;
}

std::string CommandList::ToString() const {
  return TextOf(0, packed_.Size());
}

CommandList CommandList::FromString(std::string_view text) {
  CommandList list;
  CommandTextReader::ReadList(text, list);
  return list;
}

std::string CommandList::RangeToString() const {
  return last_ == 0 ? ToString() : TextOf(PlaceOf(first_), PlaceOf(last_));
}

std::string CommandList::TextOf(std::size_t place, std::size_t end) const {
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

void CommandList::msgpack_unpack(const msgpack::object& object) {
  if (object.type != msgpack::type::ARRAY || object.via.array.size < 1) throw msgpack::type_error();
  const std::span elements(object.via.array.ptr, object.via.array.size);
  CommandList received;
  received.listField_ = elements[0].as<std::int32_t>();
  for (const msgpack::object& pair : elements.subspan(1)) {
    if (pair.type != msgpack::type::ARRAY || pair.via.array.size != 2) throw msgpack::type_error();
    const msgpack::object& payload = pair.via.array.ptr[1];
    if (payload.type != msgpack::type::BIN) throw msgpack::type_error();
    received.Append(
        CommandView{pair.via.array.ptr[0].as<std::int32_t>(),
                    {reinterpret_cast<const unsigned char*>(payload.via.bin.ptr), payload.via.bin.size}});
  }
  *this = std::move(received);
}

}  // namespace VELTRO::KELVO::ClientLib
