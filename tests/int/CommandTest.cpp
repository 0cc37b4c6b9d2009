// Commands, lists and fonts to the byte, and the enumerations that name them.
#include "Helpers.h"
#include "common/ReflectiveEnum.h"
#include "lists/CommandCodes.h"
#include "lists/CommandList.h"
#include "lists/CommandValueReader.h"
#include "lists/ListAPI.h"
#include "services/FontAPI.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

constexpr const char* TooLarge =
    "Command exceeds the maximum allowed command size of 921600 . Please split into several commands.";
constexpr const char* Malformed = "Command payload is malformed.";

template <class... Values>
Command With(const Values&... values) {
  Command command(0);
  (command.Add(values), ...);
  return command;
}

Command::CommandValueReader Reader(const Command& command) {
  return Command::CommandValueReader(command.GetPayload());
}

std::span<const unsigned char> Zeros(std::size_t count) {
  static const std::vector<unsigned char> zeros(2000000);
  return std::span(zeros).first(count);
}

// Each value, alone in a command, has these bytes behind the header, and is read as it was appended.
template <class T>
void ExpectValue(const char* bytes, const T& value) {
  const Command command = With(value);
  EXPECT_EQ(Hex(command.GetPayload().subspan(4)), bytes);
  EXPECT_EQ(command.GetValueCount(), 1U);
  EXPECT_EQ(With(Reader(command).As<T>()), command);
}

