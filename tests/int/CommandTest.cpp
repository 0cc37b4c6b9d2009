// Commands and lists to the byte.
#include <algorithm>
#include <set>

#include "Helpers.h"
#include "lists/CommandCodes.h"
#include "lists/CommandList.h"
#include "lists/CommandValueReader.h"
#include "lists/ListAPI.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

constexpr const char* TooLarge =
    "Command exceeds the maximum allowed command size of 921600 . Please split into several commands.";

template <class... Values>
Command With(const Values&... values) {
  Command command(0);
  (command.Add(values), ...);
  return command;
}

template <class T>
std::span<const T> Span(const std::vector<T>& values) {
  return values;
}

std::span<const unsigned char> Zeros(std::size_t count) {
  static const std::vector<unsigned char> zeros(2000000);
  return Span(zeros).first(count);
}

Command::CommandValueReader Reader(const Command& command) {
  return Command::CommandValueReader(command.GetPayload());
}

TEST(Command, EveryTypeOfValueHasItsBytes) {
  const struct {
    Command Got;
    const char* Values;  // behind the header
  } rows[] = {
      {With(true, false), "01 01 01 00"},
      {With(std::uint8_t{0xFE}), "24 FE"},
      {With(std::int16_t{-2}), "21 FE FF"},
      {With(std::uint16_t{0xABCD}), "25 CD AB"},
      {With(0x01020304), "22 04 03 02 01"},
      {With(0xFFFFFFFEU), "26 FE FF FF FF"},
      {With(-2L), "23 FE FF FF FF FF FF FF FF"},
      {With(0x0102030405060708UL), "27 08 07 06 05 04 03 02 01"},
      {With(1.5), "2B 00 00 00 00 00 00 F8 3F"},
      {With(Point2D{1, -2}), "6B 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 C0"},
      {With(Point3D{}), "AB 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
      {With(Point2DInt{1, -1}), "62 01 00 00 00 FF FF FF FF"},
      {With(Point3DInt{1, 2, 3}), "A2 01 00 00 00 02 00 00 00 03 00 00 00"},
      {With(Point4DInt{1, 2, 3, 4}), "E2 01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00"},
      {With(Span<unsigned char>({7, 8})), "34 00 00 02 07 08"},
      {With(Span<std::uint16_t>({1, 0x203})), "35 00 00 02 01 00 03 02"},
      {With(Span<double>({2})), "3B 00 00 01 00 00 00 00 00 00 00 40"},
      {With(Span<double>({})), "3B 00 00 00"},
      {With(Span<Point2DInt>({{1, 2}})), "72 00 00 01 01 00 00 00 02 00 00 00"},
      {With(Span<Point3DInt>({{1, 2, 3}})), "B2 00 00 01 01 00 00 00 02 00 00 00 03 00 00 00"},
      {With(Span<Point2D>({{0, 1}})), "7B 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 F0 3F"},
      {With(Span<Point3D>({})), "BB 00 00 00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Hex(row.Got.GetPayload().subspan(4)), row.Values);
    EXPECT_EQ(row.Got.GetValueCount(), row.Got == rows[0].Got ? 2U : 1U);
  }
  EXPECT_EQ(Hex(With(1.5).GetPayload().first(5)), "01 00 00 09 2B");
  EXPECT_EQ(With(1.5).GetByteCount(), 13U);
  EXPECT_EQ(Hex(With(Zeros(0x10203)).GetPayload().first(8)), "01 01 02 07 34 01 02 03");
  EXPECT_EQ(With(Point4D{1, 2, 3, 4}).GetPayload()[4], 0xEB);
}

TEST(Command, TheHeaderComesWithTheFirstValue) {
  Command command(3);
  EXPECT_EQ(command.GetByteCount(), 0U);
  command.Add(true);
  command.setVersion(2);
  command.Add(std::uint16_t{1});
  EXPECT_EQ(Hex(command.GetPayload()), "02 00 00 05 01 01 25 01 00");
  command.Clear();
  EXPECT_EQ(command.GetByteCount(), 0U);
  EXPECT_EQ(Hex(Command(3, 100).GetPayload()), "01 00 00 00");
}

// Appends byte arrays that end a payload at each of `ends` in turn; returns the first end that is refused.
std::size_t FirstRefused(Command command, std::initializer_list<std::size_t> ends) {
  for (const std::size_t end : ends) {
    const Command before = command;
    const std::size_t begin = std::max(command.GetByteCount(), Command::HeaderBytes);
    const std::string failure = Failure([&] { command.Add(Zeros(end - begin - 4)); });
    if (failure == "no failure") {
      EXPECT_EQ(command.GetByteCount(), end);
      continue;
    }
    EXPECT_EQ(failure, TooLarge);
    EXPECT_EQ(command, before);
    return end;
  }
  return 0;
}

TEST(Command, TheLimitIsLookedAtWhenThePayloadGrows) {
  const struct {
    Command Begin;
    std::initializer_list<std::size_t> Ends;
    std::size_t Refused;
  } rows[] = {
      {Command(0), {921596}, 0},
      {Command(0), {921597}, 921597},
      {Command(0), {1000, 921596}, 0},
      {Command(0), {1000, 921597}, 921597},
      {Command(0), {700000, 921597}, 921597},
      {Command(0), {700000, 921596, 1050000}, 0},  // the second made room for that
      {Command(0), {700000, 921596, 1050001}, 1050001},
      {Command(0, 1000000), {1000004}, 0},  // reserved room is not looked at
      {Command(0, 1000000), {1000005}, 1000005},
  };
  for (const auto& row : rows) EXPECT_EQ(FirstRefused(row.Begin, row.Ends), row.Refused);
}

TEST(CommandList, AppendsLikeACommand) {
  CommandList list;
  list.Append(5, true, Span<double>({1, 2}), Point2D{3, 4});
  EXPECT_EQ(Hex(list.At(0).Payload), Hex(With(true, Span<double>({1, 2}), Point2D{3, 4}).GetPayload()));
  EXPECT_EQ(Failure([&] { list.Append(5, true, Zeros(921597 - 10)); }), TooLarge);
  EXPECT_EQ(list.GetCommandCount(), 1U);
  list.Append(6, true, Zeros(921596 - 10));
  list.Append(7, Zeros(700000 - 8), 1.0, Zeros(1050000 - 700013));  // the same leniency
  EXPECT_EQ(list.At(1).Payload.size(), 921596U);
  EXPECT_EQ(list.At(2).Payload.size(), 1050000U);
}

TEST(Command, NothingIsAppendedWithoutAWholeHeader) {
  Command command(1, Unsigned("\1"));
  EXPECT_EQ(Failure([&] { command.Add(true); }), "Command payload is malformed.");
  EXPECT_EQ(Hex(command.GetPayload()), "01");
}

TEST(CommandValueReader, ReadsWhatWasAppendedInOrder) {
  const Command command = With(true, std::uint8_t{2}, std::int16_t{-3}, std::uint16_t{4}, -5, 6U, -7L, 8UL,
                               9.5, Point2D{1, 2}, Point3D{1, 2, 3}, Point4D{1, 2, 3, 4}, Point2DInt{1, 2},
                               Point3DInt{1, 2, 3}, Point4DInt{1, 2, 3, 4}, Span<std::uint16_t>({10, 11}));
  auto reader = Reader(command);
  for (int pass = 0; pass < 2; ++pass, reader.Reset()) {
    EXPECT_TRUE(reader.AsBool());
    EXPECT_EQ(reader.AsByte(), 2);
    EXPECT_EQ(reader.AsInt16(), -3);
    EXPECT_EQ(reader.AsUInt16(), 4);
    EXPECT_EQ(reader.AsInt32(), -5);
    EXPECT_EQ(reader.AsUInt32(), 6U);
    EXPECT_EQ(reader.AsInt64(), -7);
    EXPECT_EQ(reader.AsUInt64(), 8U);
    EXPECT_EQ(reader.AsDouble(), 9.5);
    EXPECT_EQ(reader.AsPoint2D(), (Point2D{1, 2}));
    EXPECT_EQ(reader.AsPoint3D(), (Point3D{1, 2, 3}));
    EXPECT_EQ(reader.AsPoint4D().W(), 4);
    EXPECT_EQ(reader.AsPoint2DInt(), (Point2DInt{1, 2}));
    EXPECT_EQ(reader.AsPoint3DInt(), (Point3DInt{1, 2, 3}));
    EXPECT_EQ(reader.AsPoint4DInt().W(), 4);
    EXPECT_TRUE(reader.NextIsArray());
    const auto array = reader.AsArray();
    EXPECT_EQ(array.GetCount(), 2U);
    EXPECT_EQ(array.AsUInt16(1), 11);
    EXPECT_EQ(Failure([&] { array.AsUInt16(2); }), "Array index out of range.");
    EXPECT_EQ(Failure([&] { array.AsByte(0); }), "Command value is of type UInt16Arr, not ByteArr.");
    EXPECT_EQ(Failure([&] { reader.PeekType(); }), "Command has no further value.");
  }
  EXPECT_EQ(command.GetValueCount(), 16U);
}

TEST(CommandValueReader, ReplacesAnInt32WhereItLies) {
  Command command = With(7, true, 8);
  Command::CommandValueReader reader;
  reader.SetNonConstCommand(command);
  reader.ReplaceInt32(-1);
  EXPECT_EQ(Failure([&] { reader.ReplaceInt32(9); }), "Command value is of type Bool, not Int32.");
  reader.SkipNext();
  EXPECT_EQ(reader.AsInt32(), 8);
  EXPECT_EQ(Hex(command.GetPayload()), "01 00 00 0C 22 FF FF FF FF 01 01 22 08 00 00 00");
  reader.SetCommand(command);
  EXPECT_EQ(Failure([&] { reader.ReplaceInt32(9); }), "Command is read-only.");
  EXPECT_EQ(Failure([&] { reader.AsArray(); }), "Command value is of type Int32, not an array.");
}

TEST(CommandValueReader, RefusesMalformedPayloads) {
  constexpr const char* malformed = "Command payload is malformed.";
  const struct {
    const char* Payload;
    const char* Text;
  } rows[] = {
      {"01", malformed},                          // no whole header
      {"01 00 00", malformed},                    //
      {"01 00 00 01", malformed},                 // the byte count says more,
      {"01 00 00 00 01 01", malformed},           // or less
      {"01 00 00 01 22", malformed},              // values cut short
      {"01 00 00 04 22 01 02 03", malformed},     //
      {"01 00 00 03 34 00 00", malformed},        // an array without its count
      {"01 00 00 04 34 00 00 01", malformed},     // without its element
      {"01 00 00 05 FB FF FF FF 00", malformed},  // that claims 512 MiB
      {"01 00 00 04 01 01 00 00", malformed},     // of type Invalid, behind a good one
      {"01 00 00 02 7F 00", "CommandValueType::_from_integral: invalid argument"},
  };
  for (const auto& row : rows) {
    const std::string bytes = Bytes(row.Payload);
    EXPECT_EQ(Failure([&] { static_cast<void>(Command(1, Unsigned(bytes)).GetValueCount()); }), row.Text)
        << row.Payload;
  }
}

TEST(CommandValueType, AcronymsNameTypes) {
  CommandValueType type = CommandValueType::Invalid;
  EXPECT_TRUE(Command::TryParseValueType("P3IArr", type));
  EXPECT_FALSE(Command::TryParseValueType("UInt16", type));
  EXPECT_EQ(type, CommandValueType::Point3DIntArr);
}

TEST(CommandCodes, NoTwoCommandsShareACodeOrAMnemonic) {
  EXPECT_EQ(CommandCodeAcronym::_values().size(), 112U);
  EXPECT_EQ(CommandCodeAcronym2::_values().size(), 41U);
  EXPECT_EQ(CommandCode::_values().size(), 110U);  // two of the ordinary mnemonics are flow control
  EXPECT_EQ(CommandCode2::_values().size(), 43U);
  std::set<std::int32_t> codes;
  std::set<std::string_view> mnemonics;
  const auto add = [&](auto values, auto names) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_TRUE(codes.insert(values[i]._to_integral()).second) << names[i];
      EXPECT_TRUE(mnemonics.insert(names[i]).second) << names[i];
      EXPECT_EQ(CodeOf(names[i]), values[i]._to_integral());
      EXPECT_EQ(MnemonicOf(values[i]._to_integral()), names[i]);
    }
  };
  add(CommandCodeAcronym::_values(), CommandCodeAcronym::_names());
  add(CommandCodeAcronym2::_values(), CommandCodeAcronym2::_names());
  EXPECT_EQ(MnemonicOf(0x113), std::nullopt);
  EXPECT_EQ(CodeOf("ja"), std::nullopt);
}

