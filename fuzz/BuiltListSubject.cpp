// CommandFuzzer: lists that are built are read back.
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "CommandSubjects.h"
#include "lists/CommandCodes.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using Reader = Command::CommandValueReader;

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

}  // namespace

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

}  // namespace VELTRO::KELVO::Fuzz