template <class T>
void ExpectArray(const char* bytes, const std::vector<T>& values) {
  const Command command = With(std::span(values));
  EXPECT_EQ(Hex(command.GetPayload().subspan(4)), bytes);
  const auto array = Reader(command).AsArray();
  EXPECT_EQ(array.GetCount(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(array.template As<T>(i), values[i]);
  EXPECT_FAILURE(array.template As<T>(values.size()), "Array index out of range.");
}

TEST(CommandValueReader, ClassifiesATypeByteByItsBits) {
  using R = Command::CommandValueReader;
  const auto classify = [](std::uint8_t type) {
    std::string text;
    if (R::IsValueType(type)) text += "value ";
    if (R::IsUnsigned(type)) text += "unsigned ";
    if (R::IsFloatingPoint(type)) text += "floating ";
    if (R::IsArray(type)) text += "array ";
    if (R::IsPoint(type)) text += "point ";
    return text + std::to_string(R::GetDimensions(type)) + "*" + std::to_string(R::GetBytes(type));
  };
  const std::pair<std::uint8_t, const char*> rows[] = {{0x24, "value unsigned 1*1"},
                                                       {0x21, "value 1*2"},
                                                       {0x2B, "value floating 1*8"},
                                                       {0x6B, "value floating point 2*8"},
                                                       {0xA2, "value point 3*4"},
                                                       {0xEB, "value floating point 4*8"},
                                                       {0x35, "value unsigned array 1*2"},
                                                       {0xB2, "value array point 3*4"},
                                                       {0xC0, "4*1"}};
  for (const auto& [type, text] : rows) EXPECT_EQ(classify(type), text) << int{type};
}

TEST(Command, EveryTypeOfValueHasItsBytes) {
  EXPECT_EQ(Hex(With(true, false).GetPayload()), "01 00 00 04 01 01 01 00");
  ExpectValue("24 FE", std::uint8_t{0xFE});
  ExpectValue("21 FE FF", std::int16_t{-2});
  ExpectValue("25 CD AB", std::uint16_t{0xABCD});
  ExpectValue("22 04 03 02 01", 0x01020304);
  ExpectValue("26 FE FF FF FF", 0xFFFFFFFEU);
  ExpectValue("23 FE FF FF FF FF FF FF FF", -2L);
  ExpectValue("27 08 07 06 05 04 03 02 01", 0x0102030405060708UL);
  ExpectValue("2B 00 00 00 00 00 00 F8 3F", 1.5);
  ExpectValue("6B 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 C0", Point2D{1, -2});
  ExpectValue("AB 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 C0 00 00 00 00 00 00 00 00",
              Point3D{1, -2, 0});
  ExpectValue("62 01 00 00 00 FF FF FF FF", Point2DInt{1, -1});
  ExpectValue("A2 01 00 00 00 02 00 00 00 03 00 00 00", Point3DInt{1, 2, 3});
  ExpectValue("E2 01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00", Point4DInt{1, 2, 3, 4});
  ExpectArray<unsigned char>("34 00 00 02 07 08", {7, 8});
  ExpectArray<std::uint16_t>("35 00 00 02 01 00 03 02", {1, 0x203});
  ExpectArray<double>("3B 00 00 01 00 00 00 00 00 00 00 40", {2});
  ExpectArray<double>("3B 00 00 00", {});
  ExpectArray<Point2DInt>("72 00 00 01 01 00 00 00 02 00 00 00", {{1, 2}});
  ExpectArray<Point3DInt>("B2 00 00 01 01 00 00 00 02 00 00 00 03 00 00 00", {{1, 2, 3}});
  ExpectArray<Point2D>("7B 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 F0 3F", {{0, 1}});
  ExpectArray<Point3D>("BB 00 00 00", {});
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
  EXPECT_EQ(command.GetVersion(), 0U);
  EXPECT_EQ(Hex(Command(3, 100).GetPayload()), "01 00 00 00");
  Command half(1, Unsigned("\1"));
  EXPECT_FAILURE(half.Add(true), Malformed);
  EXPECT_EQ(Hex(half.GetPayload()), "01");
}

TEST(Command, TheLimitIsLookedAtWhenThePayloadGrows) {
  // Byte arrays that end the payload here are appended to a command with so much room; whether the last fits.
  // Each may make room for the next, and reserved room is not looked at.
  using Row = std::tuple<unsigned, std::vector<std::size_t>, bool>;
  for (const auto& [reserved, ends, fits] :
       {Row{0, {921596}, true}, Row{0, {1000, 921597}, false}, Row{0, {700000, 921596, 1050000}, true},
        Row{0, {700000, 921596, 1050001}, false}, Row{1000000, {1000004}, true},
        Row{1000000, {1000005}, false}}) {
    Command command(0, reserved);
    for (const std::size_t end : ends) {
      const std::size_t begin = command.GetByteCount();
      const bool taken = fits || end != ends.back();
      EXPECT_FAILURE(command.Add(Zeros(end - begin - 4)), taken ? "no failure" : TooLarge);
      EXPECT_EQ(command.GetByteCount(), taken ? end : begin);
    }
  }
  CommandList list;  // the same there
  EXPECT_FAILURE(list.Append(5, true, Zeros(921597 - 10)), TooLarge);
  EXPECT_EQ(list.GetCommandCount(), 0U);
  list.Append(6, true, Zeros(921596 - 10));
  list.Append(7, Zeros(700000 - 8), 1.0, Zeros(1050000 - 700013));
  EXPECT_EQ(list.At(0).Payload.size(), 921596U);
  EXPECT_EQ(list.At(1).Payload.size(), 1050000U);
}

TEST(CommandValueReader, ReadsInOrderChecksTypesAndReplaces) {
  const std::vector<std::uint16_t> numbers{10, 11};
  Command command = With(7, true, false, 8, std::span(numbers));
  Command::CommandValueReader reader;
  reader.SetNonConstCommand(command);
  reader.ReplaceInt32(-1);
  EXPECT_FAILURE(reader.ReplaceInt32(9), "Command value is of type Bool, not Int32.");
  EXPECT_TRUE(reader.AsBool());
  reader.SkipNext();
  EXPECT_FAILURE(reader.AsArray(), "Command value is of type Int32, not an array.");
  EXPECT_EQ(reader.AsInt32(), 8);
  EXPECT_EQ(Failure([&, array = reader.AsArray()] { array.AsByte(0); }),
            "Command value is of type UInt16Arr, not ByteArr.");
  EXPECT_FAILURE(reader.PeekType(), "Command has no further value.");
  EXPECT_EQ(Hex(command.GetPayload().first(16)), "01 00 00 16 22 FF FF FF FF 01 01 01 00 22 08 00");
  EXPECT_EQ(command.GetValueCount(), 5U);
  reader.SetCommand(command);
  EXPECT_FAILURE(reader.ReplaceInt32(9), "Command is read-only.");
  CommandValueType type = CommandValueType::Invalid;
  EXPECT_TRUE(Command::TryParseValueType("P3IArr", type));
  EXPECT_FALSE(Command::TryParseValueType("UInt16", type));
  EXPECT_EQ(type, CommandValueType::Point3DIntArr);
  // Without a whole header, with another count of bytes, values cut short, an array without its count, one
  // without its element, one that claims 512 MiB, a value of type Invalid behind a good one.
  const auto count = [](const char* payload) {
    const Command received(1, Unsigned(Bytes(payload)));
    return Failure([&] { static_cast<void>(received.GetValueCount()); });
  };
  for (const char* payload : {"01", "01 00 00", "01 00 00 01", "01 00 00 00 01 01", "01 00 00 01 22",
                              "01 00 00 04 22 01 02 03", "01 00 00 03 34 00 00", "01 00 00 04 34 00 00 01",
                              "01 00 00 05 FB FF FF FF 00", "01 00 00 04 01 01 00 00"}) {
    EXPECT_EQ(count(payload), Malformed) << payload;
  }
  EXPECT_EQ(count("01 00 00 02 7F 00"), "CommandValueType::_from_integral: invalid argument");
}

KELVO_ENUM(Sample, std::int32_t, Zero, One, Five = 5, Six, Minus = -3, Shifted = 1 << 4, Same = Five,
           Tight = 0x20, Sum = Five + Shifted, Lowest = -2147483647 - 1, )

TEST(ReflectiveEnum, KnowsItsNamesAndValuesInOrderAndNoOthers) {
  std::string all(Sample::_name());
  for (std::size_t i = 0; i < Sample::_values().size(); ++i) {
    const auto name = Sample::_names()[i];
    all.append(" ").append(name).append("=" + std::to_string(Sample::_values()[i]._to_integral()));
    EXPECT_EQ(Sample::_from_string(name)._to_integral(), Sample::_values()[i]._to_integral());
  }
  EXPECT_EQ(all,
            "Sample Zero=0 One=1 Five=5 Six=6 Minus=-3 Shifted=16 Same=5 Tight=32 Sum=21 Lowest=-2147483648");
  static_assert(Sample::_from_integral(-3) == Sample::Minus);
  EXPECT_EQ(Sample::_from_integral(5)._to_string(), "Five");  // the first of two
  EXPECT_EQ(Sample(static_cast<Sample::_enumerated>(77))._to_string(), "77");
  for (const std::int64_t number : {2L, -1L, 0x7FFFFFFFL, 1L << 32, (1L << 32) + 5}) {
    EXPECT_FAILURE(Sample::_from_integral(number), "Sample::_from_integral: invalid argument");
  }
  for (const char* name : {"", "five", "Five ", "Fiv", "Five = 5", "Zero,"}) {
    EXPECT_FAILURE(Sample::_from_string(name), "Sample::_from_string: invalid argument") << name;
    EXPECT_FALSE(Sample::_from_string_nothrow(name).has_value());
  }
}

KELVO_FLAGS(SampleFlags, std::int32_t, None = 0, Low = 1, High = 0x10, Both = 0x11, Again = 1, Top = 0x20)

TEST(ReflectiveEnum, TakesFlagsByTheirBits) {
  const std::pair<std::int32_t, const char*> rows[] = {
      {0, "None"},        {1, "Low"},   {0x11, "Both"},  {0x31, "Low|High|Top"},
      {0x30, "High|Top"}, {2, nullptr}, {0x13, nullptr}, {-1, nullptr},
  };
  for (const auto& [number, name] : rows) {
    if (name != nullptr)
      EXPECT_EQ(SampleFlags::_from_integral(number)._to_string(), name);
    else
      EXPECT_EQ(Failure([n = number] { SampleFlags::_from_integral(n); }),
                "SampleFlags::_from_integral: invalid argument")
          << number;
  }
  EXPECT_FALSE(SampleFlags::_is_valid((1L << 32) + 1));
  EXPECT_EQ(SampleFlags(static_cast<SampleFlags::_enumerated>(3))._to_string(), "3");
}

TEST(CommandCodes, AreWhatCardsKnowAndEachHasOneMnemonic) {
  const auto check = [](auto values, auto names) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_EQ(CodeOf(names[i]), values[i]._to_integral());
      EXPECT_EQ(MnemonicOf(values[i]._to_integral()), names[i]);
    }
    return values.size();
  };
  EXPECT_EQ(check(CommandCodeAcronym::_values(), CommandCodeAcronym::_names()), 112U);
  EXPECT_EQ(check(CommandCodeAcronym2::_values(), CommandCodeAcronym2::_names()), 41U);
  EXPECT_EQ(CommandCode::_values().size(), 110U);  // two of the ordinary mnemonics are flow control
  EXPECT_EQ(CommandCode2::_values().size(), 43U);
  EXPECT_EQ(MnemonicOf(0x113), std::nullopt);
  EXPECT_EQ(CodeOf("ja"), std::nullopt);
  const std::pair<const char*, std::int32_t> rows[] = {
      {"NO", 0x0},       {"LON", 0x11},      {"LOF", 0x12},     {"SPMR", 0x52},     {"JA", 0x110},
      {"MFSTP3", 0x184}, {"M3R", 0x216},     {"ELLG", 0x434},   {"BEZC3R", 0x4A6},  {"JAS3A", 0x714},
      {"PV3", 0x814},    {"MS", 0x1011},     {"VPD", 0x1029},   {"PSP", 0x1536},    {"SVRL", 0x1623},
      {"UV3", 0x10014},  {"BACF", 0x100115}, {"LOB", 0x100163}, {"EXLC", 0x1002A7}, {"GTSAL", 0x1002A1},
      {"WFS", 0x100310}, {"SUS", 0x100318},  {"J3A", 0x114},    {"SPMA", 0x50},     {"ARCA", 0x310},
      {"PASA", 0x610},   {"UV2", 0x10010},   {"PV2", 0x810},    {"PWR", 0x10},      {"PI", 0x1},
      {"IC", 0x2},       {"STX", 0x1612},
  };
  for (const auto& [mnemonic, code] : rows) EXPECT_EQ(CodeOf(mnemonic), code) << mnemonic;
  // Relative commands and three-dimensional ones differ from their counterparts by a bit.
  const auto countPairs = [](const std::string& part, const char* replacement, std::int32_t bit) {
    int pairs = 0;
    for (const auto listed : CommandCode::_names()) {
      std::string name(listed);
      const std::int32_t code = CommandCode::_from_string(name)._to_integral();
      const std::size_t at = name.find(part);
      if (at != std::string::npos) name.replace(at, part.size(), replacement);
      const auto other = CommandCode::_from_string_nothrow(name);
      pairs += other && (code ^ other->_to_integral()) == bit && (code & bit) != 0;
    }
    return pairs;
  };
  EXPECT_EQ(countPairs("_REL", "_ABS", 0x2), 19);
  EXPECT_EQ(countPairs("_3D", "", 0x4), 20);
}

