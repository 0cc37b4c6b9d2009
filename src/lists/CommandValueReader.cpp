#include "lists/CommandValueReader.h"

#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

namespace {

[[noreturn]] void Malformed() {
  throw std::runtime_error("Command payload is malformed.");
}

[[noreturn]] void WrongType(std::uint8_t found, std::uint8_t wanted) {
  throw std::runtime_error(
      "Command value is of type " +
      CommandValueType(static_cast<CommandValueType::_enumerated>(found))._to_string() + ", not " +
      CommandValueType(static_cast<CommandValueType::_enumerated>(wanted))._to_string() + ".");
}

}  // namespace

const unsigned char* Command::ArrayValue::Element(std::uint8_t arrayType, std::size_t i) const {
  if (type_ != arrayType) WrongType(type_, arrayType);
  if (i >= GetCount()) throw std::runtime_error("Array index out of range.");
  return elements_.data() + i * ValueTypeBits::ElementWidth(type_);
}

void Command::CommandValueReader::SetNonConstCommand(Command& command) {
  SetNonConstPayload(command.payload_);
}

void Command::CommandValueReader::SetPayload(std::span<const unsigned char> payload) {
  writable_ = nullptr;
  payload_ = payload;
  Reset();
}

void Command::CommandValueReader::SetNonConstPayload(std::span<unsigned char> payload) {
  SetPayload(payload);
  writable_ = payload.data();
}

void Command::CommandValueReader::Reset() {
  position_ = 0;
  if (payload_.empty()) return;
  if (payload_.size() < HeaderBytes || GetUInt24(payload_.data() + 1) != payload_.size() - HeaderBytes)
    Malformed();
  position_ = HeaderBytes;
}

std::uint8_t Command::CommandValueReader::PeekType() const {
  if (!HasNext()) throw std::runtime_error("Command has no further value.");
  return payload_[position_];
}

CommandValueType Command::CommandValueReader::GetType() const {
  return CommandValueType::_from_integral(PeekType());
}

std::size_t Command::CommandValueReader::DataSize() const {
  const CommandValueType type = GetType();
  if (type == CommandValueType::Invalid) Malformed();
  const std::size_t left = payload_.size() - position_ - 1;
  std::size_t size = ValueTypeBits::ElementWidth(type);
  if (ValueTypeBits::IsArray(type)) {
    if (left < ArrayCountBytes) Malformed();
    size = ArrayCountBytes + size * GetUInt24(payload_.data() + position_ + 1);
  }
  if (size > left) Malformed();
  return size;
}

void Command::CommandValueReader::SkipNext() {
  position_ += 1 + DataSize();
}

void Command::CommandValueReader::checkType(std::uint8_t type) const {
  if (PeekType() != type) WrongType(PeekType(), type);
}

void Command::CommandValueReader::checkFlag(std::uint8_t flag) const {
  if ((PeekType() & flag) == 0) {
    throw std::runtime_error("Command value is of type " + GetType()._to_string() + ", not an array.");
  }
}

const unsigned char* Command::CommandValueReader::Take(std::uint8_t type) {
  checkType(type);
  const std::size_t size = DataSize();
  const unsigned char* data = payload_.data() + position_ + 1;
  position_ += 1 + size;
  return data;
}

bool Command::CommandValueReader::AsBool() {
  return *Take(CommandValueType::Bool) != 0;
}

Command::ArrayValue Command::CommandValueReader::AsArray() {
  checkFlag(CommandValueFlags::Array);
  const std::uint8_t type = PeekType();
  const std::size_t size = DataSize();
  const unsigned char* data = payload_.data() + position_ + 1;
  position_ += 1 + size;
  return {type, {data + ArrayCountBytes, size - ArrayCountBytes}};
}

void Command::CommandValueReader::ReplaceInt32(std::int32_t value) {
  if (writable_ == nullptr) throw std::runtime_error("Command is read-only.");
  const std::size_t at = position_;
  Take(CommandValueType::Int32);
  std::memcpy(writable_ + at + 1, &value, sizeof value);
}

}  // namespace VELTRO::KELVO::ClientLib
