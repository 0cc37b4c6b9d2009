#include "lists/CommandTextReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

#include "lists/CommandCodes.h"
#include "lists/Decimals.h"
#include "lists/PackedCommands.h"
#include "lists/ValueTypes.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

// Why a value is refused.
struct Refusal {
  std::string_view Reason;
};

[[noreturn]] void FailCommand() {
  throw CommandTextError("Unable to parse command");
}

[[noreturn]] void FailPoint() {
  throw CommandTextError("Unable to parse Point.");
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

bool IsAtDigit(const char* at, const char* end) {
  return at != end && *at >= '0' && *at <= '9';
}

const char* SkipSign(const char* at, const char* end) {
  return at != end && (*at == '-' || *at == '+') ? at + 1 : at;
}

// Whether a number of the number expression begins at `at`.
bool BeginsNumber(const char* at, const char* end) {
  at = SkipSign(at, end);
  return IsAtDigit(at, end) || (at != end && *at == '.' && IsAtDigit(at + 1, end));
}

// The same of the exponent behind its digits.
bool BeginsExponent(const char* at, const char* end) {
  return at != end && (*at == 'e' || *at == 'E') && IsAtDigit(SkipSign(at + 1, end), end);
}

// What stands for a number that no card takes, and would be lost if it separated others.
bool IsNotFinite(std::string_view word) {
  const auto is = [&](std::string_view name) {
    return std::equal(word.begin(), word.end(), name.begin(), name.end(),
                      [](char a, char b) { return (a | 0x20) == b; });
  };
  return is("nan") || is("inf") || is("infinity");
}

// Moves to the next number of a value, over whatever is ahead of it; false when the value ends before.
[[gnu::noinline, gnu::cold]] bool SkipToNumber(TextCursor& cursor, bool inPoint = false) {
  while (!cursor.AtEnd() && !cursor.IsAt(']')) {
    if (BeginsNumber(cursor.At(), cursor.End())) return true;
    const std::string_view word = cursor.TakeAll(Characters::Letter);
    if (word.empty()) cursor.MoveTo(cursor.At() + 1);
    if (!IsNotFinite(word)) continue;
    if (inPoint) FailPoint();
    throw Refusal{"not a finite number"};
  }
  return false;
}

// Takes a number of the number expression as it usually is, and returns the place behind it; null when there is none, or
// one of another shape.
[[gnu::always_inline]] inline const char* ReadUsual(const char* at, const char* end, double& number) {
  return Decimals::Read(at, end, number);
}
template <class T>
[[gnu::always_inline]] inline const char* ReadUsual(const char* at, const char* end, T& number) {
  const auto [behind, error] = std::from_chars(at, end, number);
  const bool goesOn = behind != end && (*behind == '.' || (*behind | 0x20) == 'e');
  return error != std::errc() || goesOn ? nullptr : behind;
}

// Takes a number of the number expression; false when none is there.
template <class T>
[[gnu::always_inline]] inline bool TakeNumber(TextCursor& cursor, T& number) {
  if (const char* const behind = ReadUsual(cursor.At(), cursor.End(), number)) {
    cursor.MoveTo(behind);
    return true;
  }
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
    if (error != std::errc() || hasFraction || BeginsExponent(at, end)) {
      throw Refusal{"not a whole number that fits"};
    }
  }
  cursor.MoveTo(at);
  return true;
}

// Takes the next number of a value; false when the value ends before. The usual text has it at once.
template <class T>
[[gnu::noinline, gnu::cold]] bool TakeDistantNumber(TextCursor& cursor, T& number, bool inPoint) {
  return SkipToNumber(cursor, inPoint) && TakeNumber(cursor, number);
}

// Of elements whose places do not matter.
struct NoPlaces {
  void Add(const char*, const char*) {}
  void AddUnusual() {}
};