// As they travel: a whole list, and a piece of one.
std::string Packed(const CommandList& list) {
  return FrameOf(0x02, list).substr(Packet::FullHeaderLen);
}
std::string Packed(const CommandList& list, std::size_t first, std::size_t last) {
  OutputPacket packet = OutputPacket::AllocateNotification();
  PackArgument(packet, ListPiece{list, first, last});
  std::string bytes;
  for (const auto part : packet.CloseInPieces()) bytes.append(part.begin(), part.end());
  return bytes.substr(Packet::FullHeaderLen);
}

TEST(CommandList, TravelsAsItsFieldAndPairs) {
  CommandList list;
  list.AppendJumpAbs(Point2D{1, -2});
  list.AppendLaserOn();
  list.AppendProgress(300);
  EXPECT_EQ(Hex(Packed(list, 0, 0)), "91 FF");
  const std::string jump = "92 CD 01 10 C4 15 01 00 00 11 6B 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 C0";
  const std::string progress = "92 01 C4 09 01 00 00 05 22 2C 01 00 00";
  EXPECT_EQ(Hex(Packed(list)), "94 FF " + jump + " 92 11 C4 00 " + progress);
  list.SetListField(70000);
  EXPECT_EQ(Hex(Packed(list, 1, 3)), "93 CE 00 01 11 70 92 11 C4 00 " + progress);
  for (const char* row : {"C0", "90", "91 C0", "91 A1 31", "92 FF 07", "92 FF 91 01", "92 FF 93 01 C4 00 C0",
                          "92 FF 92 A1 31 C4 00", "92 FF 92 01 A0", "92 FF 92 CE 80 00 00 00 C4 00"}) {
    EXPECT_THROW(list = Unpacked<CommandList>(Bytes(row)), msgpack::type_error) << row;
    EXPECT_EQ(list.GetCommandCount(), 3U);
  }
  EXPECT_EQ(Unpacked<CommandList>(Bytes("92 05 92 CC 80 C4 00")).GetListField(), 5);
}

