#include "lists/CommandTextWriter.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <stdexcept>

#include "lists/CommandCodes.h"
#include "lists/CommandValueReader.h"
#include "lists/Decimals.h"
#include "lists/ValueTypes.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

constexpr std::string_view Unsupported = ", Unsupported value";

template <class T>
T Load(const unsigned char* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// The text before a value of the type.
template <class T>
constexpr auto OpeningOf = [] {
  constexpr std::string_view acronym = AcronymOf(TypeByteOf<T>);
  std::array<char, acronym.size() + 4> opening{',', ' '};
  std::copy(acronym.begin(), acronym.end(), opening.begin() + 2);
  opening[acronym.size() + 2] = '[';
  opening[acronym.size() + 3] = ' ';
  return opening;
}();

}  // namespace

void CommandTextWriter::Flush() {
  const auto count = static_cast<std::size_t>(at_ - piece_.data());
  const std::size_t size = text_.size() + count;
  if (size > text_.capacity() && doneBytes_ < expectedBytes_ && doneBytes_ > 0) {
    // So much as if all were like what is done, but not from little to very much.
    constexpr std::size_t MostGrowth = 16;
    const double whole = static_cast<double>(size) * static_cast<double>(expectedBytes_) /
                         static_cast<double>(doneBytes_) * 1.02;
    text_.reserve(std::max(size, std::min(static_cast<std::size_t>(whole), size * MostGrowth)));
  }
  text_.append(piece_.data(), count);
  at_ = piece_.data();
}

void CommandTextWriter::MakeRoom() {
  if (static_cast<std::size_t>(piece_.data() + piece_.size() - at_) < MostAtOnce) Flush();
}

void CommandTextWriter::PutShort(std::string_view text) {
  std::memcpy(at_, text.data(), text.size());
  at_ += text.size();
}

void CommandTextWriter::Put(std::string_view text) {
  MakeRoom();
  PutShort(text);
}

template <class T>
void CommandTextWriter::PutNumber(T number) {
  if constexpr (std::is_same_v<T, double>) {
    at_ = Decimals::Write(at_, number);
  } else {
    at_ = std::to_chars(at_, piece_.data() + piece_.size(), number).ptr;
  }
}

template <class T>
void CommandTextWriter::PutElement(const unsigned char* bytes) {
  if constexpr (std::is_same_v<T, bool>) {
    PutShort(*bytes != 0 ? "True" : "False");
  } else if constexpr (IsPointType<T>) {
    for (std::size_t i = 0; i < T::Dimensions; ++i) {
      if (i > 0) *at_++ = ' ';
      *at_++ = CoordinateNames[i];
      *at_++ = '=';
      PutNumber(Load<T>(bytes).Coordinates[i]);
    }
  } else {
    PutNumber(Load<T>(bytes));
  }
}

template <class T>
void CommandTextWriter::PutElementsOf(std::span<const unsigned char> elements) {
  for (std::size_t i = 0; i < elements.size(); i += sizeof(T)) {
    MakeRoom();
    if constexpr (IsPointType<T>) PutShort("( ");
    PutElement<T>(elements.data() + i);
    PutShort(IsPointType<T> ? " ) " : " ");
  }
}

void CommandTextWriter::PutElements(std::uint8_t arrayType, std::span<const unsigned char> elements) {
  bool shown = false;
  VisitValueType(arrayType, [&]<class T>(std::type_identity<T>) {
    if constexpr (IsArrayType<T> && HasText<T>) {
      PutElementsOf<typename T::value_type>(elements);
      shown = true;
    }
  });
  if (!shown) throw std::runtime_error("Illegal array value type!");
}

