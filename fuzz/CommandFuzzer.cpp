// Commands and lists: payloads from anywhere are walked and rebuilt, lists from the wire are converted and
// packed again, and lists that are built are read back. The first byte of the input chooses which.
#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "Cursor.h"
#include "Require.h"
#include "lists/CommandCodes.h"
#include "lists/CommandList.h"
#include "lists/CommandValueReader.h"
#include "rpc/Body.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using namespace VELTRO::KELVO::ClientLib;
using Reader = Command::CommandValueReader;

template <class... T>
struct Types {};

using ScalarTypes =
    Types<bool, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t, std::int64_t,
          std::uint64_t, double, Point2D, Point3D, Point4D, Point2DInt, Point3DInt, Point4DInt>;
using ElementTypes =
    Types<std::uint8_t, std::uint16_t, double, Point2D, Point3D, Point4D, Point2DInt, Point3DInt, Point4DInt>;

bool SameBytes(std::span<const unsigned char> a, std::span<const unsigned char> b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

bool SameCommand(const CommandView& a, const CommandView& b) {
  return a.Code == b.Code && SameBytes(a.Payload, b.Payload);
}

// Whether `f` ends without an error. Only the errors that belong to the interface count as such.
bool Succeeds(auto&& f) {
  try {
    f();
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

// --- A payload from anywhere

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

// --- Lists as a whole

using Views = std::span<const CommandView>;

// The commands as the MessagePack library itself writes them.
msgpack::sbuffer PackPlainly(std::int32_t listField, Views commands) {
  msgpack::sbuffer buffer;
  msgpack::packer packer(buffer);
  packer.pack_array(static_cast<std::uint32_t>(commands.size() + 1));
  packer.pack_int32(listField);
  for (const CommandView& command : commands) {
    packer.pack_array(2);
    packer.pack_int32(command.Code);
    packer.pack_bin(static_cast<std::uint32_t>(command.Payload.size()));
    packer.pack_bin_body(reinterpret_cast<const char*>(command.Payload.data()),
                         static_cast<std::uint32_t>(command.Payload.size()));
  }
  return buffer;
}

bool HoldsExactly(const CommandList& list, Views commands) {
  std::size_t i = 0;
  bool same = true;
  list.ForEach([&](const CommandView& command) {
    same = same && i < commands.size() && SameCommand(command, commands[i]);
    ++i;
  });
  return same && i == commands.size() && i == list.GetCommandCount();
}

void CheckPacked(CommandList list, std::size_t first, std::size_t last, Views commands) {
  list.SetRange(first, last);
  msgpack::sbuffer packed;
  msgpack::pack(packed, list);
  const msgpack::sbuffer plain = PackPlainly(list.GetListField(), commands);
  Require(packed.size() == plain.size() && std::memcmp(packed.data(), plain.data(), plain.size()) == 0,
          "a list travels as the MessagePack library would write it");
  std::size_t used = 0;
  const auto handle = Body::Unpack({packed.data(), packed.size()}, used, Body::UsualDepth);
  const auto reread = handle.get().as<CommandList>();
  Require(used == packed.size() && HoldsExactly(reread, commands), "a list's commands are read back");
  Require(reread.GetListField() == list.GetListField(), "the list field is read back");
}

// The end of the upload that begins at `first`, added up plainly.
std::size_t PlainChunkEnd(Views commands, std::size_t first) {
  std::size_t sum = 0;
  std::size_t end = first;
  for (; end < commands.size(); ++end) {
    sum += commands[end].Payload.size() + 4;
    if (sum > MaxPacketSize) break;
  }
  return end;
}

// Texts of long arrays take longer than all else together.
constexpr std::size_t MostTextBytes = 65536;

std::string TextOf(Views commands) {
  std::string text = "[ ";
  for (const CommandView& command : commands) {
    text.append(text.size() > 2 ? ", " : "").append(command.ToString());
  }
  return text + " ]";
}

void CheckList(const CommandList& list, std::size_t first, std::size_t last) {
  std::vector<CommandView> commands;
  std::size_t bytes = 0;
  list.ForEach([&](const CommandView& command) {
    Require(SameCommand(command, list.At(commands.size())), "both ways to a command lead to the same");
    commands.push_back(command);
    bytes += command.Payload.size();
  });
  const std::size_t count = commands.size();
  Require(list.GetCommandCount() == count, "every command is visited");
  if (bytes <= MostTextBytes) {
    Require(list.ToString() == TextOf(commands), "a list's text is its commands' texts");
  }
  bool behind = false;
  try {
    list.At(count);
  } catch (const std::out_of_range&) {
    behind = true;
  }
  Require(behind, "no command lies behind the last");
  first = std::min(first, count);
  last = std::clamp(last, first, count);
  CheckPacked(list, first, last, Views(commands).subspan(first, last - first));
  for (std::size_t start = 0; start < count;) {
    const std::size_t expected = PlainChunkEnd(commands, start);
    std::size_t end = start;
    Require(Succeeds([&] { end = list.FindChunkEnd(start); }) == (expected > start) && end == expected,
            "a chunk is as long as it may be");
    start = std::max(end, start + 1);
  }
}

void LookAtList(Cursor input) {
  const std::size_t first = input.Next<std::uint8_t>();
  const std::size_t last = input.Next<std::uint8_t>();
  const auto bytes = input.Rest();
  CommandList list;
  const std::span body(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  std::size_t used = 0;
  msgpack::object_handle handle;
  if (!Succeeds([&] { handle = Body::Unpack(body, used, Body::UsualDepth); })) return;
  const msgpack::object& object = handle.get();
  try {
    object.convert(list);
  } catch (const msgpack::type_error&) {
    Require(list.GetCommandCount() == 0 && list.GetListField() == -1, "a refused list leaves no trace");
    return;
  }
  Require(list.GetCommandCount() + 1 == object.via.array.size, "a received list has all its commands");
  for (std::size_t i = 0; i < list.GetCommandCount(); ++i) {
    const auto& pair = object.via.array.ptr[i + 1].via.array;
    const auto* payload = reinterpret_cast<const unsigned char*>(pair.ptr[1].via.bin.ptr);
    Require(SameCommand(list.At(i), {pair.ptr[0].as<std::int32_t>(), {payload, pair.ptr[1].via.bin.size}}),
            "a received command is what was sent");
  }
  CheckList(list, first, last);
}

// --- Lists that are built

using Value =
    std::variant<bool, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t,
                 double, Point2D, Point3D, Point4D, Point2DInt, Point3DInt, Point4DInt,
                 std::vector<std::uint8_t>, std::vector<std::uint16_t>, std::vector<double>,
                 std::vector<Point2D>, std::vector<Point3D>, std::vector<Point4D>, std::vector<Point2DInt>,
                 std::vector<Point3DInt>, std::vector<Point4DInt>>;
// Every pair of two Values would be too many to compile.
using SecondValue = std::variant<std::int32_t, bool, double, Point3D, std::vector<std::uint8_t>>;

constexpr std::size_t MostCommands = 200;   // some times as many as lie between two noted places
constexpr std::size_t MostBytes = 2500000;  // a few uploads' worth
constexpr std::size_t MostSnapshots = 3;
constexpr std::uint8_t LongArray = 255;  // its length follows, and its elements are 0

template <class T>
T Argument(const T& value) {
  return value;
}
template <class T>
std::span<const T> Argument(const std::vector<T>& elements) {
  return elements;
}

template <class T>
void Fill(Cursor& input, T& value) {
  value = input.Next<T>();
}
void Fill(Cursor& input, bool& value) {
  value = (input.Next<std::uint8_t>() & 1U) != 0;
}
template <class T>
void Fill(Cursor& input, std::vector<T>& elements) {
  const auto length = input.Next<std::uint8_t>();
  if (length == LongArray) {
    elements.resize(input.Next<std::uint16_t>());
  } else {
    for (unsigned i = 0; i < length && !input.Empty(); ++i) elements.push_back(input.Next<T>());
  }
}

template <class Variant, std::size_t... I>
Variant NextValue(Cursor& input, std::index_sequence<I...>) {
  const std::size_t index = input.Next<std::uint8_t>() % sizeof...(I);
  Variant value;
  static_cast<void>(((index == I ? (value.template emplace<I>(), true) : false) || ...));
  std::visit([&](auto& it) { Fill(input, it); }, value);
  return value;
}
template <class Variant>
Variant NextValue(Cursor& input) {
  return NextValue<Variant>(input, std::make_index_sequence<std::variant_size_v<Variant>>());
}

template <class T>
void CheckNext(Reader& reader, const T& value) {
  T read{};
  if constexpr (std::is_same_v<T, bool>) {
    read = reader.AsBool();
  } else {
    read = reader.As<T>();
  }
  Require(std::memcmp(&read, &value, sizeof read) == 0, "a value is read back");  // a NaN is itself, too
}
template <class T>
void CheckNext(Reader& reader, const std::vector<T>& elements) {
  const auto array = reader.AsArray();
  Require(array.GetCount() == elements.size(), "an array is read back whole");
  const std::size_t step = elements.size() > LongArray ? elements.size() - 1 : 1;  // long ones are all zero
  for (std::size_t i = 0; i < elements.size(); i += step) {
    const T read = array.As<T>(i);
    Require(std::memcmp(&read, &elements[i], sizeof read) == 0, "an element is read back");
  }
}

// A list, and the same built of single commands.
struct Pair {
  CommandList List;
  std::vector<Command> Commands;
  std::size_t Bytes = 0;

  void Append(const Command& command) {
    Commands.push_back(command);
    Bytes += command.GetByteCount();
  }
  bool HasRoomFor(std::size_t count, std::size_t bytes) const {
    return Commands.size() + count <= MostCommands && Bytes + bytes <= MostBytes;
  }
  void Check() const {
    Require(List.GetCommandCount() == Commands.size(), "a list has as many commands as were appended");
    for (std::size_t i = 0; i < Commands.size(); ++i) {
      Require(SameCommand(List.At(i), Commands[i].View()), "a list keeps its commands");
    }
  }
};

void AppendOneValue(Cursor& input, Pair& pair, std::int32_t code) {
  const auto value = NextValue<Value>(input);
  std::visit(
      [&](const auto& it) {
        Command command(code);
        const bool added = Succeeds([&] { command.Add(Argument(it)); });
        Require(Succeeds([&] { pair.List.Append(code, Argument(it)); }) == added,
                "a list and a command take the same value");
        if (!added) {
          Require(command == Command(code), "a command that takes no value stays as it is");
          return;
        }
        pair.Append(command);
        Reader reader(command.GetPayload());
        CheckNext(reader, it);
        Require(!reader.HasNext() && command.GetValueCount() == 1, "nothing follows the last value");
      },
      value);
}

void AppendTwoValues(Cursor& input, Pair& pair, std::int32_t code) {
  const auto value = NextValue<Value>(input);
  const auto second = NextValue<SecondValue>(input);
  std::visit(
      [&](const auto& a, const auto& b) {
        Command command(code);
        const bool added = Succeeds([&] {
          command.Add(Argument(a));
          command.Add(Argument(b));
        });
        Require(Succeeds([&] { pair.List.Append(code, Argument(a), Argument(b)); }) == added,
                "a list and a command take the same values");
        if (!added) return;
        pair.Append(command);
        Reader reader(command.GetPayload());
        CheckNext(reader, a);
        CheckNext(reader, b);
        Require(!reader.HasNext() && command.GetValueCount() == 2, "nothing follows the last value");
      },
      value, second);
}

void AppendManyValues(Cursor& input, Pair& pair, std::int32_t code) {
  Command command(code, input.Next<std::uint16_t>());
  for (unsigned i = input.Next<std::uint8_t>() % 16U; i > 0 && !input.Empty(); --i) {
    const Command before = command;
    const auto value = NextValue<Value>(input);
    std::visit(
        [&](const auto& it) {
          if (!Succeeds([&] { command.Add(Argument(it)); })) {
            Require(command == before, "a command that takes no value stays as it is");
          }
        },
        value);
  }
  pair.List.Append(command);
  pair.Append(command);
}

void AppendLoop(Cursor& input, Pair& pair) {
  const std::int32_t depth = pair.List.GetLoopDepth();
  Command command(0);
  switch (input.Next<std::uint8_t>() % 3) {
    case 0: {
      const auto count = input.Next<std::int32_t>();
      pair.List.AppendLoopStart(count);
      command = Command(CommandCode2::LOOP_START);
      command.Add(count);
      command.Add(depth + 1);
      Require(pair.List.GetLoopDepth() == depth + 1, "a loop that is opened is one deeper");
      break;
    }
    case 1:
      pair.List.AppendLoopEnd();
      command = Command(CommandCode2::LOOP_END);
      command.Add(depth);
      Require(pair.List.GetLoopDepth() == depth - 1, "a loop that is closed is one less deep");
      break;
    default:
      if (!Succeeds([&] { pair.List.AppendLoopBreak(); })) {
        Require(depth < 1, "an open loop is left");
        return;
      }
      Require(depth >= 1, "only an open loop is left");
      command = Command(CommandCode2::LOOP_BREAK);
      break;
  }
  pair.Append(command);
}

void AppendOwnCommand(Cursor& input, Pair& pair) {
  if (pair.Commands.empty()) return;
  const std::size_t i = input.Next<std::uint16_t>() % pair.Commands.size();
  const Command command = pair.Commands[i];
  pair.List.Append(pair.List.At(i));
  pair.Append(command);
}

void AppendList(Pair& pair, Pair other) {
  if (!pair.HasRoomFor(other.Commands.size(), other.Bytes)) return;
  pair.List.Append(other.List);
  for (const Command& command : other.Commands) pair.Append(command);
}

void AppendItself(Pair& pair) {
  if (!pair.HasRoomFor(pair.Commands.size(), pair.Bytes)) return;
  pair.List.Append(pair.List);
  const auto commands = pair.Commands;
  for (const Command& command : commands) pair.Append(command);
}

void BuildList(Cursor input) {
  Pair pair;
  std::vector<Pair> snapshots;
  pair.List.SetListField(input.Next<std::int32_t>());
  const std::size_t first = input.Next<std::uint16_t>();
  const std::size_t last = input.Next<std::uint16_t>();
  while (!input.Empty() && pair.HasRoomFor(1, MaxPacketSize)) {
    const unsigned step = input.Next<std::uint8_t>() % 16U;
    // Mostly a code that has a mnemonic, now and then any, or what to do with a snapshot.
    const std::int32_t code =
        step < 8 ? input.Next<std::uint16_t>()
                 : (step < 11 ? input.Next<std::int32_t>() : (step == 13 ? input.Next<std::uint8_t>() : 0));
    switch (step) {
      case 0:
        pair.List.Append(code);
        pair.Append(Command(code));
        break;
      case 11:
        AppendLoop(input, pair);
        break;
      case 12:
        AppendOwnCommand(input, pair);
        break;
      case 13:
        if (snapshots.empty() || (snapshots.size() < MostSnapshots && code % 3 == 0)) {
          snapshots.push_back(pair);
        } else if (code % 3 == 1) {
          AppendList(pair, snapshots.back());
        } else {
          std::swap(pair, snapshots.back());  // both grow from what they share
        }
        break;
      case 14:
        AppendItself(pair);
        break;
      case 15:
        if (input.Next<std::uint8_t>() % 8U == 0) {
          pair.List.Clear();
          pair.Commands.clear();
          pair.Bytes = 0;
        }
        break;
      default:
        if (step % 3 == 0) {
          AppendManyValues(input, pair, code);
        } else if (step % 3 == 1) {
          AppendOneValue(input, pair, code);
        } else {
          AppendTwoValues(input, pair, code);
        }
        break;
    }
  }
  pair.Check();
  for (const Pair& snapshot : snapshots) snapshot.Check();
  CheckList(pair.List, first, last);
}

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  Cursor input(data, size);
  switch (input.Next<std::uint8_t>() % 3) {
    case 0:
      LookAtPayload(input);
      break;
    case 1:
      LookAtList(input);
      break;
    default:
      BuildList(input);
      break;
  }
  return 0;
}