TEST(CommandList, EveryCodeAndPayloadTravelsThereAndBack) {
  CommandList list;
  msgpack::sbuffer expected;
  msgpack::packer packer(expected);
  packer.pack_array(17 * 6 + 1).pack(-1);
  for (const std::int32_t code : {0, 1, 0x7F, 0x80, 0xFF, 0x100, 0xFFFF, 0x10000, INT32_MAX, -1, -0x20, -0x21,
                                  -0x80, -0x81, -0x8000, -0x8001, INT32_MIN}) {
    for (const std::size_t size : {0U, 1U, 255U, 256U, 65535U, 65536U}) {
      list.Append({code, Zeros(size)});
      packer.pack_array(2).pack(code).pack(std::vector<unsigned char>(size));
    }
  }
  ASSERT_TRUE(Packed(list) == std::string(expected.data(), expected.size()));
  CommandList received = Unpacked<CommandList>(Packed(list));
  EXPECT_TRUE(Packed(received) == Packed(list));
  received.Append(received);
  std::size_t i = 0;
  received.ForEach([&](const CommandView& command) {
    EXPECT_EQ(command.Payload.data(), received.At(i).Payload.data());
    EXPECT_EQ(command.Code, list.At(i++ % (17 * 6)).Code);
  });
  EXPECT_EQ(i, 2 * 17 * 6U);
  EXPECT_THROW(static_cast<void>(received.At(i)), std::out_of_range);
}