// With `part` replaced the name of another command.
void ExpectBitBetween(const std::string& name, const std::string& part, const std::string& replacement,
                      std::int32_t bit, int& pairs) {
  const std::size_t at = name.find(part);
  if (at == std::string::npos) return;
  const auto other =
      CommandCode::_from_string_nothrow(std::string(name).replace(at, part.size(), replacement));
  if (!other) return;
  EXPECT_EQ(CommandCode::_from_string(name)._to_integral(), other->_to_integral() | bit) << name;
  EXPECT_EQ(other->_to_integral() & bit, 0) << name;
  ++pairs;
}

TEST(CommandCodes, RelativeAndThreeDimensionalOnesDifferByABit) {
  int relative = 0;
  int threeDimensional = 0;
  for (const std::string_view name : CommandCode::_names()) {
    ExpectBitBetween(std::string(name), "_REL", "_ABS", 0x2, relative);
    ExpectBitBetween(std::string(name), "_3D", "", 0x4, threeDimensional);
  }
  EXPECT_EQ(relative, 19);
  EXPECT_EQ(threeDimensional, 20);
}

TEST(CommandCodes, AreWhatCardsKnow) {
  const struct {
    const char* Mnemonic;
    std::int32_t Code;
  } rows[] = {
      {"NO", 0x0},       {"LON", 0x11},      {"LOF", 0x12},     {"SPMR", 0x52},     {"JA", 0x110},
      {"MFSTP3", 0x184}, {"M3R", 0x216},     {"ELLG", 0x434},   {"BEZC3R", 0x4A6},  {"JAS3A", 0x714},
      {"PV3", 0x814},    {"MS", 0x1011},     {"VPD", 0x1029},   {"PSP", 0x1536},    {"SVRL", 0x1623},
      {"UV3", 0x10014},  {"BACF", 0x100115}, {"LOB", 0x100163}, {"EXLC", 0x1002A7}, {"GTSAL", 0x1002A1},
      {"WFS", 0x100310}, {"SUS", 0x100318},
  };
  for (const auto& row : rows) EXPECT_EQ(CodeOf(row.Mnemonic), row.Code) << row.Mnemonic;
}