// These take the next element of a value, and tell where its numbers are; false when the value ends before.
template <class T, class Places>
[[gnu::always_inline]] inline bool TakeElement(TextCursor& cursor, T& number, Places& places) {
  const char* const begin = cursor.At();
  if (TakeNumber(cursor, number)) {
    places.Add(begin, cursor.At());
    return true;
  }
  places.AddUnusual();
  return TakeDistantNumber(cursor, number, false);
}

template <std::size_t N, class T, class Places>
[[gnu::always_inline]] inline bool TakeElement(TextCursor& cursor, Point<N, T>& point, Places& places) {
  for (std::size_t i = 0; i < N; ++i) {
    if (i > 0) cursor.SkipBlanksAndCommas();
    const char* const begin = cursor.At();
    if (cursor.Take(CoordinateNames[i])) {
      cursor.SkipBlanks();
      cursor.Take('=');
      cursor.SkipBlanks();
    }
    const char* const number = cursor.At();
    if (TakeNumber(cursor, point.Coordinates[i])) {
      places.Add(number, cursor.At());
      continue;
    }
    places.AddUnusual();
    cursor.MoveTo(begin);
    if (TakeDistantNumber(cursor, point.Coordinates[i], true)) continue;
    if (i == 0) return false;
    FailPoint();
  }
  return true;
}

template <class Places>
bool TakeElement(TextCursor& cursor, bool& value, Places& places) {
  places.AddUnusual();
  const std::string_view name = cursor.TakeName();
  value = name == "True";
  if (!value && name != "False") throw Refusal{"neither True nor False"};
  return true;
}

// For a value that lacks what it must have.
template <class T>
[[noreturn]] void FailMissing() {
  if constexpr (IsPointType<T>) FailPoint();
  throw Refusal{std::is_floating_point_v<T> ? "not a finite number" : "not a whole number that fits"};
}

// Takes what is behind the elements of a value, and its bracket.
void TakeRest(TextCursor& cursor, bool ofNumbers) {
  cursor.SkipBlanks();
  if (cursor.Take(']')) return;
  if (!ofNumbers || SkipToNumber(cursor)) throw Refusal{"more than a value"};
  if (!cursor.Take(']')) FailCommand();
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

class CommandTextReader::Places {
 public:
  void Add(const char* begin, const char* end) { numbers_[count_++] = {begin, end}; }
  // A number that is found only by looking for it, or none.
  void AddUnusual() { isUsual_ = false; }

  bool AreUsual() const { return isUsual_; }
  std::size_t Count() const { return count_; }
  const char* BeginOf(std::size_t i) const { return numbers_[i].first; }
  const char* EndOf(std::size_t i) const { return numbers_[i].second; }

 private:
  std::array<std::pair<const char*, const char*>, TextForm::MostPieces - 1> numbers_;
  std::size_t count_ = 0;
  bool isUsual_ = true;
};

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
  const std::size_t before = list.GetCommandCount();
  CommandTextReader(list).ReadCommands(cursor);
  const std::size_t count = list.GetCommandCount() - before;
  if (enclosed && !cursor.Take(']')) FailCommand();
  cursor.SkipBlanks();
  if (!cursor.AtEnd() || (count == 0 && !empty)) FailCommand();
}

void CommandTextReader::ReadCommands(TextCursor& cursor) {
  for (cursor.SkipBlanksAndCommas(); cursor.IsAt('{'); cursor.SkipBlanksAndCommas()) {
    index_ = index_ ? *index_ + 1 : 0;
    Read(cursor);
  }
}

void CommandTextReader::Read(TextCursor& cursor) {
  if (readAgain_ != nullptr && (this->*readAgain_)(cursor)) return;
  readAgain_ = nullptr;
  const TextCursor begin = cursor;
  begin_ = begin.At();
  try {
    ReadParts(cursor);
  } catch (const std::runtime_error&) {
    // That a text is no command at all comes first, wherever in it the fault is.
    TextCursor shape = begin;
    if (!TakeCommand(shape)) {
      cursor = shape;
      FailCommand();
    }
    throw;
  }
}

