// The text form of commands and lists, there and back.
#include <bit>
#include <charconv>

#include "Helpers.h"
#include "lists/CommandCodes.h"
#include "lists/CommandList.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::Test {
namespace {

// Calls `check` with each text of a table and what its row has it make. A row is "text | text => outcome".
void ForEachText(const char* table, auto&& check) {
  std::istringstream rows(table);
  for (std::string row; std::getline(rows, row);) {
    const std::size_t arrow = row.find(" => ");
    for (std::size_t begin = 0, end = 0; begin < arrow; begin = end + 3) {
      end = std::min(row.find(" | ", begin), arrow);
      SCOPED_TRACE(row.substr(begin, end - begin));
      check(row.substr(begin, end - begin), row.substr(arrow + 4));
    }
  }
}

TEST(CommandText, OfACommandIsReadInEveryShapeAndWithNothingElseInIt) {
  EXPECT_EQ(Command::FromString("\n {\v[\fLON\r]\t}\n").ToString(), "{ LON }");
  const auto check = [](const std::string& text, const std::string& expected) {
    std::string result;
    const std::string failure = Failure([&] { result = Command::FromMatch(text).ToString(); });
    if (result.empty()) result = expected.starts_with(":") ? failure.substr(failure.find(": ")) : failure;
    EXPECT_EQ(result, expected);
  };
  ForEachText(R"({LON} | {LON]} | {[LON } | { LON, V1 } => { LON }
{MA,P2D[X=1 Y=-2.5]} | {[MA,P2D[1,-25e-1] ]} | {MA , V001,P2D [1-2.5]]} | {MA,P2D[X = +1.0Y=-.25E+1]} => { MA, P2D[ X=1 Y=-2.5 ] }
{MA,P2D[1;2]} | {MA,P2D[(1,2)]} | {MA,P2D[X:1 Y:2]} | {MA,P2D[x=1 y=2]} | {MA,P2D[Y=1 X=2]} | {MA,P2D[--+1+2.]} => { MA, P2D[ X=1 Y=2 ] }
{MA,P2D[[1,2]]} | {MA,V1,P2D[at 1e mm; (2) ]} | {MA,P2D[ = 1 Y 2 e]} | {MA,P2D[X=1,Y:2{}]} | {MA,P2D[:1. .. 2e+;]} => { MA, P2D[ X=1 Y=2 ] }
{NO,ByteArr[1; 2; 3;],U16Arr[(1. 2e)],F64Arr[1.2.3e5-e1]} => { NO, ByteArr[ 1 2 3  ], U16Arr[ 1 2  ], F64Arr[ 1.2 30000 1  ] }
{NO,F64[5.],I32[= 7 mm],P2IArr[1 2 3) 4 ;],P3D[1 2 3;]} => { NO, F64[ 5 ], I32[ 7 ], P2IArr[ ( X=1 Y=2 ) ( X=3 Y=4 )  ], P3D[ X=1 Y=2 Z=3 ] }
{NO,V0255} => { NO, V255 }
{NO,F64[;.5]} | {NO,F64[mm .5]} => { NO, F64[ 0.5 ] }
{NO,F64[-1e-400],F64[0.01e-99999999999999999999],U16Arr[1,2 ,, 3],ByteArr[]} => { NO, F64[ -0 ], F64[ 0 ], U16Arr[ 1 2 3  ], ByteArr[  ] }
{NO,V0,I32[+7],P2IArr[(1 2)(X=3,Y=4) 5 6]} => { NO, V0, I32[ 7 ], P2IArr[ ( X=1 Y=2 ) ( X=3 Y=4 ) ( X=5 Y=6 )  ] }
{} | {LON} x | {275} | {LON, Unsupported value} | {[[LON} | {XY, Z[1], } | {LON, V1.5} | {LON, A[} => Unable to parse command
{XY, F64[x]} | {lon} | {SKMMEMCHX} => Unable to parse command code
{MA,P2D[X=1 Y=]} | {MA,P2D[1;]} | {MA,P2DArr[(1)]} | {MA,P3D[1 2]} | {MA,P2D[X=nan Y=1 Z=2]} | {MA,P2D[]} | {MA,P2DArr[()]} | {NO,P2DArr[(1 2 3)]} => Unable to parse Point.
{NO,F64[-inf]} | {NO,F64[nan]} | {NO,F64[x]} | {NO,F64Arr[1 nan]} | {NO,F64Arr[-Infinity;1]} | {NO,F64[1e1INF]} | {NO,F64Arr[,]} => : not a finite number
{MA,P2D[1 2 3]} | {MA,P2D[X1=5 X2=6]} | {NO,F64[5.e3]} | {NO,I32[1 2]} | {NO,F64[1,5]} | {NO,I32[1-2]} | {NO,Bool[True;]} | {NO,Bool[True False]} => : more than a value
{NO,F64[100e307]} | {NO,F64[0.1e99999999999999999999]} => : too large
{NO,Byte[256]} | {NO,U64[-1]} | {NO,P2I[1 2e0]} | {NO,I16[]} | {NO,I32[1.0]} | {NO,I32[1e+0]} | {NO,ByteArr[1-2]} | {NO,ByteArr[a]} => : not a whole number that fits
{NO,Bool[true]} | {NO,Bool[1]} => : neither True nor False
{NO,V1[1]} | {NO,Invalid[0]} | {NO,UInt16[1]} => : of an unknown type
{NO,P4DArr[]} | {NO,P4IArr[(1 2 3 4)]} => : of a type that has no text
{NO,V256} | {NO,V99999999999999999999} => : more than 255
)",
              check);
}

// Commands that repeat the form of the one before are read and written by that form.
TEST(CommandText, OfACommandInAListIsThatOfTheCommandAlone) {
  const std::string usual[] = {"{ MA, P2D[ X=1 Y=-2.5 ] }", "{ NO, F64[ 0.25 ] }", "{LOS,I32[7]}",
                               "{NO,P3D[1,2,3]}", "{ JS, F64[1.5e2] }"};
  const char* unusual = R"({ MA, P2D[ X=31 Y=4 ] } | { MA, P2D[ X=3.  Y=4 ] } | { MA, P2D[ X=3.Y=4 ] } => any
{ MA, P2D[ X=3 Y=4 5 ] } | { MA, P2D[ X=3e1 Y=-.4 ] } | { MA, P2D[ X=+3 Y=4 ]} => any
{ MA, P2D[ X=3 Y=12345678901234567890.5 ] } | { MA, P2D[ X=3 Y=nan ] } | { MA, P2D[ X=- Y=4 ] } => any
{ JA, P2D[ X=3 Y=4 ] } | { MA, P2D[ X=3 Y=4 ], I32[ 1 ] } | { MA, P3D[ X=3 Y=4 ] } => any
{ NO, F64[ 7 ] } | { NO, F64[ .5 ] } | { NO, F64[ 1e-310 ] } | {LOS,I32[-8]} | {LOS,I32[7.]} => any
{LOS,I32[7.0]} | {LOS,I32[7e1]} | {LOS,I32[2147483648]} | {NO,P3D[7,8,9]} | {NO,P3D[7,8]} => any
{NO,P3D[7,8,9e2]} | { JS, F64[2.5e3] } | { JS, F64[2.5e] } => any
)";
  const auto check = [&](const std::string& text, const std::string&) {
    std::string expected;
    const std::string failure = Failure([&] { expected = Command::FromString(text).ToString(); });
    for (const std::string& command : usual) {
      const std::string before = Command::FromString(command).ToString();
      const std::string list = command + command + command + text + text + command;
      std::string read;
      const std::string refused = Failure([&] { read = CommandList::FromString(list).ToString(); });
      EXPECT_EQ(refused == "no failure", failure == "no failure") << command;
      if (refused != "no failure") continue;
      EXPECT_EQ(read, "[ " + before + ", " + before + ", " + before + ", " + expected + ", " + expected +
                          ", " + before + " ]");
    }
  };
  ForEachText(unusual, check);
  for (const std::string& text : usual) check(text, "any");
}