std::string Packed(const CommandList& list) {
  OutputPacket packet = OutputPacket::AllocateNotification();
  msgpack::packer(packet).pack(list);
  return BodyOf(packet);
}

CommandList Unpacked(const std::string& body) {
  InputPacket packet = Received(PacketType::Notification, body);
  return packet.Unpack().get().as<CommandList>();
}

TEST(CommandList, TravelsAsItsFieldAndPairs) {
  CommandList list;
  EXPECT_EQ(Hex(Packed(list)), "91 FF");
  list.AppendJumpAbs(Point2D{1, -2});
  list.AppendLaserOn();
  list.AppendProgress(300);
  EXPECT_EQ(Hex(Packed(list)), "91 FF");  // nothing is to be sent until it is said what
  const std::string jump = "92 CD 01 10 C4 15 01 00 00 11 6B 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 C0";
  const std::string laserOn = "92 11 C4 00";
  const std::string progress = "92 01 C4 09 01 00 00 05 22 2C 01 00 00";
  list.SetRange(0, 3);
  EXPECT_EQ(Hex(Packed(list)), "94 FF " + jump + " " + laserOn + " " + progress);
  list.SetListField(70000);
  list.SetRange(1, 3);
  EXPECT_EQ(Hex(Packed(list)), "93 CE 00 01 11 70 " + laserOn + " " + progress);
  list.SetRange(1, 2);
  EXPECT_EQ(Hex(Packed(list)), "92 CE 00 01 11 70 " + laserOn);
}