TEST(CommandList, ACopyIsASnapshot) {
  CommandList lists[2];
  const auto append = [&](std::uint32_t i, int from) {
    for (int value = from; value < from + 100; ++value) lists[i].AppendProgress(value);
  };
  append(0, 0);
  lists[1] = lists[0];
  Together(2, [&](std::uint32_t i) { append(i, i == 0 ? 1000 : 2000); });  // as an upload and an append do
  CommandList(lists[0]).Clear();
  for (int i = 0; i < 400; ++i) {
    Command::CommandValueReader reader(lists[i / 200].At(static_cast<std::size_t>(i % 200)).Payload);
    ASSERT_EQ(reader.AsInt32(), i % 200 < 100 ? i % 200 : i % 100 + (i < 200 ? 1000 : 2000));
  }
}

// Uploads `list`, whose loops are closed; "append" and the number of commands of every call.
std::string Upload(CommandList& list, bool append) {
  CallRecorder caller;
  ListEvents events;
  std::string text = Failure([&] { ListAPI(caller, events).Set(3, list, append, 8); });
  if (text == "no failure") text.clear();
  for (const std::string& call : caller.Calls) {
    const auto [id, chunk, appends] = Unpacked<std::tuple<std::int32_t, CommandList, bool>>(call);
    EXPECT_EQ(id * 10 + chunk.GetListField(), 38);
    text += (appends ? " +" : " ") + std::to_string(chunk.GetCommandCount());
  }
  return text;
}

TEST(CommandList, LoopsAreCountedAndHardlyChecked) {
  CommandList list;
  EXPECT_FAILURE(list.AppendLoopBreak(), "No loop opened!");
  list.AppendLoopStart(5);
  list.AppendLoopStart(6);
  list.AppendLoopBreak();
  for (int i = 0; i < 3; ++i) list.AppendLoopEnd();  // one too many: appended all the same
  EXPECT_EQ(Upload(list, false), "There are open loops inside the list!");
  EXPECT_FAILURE(list.AppendLoopBreak(), "No loop opened!");
  list.AppendLoopStart(7);
  EXPECT_EQ(list.ToString(),
            "[ { LOS, I32[ 5 ], I32[ 1 ] }, { LOS, I32[ 6 ], I32[ 2 ] }, { LOB }, { LOE, I32[ 2 ] }, "
            "{ LOE, I32[ 1 ] }, { LOE, I32[ 0 ] }, { LOS, I32[ 7 ], I32[ 0 ] } ]");
}