TEST(CommandText, OfNumbersIsThatOfTheStandardLibraryToTheLastBit) {
  std::mt19937_64 random(7);
  const auto power = [&](unsigned most) {
    return std::pow(10.0, static_cast<double>(random() % (most + 1)));
  };
  for (int i = 0; i < 300000; ++i) {
    const auto bits = static_cast<double>(static_cast<std::int64_t>(random()) >> random() % 64);
    const double values[] = {std::bit_cast<double>(random()),
                             bits / power(20),
                             std::round(bits / power(18)) / power(7),
                             bits / 1e6,
                             -0.0,
                             1e5,
                             0.001,
                             1e9,
                             999999999.999999};
    const double value = values[static_cast<std::size_t>(i) % std::size(values)];
    if (!std::isfinite(value)) continue;
    char text[400];
    const std::string written(text, std::to_chars(text, std::end(text), value).ptr);
    Command command(1);
    command.Add(value);
    ASSERT_EQ(command.ToString(), "{ PI, F64[ " + written + " ] }");
    // Digits enough or too few, so that many lie next to the middle of two numbers.
    const int length = std::snprintf(text, sizeof text, "%.*f", static_cast<int>(random() % 18), value);
    double expected = 0;
    std::from_chars(text, text + length, expected);
    const CommandList list = CommandList::FromString("{PI,F64[" + std::string(text) + "]}");
    Command::CommandValueReader reader(list.At(0).Payload);
    ASSERT_EQ(std::bit_cast<std::uint64_t>(reader.AsDouble()), std::bit_cast<std::uint64_t>(expected))
        << text;
  }
  // Halfway between two numbers the even one is taken; a digit more decides.
  for (const char* text :
       {"9007199254740993.0", "9007199254740993.01", "9007199254740995.0", "4503599627370497.5",
        "4503599627370498.5", "4503599627370497.51", "4503599627370497.49"}) {
    double expected = 0;
    std::from_chars(text, text + std::strlen(text), expected);
    EXPECT_EQ(Command::FromString("{PI,F64[" + std::string(text) + "]}").ToString(),
              Command::FromString("{PI,F64[" + std::to_string(static_cast<std::int64_t>(expected)) + "]}")
                  .ToString());
  }
}

