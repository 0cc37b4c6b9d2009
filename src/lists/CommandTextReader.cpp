#include "lists/CommandTextReader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "lists/CommandCodes.h"
#include "lists/PackedCommands.h"
#include "lists/ValueTypes.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// Why a value is refused.
struct Refusal {
  std::string_view Reason;
};

[[noreturn]] void FailCommand() {
  throw std::runtime_error("Unable to parse command");
}

[[noreturn]] void FailPoint() {
  throw std::runtime_error("Unable to parse Point.");
}

// What an error shows of a text that is refused.
std::string Shown(std::string_view text) {
  constexpr std::size_t Most = 40;
  std::string shown(text.substr(0, Most));
  return text.size() > Most ? shown.append("...") : shown;
}

// Whether a number other than 0 is below 1, however long its exponent is.
bool IsBelowOne(std::string_view number) {
  const std::size_t e = std::min(number.find_first_of("Ee"), number.size());
  const std::string_view digits = number.substr(0, e);
  const std::size_t dot = std::min(digits.find('.'), digits.size());
  const auto first = static_cast<std::int64_t>(digits.find_first_of("123456789"));
  std::int64_t order = static_cast<std::int64_t>(dot) - first;  // of its first digit, with 0 for tenths
  if (order < 0) ++order;
  std::string_view exponent = number.substr(std::min(e + 1, number.size()));
  if (exponent.starts_with('+')) exponent.remove_prefix(1);
  std::int64_t power = 0;
  const auto end = exponent.data() + exponent.size();
  if (std::from_chars(exponent.data(), end, power).ec == std::errc::result_out_of_range) {
    return exponent.starts_with('-');
  }
  return power < 1 - order;
}

template <class T>
T ToNumber(std::string_view text) {
  const std::string_view unsignedText = text.starts_with('+') ? text.substr(1) : text;
  const char* const end = unsignedText.data() + unsignedText.size();
  T number{};
  const auto [at, error] = std::from_chars(unsignedText.data(), end, number);
  if constexpr (std::is_floating_point_v<T>) {
    if (error == std::errc()) return number;
    if (text.empty()) throw Refusal{"not a finite number"};
    if (!IsBelowOne(text)) throw Refusal{"too large"};
    return text.starts_with('-') ? -0.0 : 0.0;
  } else {
    if (error != std::errc() || at != end) throw Refusal{"not a whole number that fits"};
    return number;
  }
}

template <class T>
void TakeElement(TextCursor& cursor, T& number) {
  number = ToNumber<T>(cursor.TakeNumber());
}

template <std::size_t N, class T>
void TakeElement(TextCursor& cursor, Point<N, T>& point) {
  cursor.SkipBlanks();
  for (std::size_t i = 0; i < N; ++i) {
    if (i > 0) cursor.SkipBlanksAndCommas();
    if (cursor.Take(CoordinateNames[i])) {
      cursor.SkipBlanks();
      if (!cursor.Take('=')) FailPoint();
      cursor.SkipBlanks();
    }
    const std::string_view number = cursor.TakeNumber();
    if (number.empty()) FailPoint();
    point.Coordinates[i] = ToNumber<T>(number);
  }
}

template <class T>
T ToScalar(std::string_view text) {
  T value{};
  if constexpr (std::is_same_v<T, bool>) {
    value = text == "True";
    if (!value && text != "False") throw Refusal{"neither True nor False"};
  } else {
    TextCursor cursor(text);
    TakeElement(cursor, value);
    if (!cursor.AtEnd()) throw Refusal{"more than a value"};
  }
  return value;
}

// The elements of an array; more than a command takes are not read.
template <class T>
std::vector<T> ToElements(std::string_view text) {
  std::vector<T> elements;
  for (TextCursor cursor(text); !cursor.AtEnd(); cursor.SkipBlanksAndCommas()) {
    const bool enclosed = IsPointType<T> && cursor.Take('(');
    TakeElement(cursor, elements.emplace_back());
    if (enclosed) {
      cursor.SkipBlanks();
      if (!cursor.Take(')')) throw Refusal{"a parenthesis that is not closed"};
    }
    if (elements.size() * sizeof(T) > 2 * MaxPacketSize) break;
  }
  return elements;
}

}  // namespace

Command CommandTextReader::ReadCommand(std::string_view text) {
  TextCursor cursor(text);
  cursor.SkipBlanks();
  const auto match = TakeCommand(cursor);
  cursor.SkipBlanks();
  if (!match || !cursor.AtEnd()) FailCommand();
  CommandTextReader reader;
  const CommandView command = reader.Read(*match);
  return {command.Code, command.Payload};
}

void CommandTextReader::ReadList(std::string_view text, PackedCommands& list) {
  TextCursor cursor(text);
  cursor.SkipBlanks();
  const bool enclosed = cursor.Take('[');
  cursor.SkipBlanks();
  const bool empty = enclosed && cursor.IsAt(']');
  CommandTextReader reader;
  std::size_t count = 0;
  for (cursor.SkipBlanksAndCommas(); cursor.IsAt('{'); cursor.SkipBlanksAndCommas()) {
    const auto match = TakeCommand(cursor);
    if (!match) FailCommand();
    reader.index_ = count++;
    list.Append(reader.Read(*match));
  }
  if (enclosed && !cursor.Take(']')) FailCommand();
  cursor.SkipBlanks();
  if (!cursor.AtEnd() || (count == 0 && !empty)) FailCommand();
}

CommandView CommandTextReader::Read(const CommandMatch& match) {
  const auto code = CodeOf(match.Mnemonic);
  if (!code) throw std::runtime_error("Unable to parse command code");
  values_.Clear();
  for (TextCursor cursor(match.Values); !cursor.AtEnd();) {
    const ValueMatch value = TakeValue(cursor);
    try {
      ReadValue(value);
    } catch (const Refusal& refusal) {
      Fail("value " + Shown(value.Acronym) + "[ " + Shown(value.Text) + " ]", refusal.Reason);
    }
  }
  if (!match.Version.empty()) ReadVersion(match.Version);
  return {*code, values_.GetPayload()};
}

void CommandTextReader::ReadVersion(std::string_view digits) {
  unsigned char version = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), version).ec != std::errc()) {
    Fail("version " + Shown(digits), "more than 255");
  }
  // A command without values has no payload to bear the usual version.
  if (values_.GetByteCount() > 0 || version != Command::PayloadVersion) values_.setVersion(version);
}

void CommandTextReader::ReadValue(const ValueMatch& value) {
  CommandValueType type = CommandValueType::Invalid;
  Command::TryParseValueType(value.Acronym, type);
  const bool known = VisitValueType(type, [&]<class T>(std::type_identity<T>) {
    if constexpr (!HasText<T>) {
      throw Refusal{"of a type that has no text"};
    } else if constexpr (IsArrayType<T>) {
      const auto elements = ToElements<typename T::value_type>(value.Text);
      values_.Add(T(elements));
    } else {
      values_.Add(ToScalar<T>(value.Text));
    }
  });
  if (!known) throw Refusal{"of an unknown type"};
}

void CommandTextReader::Fail(std::string what, std::string_view reason) const {
  if (index_) what.append(" of command ").append(std::to_string(*index_));
  throw std::runtime_error("Unable to parse " + what.append(": ").append(reason));
}

}  // namespace VELTRO::KELVO::ClientLib
