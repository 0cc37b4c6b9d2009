#include "lists/CommandTextReader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <system_error>

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

// Takes a number of the number expression; false when none is there.
template <class T>
[[gnu::always_inline]] inline bool TakeNumber(TextCursor& cursor, T& number) {
  TextCursor ahead = cursor;
  ahead.Take('+');
  const char* const begin = ahead.At();
  if (begin == cursor.At()) ahead.Take('-');
  const char* end = ahead.End();
  const bool hasDigits = !ahead.TakeAll(Characters::Digit).empty();
  const char* const afterDigits = ahead.At();
  const bool hasFraction = ahead.Take('.') && ahead.IsAtAny(Characters::Digit);
  if (!hasDigits && !hasFraction) return false;
  // A number ends ahead of a point that nothing follows, which from_chars would take.
  if (afterDigits != end && *afterDigits == '.' && !hasFraction) end = afterDigits;
  const auto [at, error] = std::from_chars(begin, end, number);
  if constexpr (std::is_floating_point_v<T>) {
    if (error == std::errc::result_out_of_range) {
      if (!IsBelowOne({begin, at})) throw Refusal{"too large"};
      number = *begin == '-' ? -0.0 : 0.0;
    }
  } else {
    const bool hasExponent = at != end && (*at == 'e' || *at == 'E');
    if (error != std::errc() || hasFraction || hasExponent) throw Refusal{"not a whole number that fits"};
  }
  cursor.MoveTo(at);
  return true;
}

template <class T>
void TakeElement(TextCursor& cursor, T& number) {
  if (TakeNumber(cursor, number)) return;
  throw Refusal{std::is_floating_point_v<T> ? "not a finite number" : "not a whole number that fits"};
}

void TakeElement(TextCursor& cursor, bool& value) {
  const std::string_view name = cursor.TakeName();
  value = name == "True";
  if (!value && name != "False") throw Refusal{"neither True nor False"};
}

template <std::size_t N, class T>
[[gnu::always_inline]] inline void TakeElement(TextCursor& cursor, Point<N, T>& point) {
  for (std::size_t i = 0; i < N; ++i) {
    if (i > 0) cursor.SkipBlanksAndCommas();
    if (cursor.Take(CoordinateNames[i])) {
      cursor.SkipBlanks();
      if (!cursor.Take('=')) FailPoint();
      cursor.SkipBlanks();
    }
    if (!TakeNumber(cursor, point.Coordinates[i])) FailPoint();
  }
}

// Takes the end of a value and of its command; false, with nothing taken, when there is more.
bool TakeEnd(TextCursor& cursor) {
  TextCursor ahead = cursor;
  ahead.SkipBlanks();
  if (!ahead.Take(']')) return false;
  ahead.SkipBlanks();
  ahead.Take(']');
  ahead.SkipBlanks();
  if (!ahead.Take('}')) return false;
  cursor = ahead;
  return true;
}

}  // namespace

Command CommandTextReader::ReadCommand(std::string_view text) {
  TextCursor cursor(text);
  cursor.SkipBlanks();
  PackedCommands commands;
  CommandTextReader(commands).Read(cursor);
  cursor.SkipBlanks();
  if (!cursor.AtEnd()) FailCommand();
  const CommandView command = commands.At(0);
  return {command.Code, command.Payload};
}

void CommandTextReader::ReadList(std::string_view text, PackedCommands& list) {
  TextCursor cursor(text);
  cursor.SkipBlanks();
  const bool enclosed = cursor.Take('[');
  cursor.SkipBlanks();
  const bool empty = enclosed && cursor.IsAt(']');
  list.Reserve(text.size() / 2);  // about what commands of long numbers need
  CommandTextReader reader(list);
  std::size_t count = 0;
  for (cursor.SkipBlanksAndCommas(); cursor.IsAt('{'); cursor.SkipBlanksAndCommas()) {
    reader.index_ = count++;
    reader.Read(cursor);
  }
  if (enclosed && !cursor.Take(']')) FailCommand();
  cursor.SkipBlanks();
  if (!cursor.AtEnd() || (count == 0 && !empty)) FailCommand();
}

void CommandTextReader::Read(TextCursor& cursor) {
  const TextCursor begin = cursor;
  try {
    ReadParts(cursor);
  } catch (const std::runtime_error&) {
    // That a text is no command at all comes first, wherever in it the fault is.
    if (!MatchesCommand(begin)) FailCommand();
    throw;
  }
}