TEST(CommandText, OfAListIsTakenWholeOrNotAtAll) {
  const auto check = [](const std::string& text, const std::string& expected) {
    CommandList list;
    list.AppendLoopStart(1);
    const auto failure = Failure([&] { Command::AppendCommandsFromString(text, list); });
    const CommandList read = failure == "no failure" ? CommandList::FromString(text) : CommandList();
    EXPECT_EQ(failure == "no failure" ? read.ToString() : failure, expected);
    EXPECT_EQ(list.GetCommandCount(), 1 + read.GetCommandCount());
    EXPECT_EQ(list.GetLoopDepth(), 1);
  };
  ForEachText(R"([] |  [ ]  => [  ]
[{LOE}{LOF},,{NO}] => [ { LOE }, { LOF }, { NO } ]
  | , | [,] | [ {LON} | {LON} ] | [[ {LON} ]] | [{LON}; {LOF}] | {LON}, {LOF => Unable to parse command
{NO},{NO,F64[40 characters are shown of what is read.1]} => Unable to parse value F64[40 characters are shown of what is read.... of command 1: more than a value
)",
              check);
}

void AppendArrays(CommandList& list, const auto&... elements) {
  list.Append(1, std::span(&elements, 1)..., std::span(&elements, 0)...);
}

TEST(CommandText, EveryCodeAndValueComesBackBitForBitInAnyLocale) {
  const CommaLocale commas;
  CommandList list;
  for (const auto code : CommandCode::_values()) list.Append(code, Point2D{code._to_integral() / 7.0, 0.1});
  for (const auto code : CommandCode2::_values()) list.Append(code);
  for (const double d : {5e-324, 2.2250738585072011e-308, 2.2250738585072014e-308, 1.7976931348623157e308,
                         -0.0, 0.1, -1 / 3.0, 1e22, 1e23, 9007199254740993.0}) {
    list.Append(1, d, -d, Point3D{d, 1, -d}, Point4D{d, 0, d, 1}, -1, true);
    AppendArrays(list, d, Point2D{d, -d}, Point3D{d, 0, 1});
  }
  list.Append(1, std::uint8_t{255}, std::int16_t{-32768}, std::uint16_t{65535}, INT32_MIN, UINT32_MAX,
              INT64_MIN, UINT64_MAX, false, Point2DInt{INT32_MIN, 1}, Point3DInt{1, 2, INT32_MAX},
              Point4DInt{4, 3, 2, 1});
  AppendArrays(list, std::uint8_t{255}, std::uint16_t{65535}, Point2DInt{1, -1}, Point3DInt{1, 2, 3});
  CommandList read = CommandList::FromString(list.ToString());
  EXPECT_EQ(Hex(read.Bytes()), Hex(list.Bytes())) << list.ToString();
}

TEST(CommandText, OfEveryTypeOfValueIsThis) {
  CommandList list;
  list.Append(1, std::uint8_t{200}, std::int16_t{-300}, std::uint16_t{65535}, -70000, 4000000000U, true);
  list.Append(2, std::int64_t{-5000000000}, std::uint64_t{18446744073709551615U}, 0.5);
  list.Append(3, Point2D{1, -2}, Point3D{3, 4, -5}, Point4D{6, 7, 8, -9});
  list.Append(4, Point2DInt{1, -2}, Point3DInt{3, 4, -5}, Point4DInt{6, 7, 8, -9});
  EXPECT_EQ(
      list.ToString(),
      "[ { PI, Byte[ 200 ], I16[ -300 ], U16[ 65535 ], I32[ -70000 ], U32[ 4000000000 ], Bool[ True ] }, "
      "{ IC, I64[ -5000000000 ], U64[ 18446744073709551615 ], F64[ 0.5 ] }, "
      "{ SL, P2D[ X=1 Y=-2 ], P3D[ X=3 Y=4 Z=-5 ], P4D[ X=6 Y=7 Z=8 M=-9 ] }, "
      "{ BVS, P2I[ X=1 Y=-2 ], P3I[ X=3 Y=4 Z=-5 ], P4I[ X=6 Y=7 Z=8 M=-9 ] } ]");
}

TEST(CommandText, WhatHasNoTextIsShownAsSuch) {
  CommandList list;
  list.Append(275, std::numeric_limits<double>::quiet_NaN(), -1 / 0.0, std::span<const Point4D>(), 1);
  list.Append({1, Unsigned(Bytes("09 00 00 05 01 07 22 01 02"))});
  EXPECT_EQ(list.ToString(),
            "[ { 275, F64[ nan ], F64[ -inf ], Unsupported value, I32[ 1 ] }, "
            "{ PI, V9, Bool[ True ], Unsupported value } ]");
}

// Reads a text whose part between the asterisks is repeated up to a length; the shortest time of a few.
double TimeOf(const std::string& pattern, std::size_t size) {
  const std::size_t begin = pattern.find('*');
  const std::size_t end = pattern.rfind('*');
  std::string text = pattern.substr(0, begin);
  while (text.size() < size) text.append(pattern, begin + 1, end - begin - 1);
  text.append(pattern, end + 1);
  double shortest = 1e9;
  for (int i = 0; i < 3; ++i) {
    const double begun = ComputingTime();
    Failure([&] { CommandList::FromString(text); });
    shortest = std::min(shortest, ComputingTime() - begun);
  }
  return shortest;
}

TEST(CommandText, TakesTimeAsItIsLong) {
  SKIP_UNDER_THREAD_SANITIZER();
  const auto check = [](const std::string& pattern, const std::string&) {
    EXPECT_LT(TimeOf(pattern, 8000000), 24 * TimeOf(pattern, 1000000) + 1);
  };
  ForEachText(
      R"(*{ MA, P2D[ X=0.1234567 Y=-7 ] }, * | {NO*,P2DArr[]*} | {NO*,P2D[(]*} | {LON, *, *} | {*x* | [* * | *[* | *{* | *{LON, A[* | {*{LON, A[*]} | {NO*,V1*} | {LON*]*} | {LON,V*0*1} => linear
{NO,ByteArr[*7 *]} | {NO,F64Arr[*7e-9*]} | {NO,P2D[*X=1 *]} | {NO,P2DArr[*(1 2)*]} | {NO,F64[* *1]} => linear
{NO,F64[*;*]} | {NO,P2D[x*-*]} | {NO,F64Arr[1*in*]} | {NO,U16Arr[*1;*]} | {NO,F64[*1*]} | {NO,F64[.*0*]} | {NO,F64[1e*1*]} | {NO,I32[*-*]} => linear
)",
      check);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
