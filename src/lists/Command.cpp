#include "lists/Command.h"

#include <stdexcept>

#include "lists/CommandTextReader.h"
#include "lists/CommandValueReader.h"
#include "lists/PackedCommands.h"
#include "lists/ValueTypes.h"

namespace VELTRO::KELVO::ClientLib {

void PayloadRoom::ThrowTooLarge() {
  // The blank before the full stop belongs to the text.
  throw std::runtime_error("Command exceeds the maximum allowed command size of " +
                           std::to_string(MaxPacketSize) + " . Please split into several commands.");
}

Command::Command(std::int32_t code, unsigned long reserve) : code_(code) {
  payload_.reserve(HeaderBytes + reserve);
  payload_ = {PayloadVersion, 0, 0, 0};
  room_ = PayloadRoom(HeaderBytes + reserve);
}

Command::Command(std::int32_t code, std::span<const unsigned char> payload)
    : code_(code), payload_(payload.begin(), payload.end()), room_(payload.size()) {}

void Command::setVersion(unsigned char version) {
  if (payload_.empty()) payload_ = {PayloadVersion, 0, 0, 0};
  payload_[0] = version;
}

std::size_t Command::GetValueCount() const {
  CommandValueReader reader(payload_);
  std::size_t count = 0;
  for (; reader.HasNext(); ++count) reader.SkipNext();
  return count;
}

unsigned char* Command::Extend(std::size_t count) {
  if (!payload_.empty() && payload_.size() < HeaderBytes) {
    throw std::runtime_error("Command payload is malformed.");
  }
  const std::size_t begin = payload_.empty() ? HeaderBytes : payload_.size();
  const std::size_t end = begin + count;
  room_.Extend(end);
  if (payload_.empty()) payload_ = {PayloadVersion, 0, 0, 0};
  payload_.resize(end);
  PutUInt24(payload_.data() + 1, end - HeaderBytes);
  return payload_.data() + begin;
}

void Command::Clear() {
  payload_.clear();
  room_ = PayloadRoom();
}

bool Command::TryParseValueType(std::string_view text, CommandValueType& type) {
  const auto* found = TypesByAcronym.Find(NameKey(text));
  if (found != nullptr) type = *found;
  return found != nullptr;
}

Command Command::FromMatch(std::string_view commandText) {
  return CommandTextReader::ReadCommand(commandText);
}

void Command::AppendCommandsFromString(std::string_view text, PackedCommands& list) {
  PackedCommands read;
  CommandTextReader::ReadList(text, read);
  list.Append(read);
}

}  // namespace VELTRO::KELVO::ClientLib