void CommandTextReader::ReadParts(TextCursor& cursor) {
  if (!cursor.Take('{')) FailCommand();
  cursor.SkipBlanks();
  cursor.Take('[');
  cursor.SkipBlanks();
  const std::int32_t* const code = FindCode(cursor.TakeName());
  if (code == nullptr) throw std::runtime_error("Unable to parse command code");
  cursor.SkipBlanks();
  code_ = *code;
  version_ = TakeVersion(cursor);
  size_ = 0;
  room_ = PayloadRoom();
  while (cursor.Take(',')) {
    cursor.SkipBlanks();
    const std::string_view acronym = cursor.TakeName();
    cursor.SkipBlanks();
    if (!cursor.Take('[')) FailCommand();
    if (ReadValue(acronym, cursor)) return;
    cursor.SkipBlanks();
  }
  cursor.Take(']');
  cursor.SkipBlanks();
  if (!cursor.Take('}')) FailCommand();
  if (!version_.empty()) ReadVersion();
  if (size_ > 0) PutUInt24(payload_.data() + 1, size_ - Command::HeaderBytes);
  list_.Append(CommandView{code_, {payload_.data(), size_}});
}

void CommandTextReader::ReadVersion() {
  unsigned char version = 0;
  if (std::from_chars(version_.data(), version_.data() + version_.size(), version).ec != std::errc()) {
    Fail("version " + Shown(version_), "more than 255");
  }
  // A command without values has no payload to bear the usual version.
  if (size_ == 0 && version != Command::PayloadVersion) Extend(0);
  if (size_ > 0) payload_[0] = version;
}

bool CommandTextReader::ReadValue(std::string_view acronym, TextCursor& cursor) {
  const TextCursor begin = cursor;
  cursor.SkipBlanks();
  bool appended = false;
  try {
    const auto* const type = TypesByAcronym.Find(NameKey(acronym));
    const bool known = type != nullptr && VisitValueType(*type, [&]<class T>(std::type_identity<T>) {
                         if constexpr (!HasText<T>) {
                           throw Refusal{"of a type that has no text"};
                         } else if constexpr (IsArrayType<T>) {
                           ReadElements<typename T::value_type>(cursor);
                         } else {
                           T value{};
                           TakeElement(cursor, value);
                           if (size_ == 0 && version_.empty() && TakeEnd(cursor)) {
                             list_.Append(code_, value);
                             appended = true;
                           } else {
                             PutValue(Extend(ValueSize(value)), value);
                           }
                         }
                       });
    if (appended) return true;
    if (!known) throw Refusal{"of an unknown type"};
    room_.Extend(size_);
    cursor.SkipBlanks();
    if (!cursor.Take(']')) throw Refusal{"more than a value"};
  } catch (const Refusal& refusal) {
    cursor = begin;
    cursor.TakeUntil(']');
    const std::string_view text(begin.At(), static_cast<std::size_t>(cursor.At() - begin.At()));
    Fail("value " + Shown(acronym) + "[" + Shown(text), refusal.Reason);
  }
  return false;
}

template <class T>
void CommandTextReader::ReadElements(TextCursor& cursor) {
  Extend(1 + ArrayCountBytes);
  const std::size_t begin = size_;
  while (!cursor.IsAt(']') && size_ <= 2 * MaxPacketSize) {
    const bool enclosed = IsPointType<T> && cursor.Take('(');
    if (enclosed) cursor.SkipBlanks();
    T element{};
    TakeElement(cursor, element);
    if (enclosed) {
      cursor.SkipBlanks();
      if (!cursor.Take(')')) throw Refusal{"a parenthesis that is not closed"};
    }
    std::memcpy(Extend(sizeof element), &element, sizeof element);
    cursor.SkipBlanksAndCommas();
  }
  unsigned char* const head = payload_.data() + begin - 1 - ArrayCountBytes;
  *head = TypeByteOf<std::span<const T>>;
  PutUInt24(head + 1, (size_ - begin) / sizeof(T));
}

unsigned char* CommandTextReader::Extend(std::size_t count) {
  const std::size_t begin = size_ == 0 ? Command::HeaderBytes : size_;
  size_ = begin + count;
  if (size_ > payload_.size()) payload_.resize(std::max(2 * size_, std::size_t{256}));
  if (begin == Command::HeaderBytes) payload_[0] = Command::PayloadVersion;
  return payload_.data() + begin;
}

void CommandTextReader::Fail(std::string what, std::string_view reason) const {
  if (index_) what.append(" of command ").append(std::to_string(*index_));
  throw std::runtime_error("Unable to parse " + what.append(": ").append(reason));
}

}  // namespace VELTRO::KELVO::ClientLib