TEST(CommandList, EveryCodeAndPayloadTravelsThereAndBack) {
  CommandList list;
  OutputPacket expected = OutputPacket::AllocateNotification();
  msgpack::packer packer(expected);
  std::vector<Command> commands;
  for (const std::int32_t code : {0, 1, 0x7F, 0x80, 0xFF, 0x100, 0xFFFF, 0x10000, INT32_MAX, -1, -0x20, -0x21,
                                  -0x80, -0x81, -0x8000, -0x8001, INT32_MIN}) {
    for (const std::size_t size : {0U, 1U, 255U, 256U, 65535U, 65536U})
      commands.emplace_back(code, Zeros(size));
  }
  packer.pack_array(static_cast<std::uint32_t>(commands.size() + 1));
  packer.pack(-1);
  for (const Command& command : commands) {
    const auto payload = command.GetPayload();
    list.Append(command.View());
    packer.pack_array(2).pack(command.GetCode()).pack(std::vector(payload.begin(), payload.end()));
  }
  list.SetRange(0, list.GetCommandCount());
  const std::string packed = Packed(list);
  ASSERT_TRUE(packed == BodyOf(expected));
  const CommandList received = Unpacked(packed);
  ASSERT_EQ(received.GetCommandCount(), commands.size());
  std::size_t i = 0;
  received.ForEach([&](const CommandView& command) {
    EXPECT_TRUE(Command(command.Code, command.Payload) == commands[i++]);
  });
}