void CommandTextReader::ReadParts(TextCursor& cursor) {
  if (!cursor.Take('{')) FailCommand();
  cursor.SkipBlanks();
  cursor.Take('[');
  cursor.SkipBlanks();
  const TextCursor name = cursor;
  const std::int32_t* const code = FindCode(cursor.TakeName());
  if (code == nullptr) {
    cursor = name;
    throw CommandTextError("Unable to parse command code");
  }
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

template <class T>
bool CommandTextReader::ReadAgain(TextCursor& cursor) {
  const char* at = cursor.At();
  const char* const end = cursor.End();
  T value;
  std::size_t piece = 0;
  const auto take = [&](auto& number) {
    if (!form_.Take(piece++, at, end)) return false;
    at = ReadUsual(at, end, number);
    return at != nullptr;
  };
  if constexpr (IsPointType<T>) {
    for (auto& coordinate : value.Coordinates) {
      if (!take(coordinate)) return false;
    }
  } else {
    if (!take(value)) return false;
  }
  if (!form_.Take(piece, at, end)) return false;
  list_.Append(code_, value);
  cursor.MoveTo(at);
  return true;
}

template <class T>
void CommandTextReader::Remember(const char* begin, const Places& numbers, const char* end) {
  const bool isRepeated = codeBefore_ == code_;
  codeBefore_ = code_;
  if (!isRepeated || !numbers.AreUsual()) return;
  const char* behind = begin;
  const auto keep = [&](std::size_t index, const char* to) {
    return form_.Keep(index, {behind, static_cast<std::size_t>(to - behind)});
  };
  for (std::size_t i = 0; i < numbers.Count(); ++i) {
    if (!keep(i, numbers.BeginOf(i))) return;
    behind = numbers.EndOf(i);
  }
  if (keep(numbers.Count(), end)) readAgain_ = &CommandTextReader::ReadAgain<T>;
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
                           Places places;
                           if (!TakeElement(cursor, value, places)) FailMissing<T>();
                           if (size_ == 0 && version_.empty() && TakeEnd(cursor)) {
                             list_.Append(code_, value);
                             appended = true;
                             if constexpr (!std::is_same_v<T, bool>) Remember<T>(begin_, places, cursor.At());
                           } else {
                             PutValue(Extend(ValueSize(value)), value);
                           }
                         }
                       });
    if (appended) return true;
    if (!known) throw Refusal{"of an unknown type"};
    room_.Extend(size_);
    TakeRest(cursor, *type != CommandValueType::Bool);
  } catch (const Refusal& refusal) {
    cursor = begin;
    cursor.TakeUntil(']');
    const std::string_view text(begin.At(), static_cast<std::size_t>(cursor.At() - begin.At()));
    cursor = begin;
    Fail("value " + Shown(acronym) + "[" + Shown(text), refusal.Reason);
  }
  return false;
}

template <class T>
void CommandTextReader::ReadElements(TextCursor& cursor) {
  Extend(1 + ArrayCountBytes);
  const std::size_t begin = size_;
  while (!cursor.IsAt(']') && size_ <= 2 * MaxPacketSize) {
    if (IsPointType<T> && cursor.Take('(')) cursor.SkipBlanks();
    T element{};
    NoPlaces noPlaces;
    if (!TakeElement(cursor, element, noPlaces)) {
      if (size_ == begin) FailMissing<T>();  // there is something, but no number
      break;
    }
    std::memcpy(Extend(sizeof element), &element, sizeof element);
    cursor.SkipBlanksAndCommas();
    if (IsPointType<T> && cursor.Take(')')) cursor.SkipBlanksAndCommas();
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
  throw CommandTextError("Unable to parse " + what.append(": ").append(reason));
}

}  // namespace VELTRO::KELVO::ClientLib