template <class T>
bool CommandTextWriter::PutValueOf(std::span<const unsigned char>& left) {
  std::span<const unsigned char> data = left.subspan(1);
  std::size_t size = sizeof(T);
  if constexpr (IsArrayType<T>) {
    if (data.size() < ArrayCountBytes) return false;
    size = GetUInt24(data.data()) * sizeof(typename T::value_type);
    data = data.subspan(ArrayCountBytes);
  }
  if (data.size() < size) return false;
  left = data.subspan(size);
  MakeRoom();
  if constexpr (HasText<T>) {
    PutShort({OpeningOf<T>.data(), OpeningOf<T>.size()});
    if constexpr (IsArrayType<T>) {
      PutElementsOf<typename T::value_type>(data.first(size));
      MakeRoom();
    } else {
      PutElement<T>(data.data());
    }
    PutShort(" ]");
  } else {
    PutShort(Unsupported);
  }
  return true;
}

bool CommandTextWriter::PutValue(std::span<const unsigned char>& left) {
  bool put = false;
  VisitValueType(left[0], [&]<class T>(std::type_identity<T>) { put = PutValueOf<T>(left); });
  return put;
}

bool CommandTextWriter::PutPayload(std::span<const unsigned char> payload) {
  if (payload.empty()) return true;
  if (payload.size() < Command::HeaderBytes) return false;
  std::span<const unsigned char> left = payload.subspan(Command::HeaderBytes);
  if (GetUInt24(payload.data() + 1) != left.size()) return false;
  if (payload[0] != Command::PayloadVersion) {
    PutShort(", V");
    PutNumber(payload[0]);
  }
  while (!left.empty()) {
    if (!PutValue(left)) return false;
  }
  return true;
}

bool CommandTextWriter::HasForm(const CommandView& command) const {
  return command.Code == form_.Code && command.Payload.size() == form_.PayloadSize &&
         std::equal(form_.Head.begin(), form_.Head.end(), command.Payload.begin());
}

void CommandTextWriter::KeepForm(const CommandView& command) {
  const bool isRepeated = command.Code == form_.Code;
  form_.Code = command.Code;
  form_.PayloadSize = Form::None;
  const std::span<const unsigned char> payload = command.Payload;
  const auto mnemonic = MnemonicOf(command.Code);
  if (!isRepeated || !mnemonic || payload.size() <= form_.Head.size()) return;
  const std::size_t size = payload.size() - form_.Head.size();
  if (payload[0] != Command::PayloadVersion || GetUInt24(payload.data() + 1) != size + 1) return;
  VisitValueType(payload[Command::HeaderBytes], [&]<class T>(std::type_identity<T>) {
    if constexpr (!IsArrayType<T> && HasText<T>) {
      const std::string text = "{ " + std::string(*mnemonic).append(OpeningOf<T>.data(), OpeningOf<T>.size());
      if (size != sizeof(T) || text.size() > Form::MostText) return;
      std::copy_n(payload.begin(), form_.Head.size(), form_.Head.begin());
      form_.TextSize = text.copy(form_.Text.data(), text.size());
      form_.PutValue = &CommandTextWriter::PutElement<T>;
      form_.PayloadSize = payload.size();
    }
  });
}

void CommandTextWriter::PutCommand(const CommandView& command) {
  MakeRoom();
  if (HasForm(command)) {
    std::memcpy(at_, form_.Text.data(), Form::MostText);
    at_ += form_.TextSize;
    (this->*form_.PutValue)(command.Payload.data() + form_.Head.size());
    PutShort(" ] }");
  } else {
    KeepForm(command);
    PutAnew(command);
  }
  // About what a command takes besides its payload.
  doneBytes_ += command.Payload.size() + 8;
}

void CommandTextWriter::PutAnew(const CommandView& command) {
  PutShort("{ ");
  if (const auto mnemonic = MnemonicOf(command.Code)) {
    PutShort(*mnemonic);
  } else {
    PutNumber(command.Code);  // readable, though no reader takes it
  }
  if (!PutPayload(command.Payload)) Put(Unsupported);
  Put(" }");
}

std::string Command::ArrayValue::ToString() const {
  std::string text;
  CommandTextWriter writer(text);
  writer.PutElements(type_, elements_);
  writer.Flush();
  return text;
}

std::string CommandView::ToString() const {
  std::string text;
  CommandTextWriter writer(text);
  writer.PutCommand(*this);
  writer.Flush();
  return text;
}

}  // namespace VELTRO::KELVO::ClientLib