TEST(CommandList, RefusesWhatIsNoList) {
  CommandList list;
  list.AppendLaserOn();
  for (const char* row : {"C0", "90", "91 C0", "91 A1 31", "92 FF 07", "92 FF 91 01", "92 FF 93 01 C4 00 C0",
                          "92 FF 92 A1 31 C4 00", "92 FF 92 01 A0", "92 FF 92 CE 80 00 00 00 C4 00"}) {
    EXPECT_THROW(list = Unpacked(Bytes(row)), msgpack::type_error) << row;
    EXPECT_EQ(list.GetCommandCount(), 1U);
  }
  EXPECT_EQ(Unpacked(Bytes("92 05 92 CC 80 C4 00")).GetListField(), 5);
}

TEST(CommandList, FindsEveryCommand) {
  CommandList list;
  for (std::int32_t i = 0; i < 200; ++i) list.Append(i * 977 - 50000, Zeros(static_cast<std::size_t>(i) * 7));
  for (const std::size_t i : {0U, 1U, 63U, 64U, 65U, 127U, 128U, 191U, 192U, 199U}) {
    EXPECT_EQ(list.At(i).Code, static_cast<std::int32_t>(i) * 977 - 50000);
    EXPECT_EQ(list.At(i).Payload.size(), 8 + i * 7);
  }
  EXPECT_THROW(static_cast<void>(list.At(200)), std::out_of_range);
  list.Append(list);
  EXPECT_EQ(list.GetCommandCount(), 400U);
  EXPECT_EQ(list.At(399).Code, list.At(199).Code);
  list.Clear();
  EXPECT_EQ(list.GetCommandCount(), 0U);
  list.AppendLaserOn();
  EXPECT_EQ(list.At(0).Code, 0x11);
  EXPECT_EQ(CommandList(std::vector{With(1), With(2)}).At(1).Payload[5], 2);
}

TEST(CommandList, ACopyIsASnapshot) {
  CommandList list;
  for (std::int32_t i = 0; i < 100; ++i) list.AppendProgress(i);
  // Changed by two threads at once, as an upload and an append do.
  CommandList copy = list;
  const auto append = [](CommandList& to, std::int32_t from) {
    for (std::int32_t i = from; i < from + 100; ++i) to.AppendProgress(i);
  };
  std::thread other([&] { append(copy, 1000); });
  append(list, 2000);
  other.join();
  for (const auto& [changed, base] : {std::pair(&copy, 1000), std::pair(&list, 2000)}) {
    ASSERT_EQ(changed->GetCommandCount(), 200U);
    for (std::int32_t i = 0; i < 200; ++i) {
      Command::CommandValueReader reader(changed->At(static_cast<std::size_t>(i)).Payload);
      ASSERT_EQ(reader.AsInt32(), i < 100 ? i : base + i - 100);
    }
  }
  CommandList cleared = list;
  cleared.Clear();
  EXPECT_EQ(list.GetCommandCount(), 200U);
}

