// The text form of commands and lists, there and back.
#include <limits>
#include <locale>

#include "Helpers.h"
#include "lists/CommandCodes.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::Test {
namespace {

// Each row of a table is texts, " => " and what is made of them; the texts are apart by " | ".
void ForEachText(std::string_view table, auto&& check) {
  for (std::size_t end = 0; (end = table.find('\n', 1)) != table.npos; table.remove_prefix(end)) {
    const std::string_view row = table.substr(1, end - 1);
    const std::size_t arrow = row.find(" => ");
    for (std::string_view texts = row.substr(0, arrow); !texts.empty();) {
      const std::string_view text = texts.substr(0, texts.find(" | "));
      SCOPED_TRACE(text);
      check(text, std::string(row.substr(arrow + 4)));
      texts.remove_prefix(std::min(text.size() + 3, texts.size()));
    }
  }
}

TEST(CommandText, OfACommandIsReadInEveryShapeAndWithNothingElseInIt) {
  EXPECT_EQ(Command::FromString("\n {\v[\fLON\r]\t}\n").ToString(), "{ LON }");
  const auto check = [](std::string_view text, const std::string& expected) {
    std::string written;
    const std::string failure = Failure([&] { written = Command::FromMatch(text).ToString(); });
    EXPECT_EQ(failure == "no failure" ? written : failure, expected);
  };
  ForEachText(R"(
{LON} | {LON]} | {[LON } | { LON, V1 } => { LON }
{MA,P2D[X=1 Y=-2.5]} | {[MA,P2D[1,-25e-1] ]} | {MA , V001,P2D [1-2.5]]} | {MA,P2D[X = +1.0Y=-.25E+1]} => { MA, P2D[ X=1 Y=-2.5 ] }
{NO,V255} => { NO, V255 }
{NO,V0,I32[+7]} => { NO, V0, I32[ 7 ] }
{NO,F64[-1e-400],F64[0.01e-99999999999999999999]} => { NO, F64[ -0 ], F64[ 0 ] }
{NO,U16Arr[1,2 ,, 3],ByteArr[]} => { NO, U16Arr[ 1 2 3  ], ByteArr[  ] }
{NO,P2IArr[(1 2)(X=3,Y=4) 5 6]} => { NO, P2IArr[ ( X=1 Y=2 ) ( X=3 Y=4 ) ( X=5 Y=6 )  ] }
{} | {LON} x | {275} | {LON, Unsupported value} | {[[LON} | {XY, Z[1], } | {LON, V1.5} | {LON, A[} => Unable to parse command
{XY, F64[x]} | {lon} => Unable to parse command code
{MA,P2D[X=1 Y=]} | {MA,P2D[Y=1 X=2]} | {MA,P2DArr[(1)]} | {MA,P3D[1 2]} => Unable to parse Point.
{MA,P2D[1 2 3]} => Unable to parse value P2D[ 1 2 3 ]: more than a value
{NO,F64[ 5. ]} => Unable to parse value F64[ 5. ]: more than a value
{NO,F64[ -inf ]} => Unable to parse value F64[ -inf ]: not a finite number
{NO,F64[100e307]} => Unable to parse value F64[ 100e307 ]: too large
{NO,Byte[256]} => Unable to parse value Byte[ 256 ]: not a whole number that fits
{NO,P2I[1 2e0]} => Unable to parse value P2I[ 1 2e0 ]: not a whole number that fits
{NO,Bool[true]} => Unable to parse value Bool[ true ]: neither True nor False
{NO,V1[1]} => Unable to parse value V1[ 1 ]: of an unknown type
{NO,Invalid[]} => Unable to parse value Invalid[  ]: of an unknown type
{NO,P4DArr[]} => Unable to parse value P4DArr[  ]: of a type that has no text
{NO,P2DArr[(1 2]} => Unable to parse value P2DArr[ (1 2 ]: a parenthesis that is not closed
{NO,V256} => Unable to parse version 256: more than 255
)",
              check);
}

TEST(CommandText, OfAListIsTakenWholeOrNotAtAll) {
  ForEachText(R"(
[] |  [ ]  => [  ]
{LON} | [,{LON},] => [ { LON } ]
[{LOE}{LOF},,{NO}] => [ { LOE }, { LOF }, { NO } ]
  | , | [,] | [ {LON} | {LON} ] | [[ {LON} ]] | [{LON}; {LOF}] | {LON}, {LOF => Unable to parse command
{NO},{NO, F64[40 characters are shown of what is read]} => Unable to parse value F64[ 40 characters are shown of what is r... of command 1: more than a value
)",
              [](std::string_view text, const std::string& expected) {
                CommandList list;
                list.AppendLoopStart(1);
                const auto failure = Failure([&] { Command::AppendCommandsFromString(text, list); });
                const bool read = failure == "no failure";
                EXPECT_EQ(read ? CommandList::FromString(text).ToString() : failure, expected);
                EXPECT_EQ(list.GetCommandCount(),
                          1 + (read ? CommandList::FromString(text).GetCommandCount() : 0));
                EXPECT_EQ(list.GetLoopDepth(), 1);
              });
}

// Numbers with commas and points everywhere, whatever locales are installed.
struct Commas : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

void AppendArrays(CommandList& list, const auto&... elements) {
  list.Append(1, std::span(&elements, 1)..., std::span(&elements, 0)...);
}

TEST(CommandText, EveryCodeAndValueComesBackBitForBitInAnyLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
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
  const CommandList read = CommandList::FromString(list.ToString());
  std::locale::global(before);
  ASSERT_EQ(read.GetCommandCount(), list.GetCommandCount());
  for (std::size_t i = 0; i < list.GetCommandCount(); ++i) {
    EXPECT_EQ(read.At(i).Code, list.At(i).Code);
    EXPECT_EQ(Hex(read.At(i).Payload), Hex(list.At(i).Payload)) << list.At(i).ToString();
  }
}

TEST(CommandText, WhatHasNoTextIsShownAsSuch) {
  CommandList list;
  list.Append(275, std::numeric_limits<double>::quiet_NaN(), -1 / 0.0, std::span<const Point4D>(), 1);
  for (const char* payload : {"01", "01 00 00 02 7F 00", "09 00 00 05 01 07 22 01 02"}) {
    list.Append({1, Unsigned(Bytes(payload))});
  }
  EXPECT_EQ(list.ToString(),
            "[ { 275, F64[ nan ], F64[ -inf ], Unsupported value, I32[ 1 ] }, { PI, Unsupported value }, "
            "{ PI, Unsupported value }, { PI, V9, Bool[ True ], Unsupported value } ]");
}

// The shortest of a few attempts to read a text that is as long as its part between the asterisks is repeated.
double TimeOf(const std::string& pattern, std::size_t size) {
  const std::size_t begin = pattern.find('*');
  const std::size_t end = pattern.rfind('*');
  std::string text = pattern.substr(0, begin);
  while (text.size() < size) text.append(pattern, begin + 1, end - begin - 1);
  text.append(pattern, end + 1);
  double shortest = 1e9;
  for (int i = 0; i < 3; ++i) {
    const Stopwatch stopwatch;
    Failure([&] { CommandList::FromString(text); });
    shortest = std::min(shortest, stopwatch.Milliseconds());
  }
  return shortest;
}

TEST(CommandText, TakesTimeAsItIsLong) {
  ForEachText(R"(
*{ MA, P2D[ X=0.1234567 Y=-7 ] }, * | {NO*,P2DArr[]*} | {NO*,P2D[(]*} | {LON, *, *} | {*x* | [* * => a list
*[* | *{* | *{LON, A[* | {*{LON, A[*]} | {NO*,V1*} | {LON*]*} | {LON,V*0*1} => no command
{NO,ByteArr[*7 *]} | {NO,F64Arr[*7e-9*]} | {NO,P2D[*X=1 *]} | {NO,P2DArr[*(1 2)*]} | {NO,F64[* *1]} => an array
{NO,F64[*1*]} | {NO,F64[.*0*]} | {NO,F64[1e*1*]} | {NO,I32[*-*]} => a number
)",
              [](std::string_view text, const std::string&) {
                const std::string pattern(text);
                EXPECT_LT(TimeOf(pattern, 8000000), 24 * TimeOf(pattern, 1000000) + 1);
              });
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