TEST(LabelList, RefusesAReferenceFromACommandThatHasNoPosition) {
  PackedCommands commands;
  commands.Append(17);
  commands.Append(17);
  commands.Append(1, 5);
  LabelList labels;
  labels.AddDeclaration("end", 3);
  labels.AddReference("end", 2);
  EXPECT_FAILURE(labels.Resolve(commands), "Label 'end' apparently referenced from invalid '1' at 2");
}

TEST(CommandList, AReferenceToALabelThatFoundNoMemoryIsNone) {
  bool hasFailed = true;
  for (int allocations = 0; hasFailed; ++allocations) {
    CommandList list;
    {
      const FailingMemory memory(allocations);
      hasFailed = Failure([&] { list.AppendBranchToLabel("a name that takes memory"); }) != "no failure";
    }
    EXPECT_EQ(Failure([&] { list.ResolveBranchesAndLabels(); }) == "no failure", hasFailed) << allocations;
  }
}

TEST(ListAPI, AnUploadIsCutWhereItsBytesAreFull) {  // 921600, with 4 for each command
  using Row = std::pair<std::vector<std::size_t>, std::string>;
  for (const auto& [payloads, calls] :
       {Row{{}, "0"}, Row{{921596, 0}, "1 +1"}, Row{{300000, 300000, 321588}, "3"},
        Row{{300000, 300000, 321589}, "2 +1"}, Row{std::vector<std::size_t>(230400), "230400"},
        Row{std::vector<std::size_t>(230401), "230400 +1"},
        Row{std::vector<std::size_t>(25, 100000), "9 +9 +7"}}) {
    CommandList list;
    for (const std::size_t size : payloads) list.Append({1, Zeros(size)});
    EXPECT_EQ(Upload(list, false), " " + calls);
    EXPECT_EQ(Upload(list, true), " +" + calls);
    list.Append({1, Zeros(921597)});
    EXPECT_EQ(Upload(list, false),  // before anything is sent
              "Command " + std::to_string(payloads.size()) + " is too large to be uploaded.");
  }
}

TEST(Font, TravelsAsItsIdAndItsGlyphsAndReadsAsTheCharactersWithTheirCommands) {
  Font font(300);
  font.CharContainer[0x20AC].AppendLaserOn();
  font.CharContainer['A'].AppendProgress(7);
  font.CharContainer['A'].AppendLaserOff();
  font.CharContainer[' '] = font.CharContainer[0xD800] = font.CharContainer[0xE9] = CommandList();
  const std::string bytes =
      "92 CD 01 2C 85 20 90 41 92 92 01 C4 09 01 00 00 05 22 07 00 00 00 92 12 C4 00 CC E9 90 "
      "CD 20 AC 91 92 11 C4 00 CD D8 00 90";
  const std::string text =
      "CharContainer=[ ]{  }[A]{ { PI, I32[ 7 ] }, { LOF } }[\u00E9]{  }[\u20AC]{ { LON } }[\uFFFD]{  }";
  CallRecorder caller;
  FontAPI(caller).Set(font);
  EXPECT_EQ(Hex(caller.Calls.at(0)), "91 " + bytes);
  EXPECT_EQ(to_string(Unpacked<Font>(Bytes(bytes))), text);
  for (const char* row :
       {"C0", "91 01", "93 01 80 C0", "92 A1 31 80", "92 CE 80 00 00 00 80", "92 01 90", "92 01 81 FF 90",
        "92 01 81 CE 00 01 00 00 90", "92 01 81 A1 41 90", "92 01 82 41 90 41 90", "92 01 81 41 C0",
        "92 01 81 41 80", "92 01 81 41 91 FF", "92 01 81 41 91 92 01 A0", "92 01 81 41 91 93 01 C4 00 C0"}) {
    EXPECT_THROW(font = Unpacked<Font>(Bytes(row)), msgpack::type_error) << row;
  }
  EXPECT_EQ(std::to_string(font.Id) + font.ToString(), "300" + text);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