TEST(CommandList, LoopsAreCountedAndHardlyChecked) {
  CommandList list;
  EXPECT_EQ(Failure([&] { list.AppendLoopBreak(); }), "No loop opened!");
  EXPECT_EQ(list.GetCommandCount(), 0U);
  list.AppendLoopStart(5);
  list.AppendLoopStart(6);
  list.AppendLoopBreak();
  for (int i = 0; i < 3; ++i) list.AppendLoopEnd();  // one too many: appended all the same
  EXPECT_EQ(list.GetLoopDepth(), -1);
  EXPECT_EQ(Failure([&] { list.AppendLoopBreak(); }), "No loop opened!");
  list.AppendLoopStart(7);
  EXPECT_EQ(Failure([&] { list.AppendLoopBreak(); }), "No loop opened!");
  EXPECT_EQ(list.ToString(),
            "[ { LOS, I32[ 5 ], I32[ 1 ] }, { LOS, I32[ 6 ], I32[ 2 ] }, { LOB }, { LOE, I32[ 2 ] }, "
            "{ LOE, I32[ 1 ] }, { LOE, I32[ 0 ] }, { LOS, I32[ 7 ], I32[ 0 ] } ]");
}

// Uploads `list` and returns the number of commands of every call, "+" ahead of those that append.
std::string Upload(CommandList& list, bool append = false) {
  CallRecorder caller;
  ListEvents events;
  ListAPI(caller, events).Set(3, list, append, 8);
  std::string text;
  for (const auto& call : caller.Calls) {
    InputPacket packet = Received(PacketType::Notification, call.Arguments);
    const auto object = packet.Unpack();
    const auto [id, chunk, appends] = object.get().as<std::tuple<std::int32_t, CommandList, bool>>();
    EXPECT_EQ(call.Method, "SetList");
    EXPECT_EQ(id, 3);
    EXPECT_EQ(chunk.GetListField(), 8);
    text +=
        (text.empty() ? "" : " ") + std::string(appends ? "+" : "") + std::to_string(chunk.GetCommandCount());
  }
  return text;
}

TEST(ListAPI, AnUploadIsCutWhereItsBytesAreFull) {
  const struct {
    const char* Name;
    std::vector<std::size_t> Payloads;
    const char* Calls;
  } rows[] = {
      {"nothing", {}, "0"},
      {"full", {300000, 300000, 321588}, "3"},
      {"one byte more", {300000, 300000, 321589}, "2 +1"},
      {"full with one", {921596}, "1"},
      {"full with one, and an empty one", {921596, 0}, "1 +1"},
      {"full with empty ones", std::vector<std::size_t>(230400), "230400"},
      {"one more of them", std::vector<std::size_t>(230401), "230400 +1"},
      {"many", std::vector<std::size_t>(25, 100000), "9 +9 +7"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Name);
    CommandList list;
    for (const std::size_t size : row.Payloads) list.Append({1, Zeros(size)});
    EXPECT_EQ(Upload(list), row.Calls);
    EXPECT_EQ(Upload(list, true), std::string("+") + row.Calls);
  }
}

TEST(ListAPI, AnUploadThatFailsLeavesNothingToSend) {
  CallRecorder caller;
  caller.OnCall = [] { throw std::runtime_error("lost"); };
  ListEvents events;
  ListAPI api(caller, events);
  CommandList list;
  list.AppendLaserOn();
  EXPECT_EQ(Failure([&] { api.Set(1, list, false, -1); }), "lost");
  EXPECT_EQ(Hex(Packed(list)), "91 FF");
  list.Append({1, Zeros(921597)});
  EXPECT_EQ(Failure([&] {
              CallRecorder answers;
              ListAPI(answers, events).Set(1, list, false, -1);
            }),
            "Command 1 is too large to be uploaded.");
  for (const bool open : {true, false}) {
    CommandList loops;
    open ? loops.AppendLoopStart(2) : loops.AppendLoopEnd();
    caller.Calls.clear();
    EXPECT_EQ(Failure([&] { api.Set(1, loops, false, -1); }), "There are open loops inside the list!");
    EXPECT_TRUE(caller.Calls.empty());
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
