// CommandFuzzer: payloads from anywhere are walked and rebuilt.
#include <algorithm>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

#include "CommandSubjects.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using Reader = Command::CommandValueReader;

template <class... T>
struct Types {};

using ScalarTypes =
    Types<bool, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t, std::int64_t,
          std::uint64_t, double, Point2D, Point3D, Point4D, Point2DInt, Point3DInt, Point4DInt>;
using ElementTypes =
    Types<std::uint8_t, std::uint16_t, double, Point2D, Point3D, Point4D, Point2DInt, Point3DInt, Point4DInt>;

constexpr std::size_t ThoroughValues = 8;

// A payload while it is walked, and what Add makes of the values read from it.
struct Walk {
  explicit Walk(const Command& command)
      : Expected(command.GetPayload().begin(), command.GetPayload().end()),
        Rebuilt(command.GetCode()),
        Next(command.GetPayload()) {}

  std::vector<unsigned char> Expected;
  Command Rebuilt;
  Reader Next;
  // Whether to try what must fail, too. An error takes far longer than a value.
  bool Thorough = true;
};

// Reads the next value as a T if it is one.
template <class T>
bool TakeScalar(Walk& walk) {
  if (!walk.Thorough && walk.Next.PeekType() != TypeByteOf<T>) return false;
  Reader after = walk.Next;
  T value{};
  const bool taken = Succeeds([&] { value = after.template As<T>(); });
  if (!taken) return false;
  Require(walk.Next.PeekType() == TypeByteOf<T>, "a value is read only as what it is");
  walk.Rebuilt.Add(value);
  walk.Next = after;
  return true;
}

// Any byte but 0 is true, and is written as 1.
template <>
bool TakeScalar<bool>(Walk& walk) {
  if (!walk.Thorough && walk.Next.PeekType() != CommandValueType::Bool) return false;
  bool value = false;
  Reader after = walk.Next;
  if (!Succeeds([&] { value = after.AsBool(); })) return false;
  Require(walk.Next.PeekType() == CommandValueType::Bool, "a value is read only as what it is");
  walk.Rebuilt.Add(value);
  unsigned char& byte = walk.Expected.at(walk.Rebuilt.GetByteCount() - 1);
  Require(value == (byte != 0), "a truth value is what its byte says");
  byte = value ? 1 : 0;
  walk.Next = after;
  return true;
}

template <class T>
bool TakeElements(const Command::ArrayValue& array, Walk& walk) {
  const bool ofThisType = array.GetType() == TypeByteOf<std::span<const T>>;
  if (!walk.Thorough && !ofThisType) return false;
  std::vector<T> elements;
  const bool taken = Succeeds([&] {
    for (std::size_t i = 0; i < array.GetCount(); ++i) elements.push_back(array.As<T>(i));
  });
  Require(taken == (ofThisType || array.GetCount() == 0), "elements are read only as what they are");
  Require(!Succeeds([&] { array.As<T>(array.GetCount()); }), "no element lies behind the last");
  if (ofThisType) walk.Rebuilt.Add(std::span<const T>(elements));
  return ofThisType;
}

template <class... T>
bool TakeAnyScalar(Walk& walk, Types<T...>) {
  return (TakeScalar<T>(walk) || ...);
}

template <class... T>
int CountTypesOf(const Command::ArrayValue& array, Walk& walk, Types<T...>) {
  return (static_cast<int>(TakeElements<T>(array, walk)) + ...);
}

bool TakeArray(Walk& walk) {
  std::optional<Command::ArrayValue> array;
  if (!Succeeds([&] { array = walk.Next.AsArray(); })) return false;
  const bool shown = Succeeds([&] { static_cast<void>(array->ToString()); });
  const bool fourDimensional = ValueTypeBits::GetDimensions(array->GetType()) == 4;
  Require(shown != fourDimensional, "every array but those of four dimensions has a text");
  Require(CountTypesOf(*array, walk, ElementTypes()) == 1, "an array is of exactly one type");
  return true;
}

// Replaces every Int32, finds the new numbers in their places, and nothing else changed.
void ReplaceNumbers(Command command) {
  const Command before = command;
  Reader writer;
  writer.SetNonConstCommand(command);
  std::int32_t number = 0;
  std::size_t others = 0;
  for (Reader reader(before.GetPayload()); reader.HasNext(); reader.SkipNext()) {
    Reader check = writer;
    const bool isNumber = reader.CompareNextType(CommandValueType::Int32);
    if (isNumber || ++others <= ThoroughValues) {
      Require(Succeeds([&] { writer.ReplaceInt32(++number); }) == isNumber, "only an Int32 is replaced");
    }
    if (isNumber) Require(check.AsInt32() == number, "a replaced number is read back");
    if (!isNumber) writer.SkipNext();
  }
  Require(!writer.HasNext(), "replacing does not lose its place");
  Require(!Succeeds([&] { Reader(before.GetPayload()).ReplaceInt32(0); }),
          "a read-only command stays as it is");
}

// Appends to a payload as received, whatever is in it.
template <class T>
void AddToReceived(Command command, T value) {
  const Command before = command;
  if (!Succeeds([&] { command.Add(value); })) {
    Require(command == before, "a command that takes no value stays as it is");
    Require(!Succeeds([&] { before.GetValueCount(); }), "a sound command takes a value");
    return;
  }
  Require(command.GetByteCount() == std::max(before.GetByteCount(), Command::HeaderBytes) + ValueSize(value),
          "a value adds its own size");
  Require(Succeeds([&] { Reader reader(command.GetPayload()); }), "Add counts the payload");
  std::size_t count = 0;
  if (Succeeds([&] { count = before.GetValueCount(); })) {
    Reader reader(command.GetPayload());
    for (; count > 0; --count) reader.SkipNext();
    if constexpr (std::is_same_v<T, bool>) {
      Require(reader.AsBool() == value, "an added value is the last");
    } else {
      Require(reader.As<T>() == value, "an added value is the last");
    }
    Require(!reader.HasNext(), "nothing follows the last value");
  }
}

}  // namespace

void LookAtPayload(Cursor input) {
  const auto code = input.Next<std::int32_t>();
  const Command command(code, input.Rest());
  Require(!command.ToString().empty(), "every command has a text");
  AddToReceived(command, true);
  AddToReceived(command, std::int32_t{-2});

  std::optional<Walk> walk;
  std::size_t count = 0;
  if (!Succeeds([&] { walk.emplace(command); })) {
    Require(!Succeeds([&] { command.GetValueCount(); }), "a payload with a wrong head is not walked");
    return;
  }
  while (walk->Next.HasNext()) {
    Reader skipped = walk->Next;
    const bool sound = Succeeds([&] { skipped.SkipNext(); });
    walk->Thorough = count < ThoroughValues;
    const bool taken = TakeAnyScalar(*walk, ScalarTypes()) || TakeArray(*walk);
    Require(taken == sound, "a value is read exactly when it can be skipped");
    if (!sound) {
      Require(!Succeeds([&] { command.GetValueCount(); }), "a malformed payload is not counted");
      return;
    }
    Require(skipped.HasNext() == walk->Next.HasNext(), "skipping and reading go equally far");
    ++count;
  }
  Require(command.GetValueCount() == count, "the count of values is how many there are");
  if (!walk->Expected.empty()) walk->Rebuilt.setVersion(walk->Expected[0]);
  Require(SameBytes(walk->Rebuilt.GetPayload(), walk->Expected), "values survive reading and adding");
  ReplaceNumbers(command);
}

}  // namespace VELTRO::KELVO::Fuzz
