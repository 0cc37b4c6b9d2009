// The variables of the virtual card's lists, its mark counters and the times that it marks.
#include <functional>

#include "int/CardClient.h"
#include "peripherals/VariableAPI.h"
#include "services/Font.h"
#include "support/Process.h"
#include "surroundings/MarkTimeFormat.h"

namespace VELTRO::KELVO::Test {
namespace {

constexpr auto Least = std::numeric_limits<std::int32_t>::min();
constexpr auto Greatest = std::numeric_limits<std::int32_t>::max();

// Lists name variables by their hashes: "@" is that of "a".
Text WithIds(Text text) {
  for (std::size_t at = 0; (at = text.find('@')) != Text::npos;) text.replace(at, 1, "U32:3826002220");
  return text;
}

Text All(VariableAPI& variables) {
  Text text;
  for (const CardVariable& v : variables.GetAll()) {
    text += Text(v.Kind._to_string()) + " " + std::to_string(v.Id) + " " + v.VariableName + "=" +
            std::to_string(v.Value) + "\n";
  }
  return text;
}

// As an API without a connection of its own.
MarkCounter Counter(int start, int step, int minimum, int maximum) {
  MarkCounter counter;
  counter.Start = start, counter.Step = step, counter.Minimum = minimum, counter.Maximum = maximum;
  return counter;
}

TEST(VirtualCardVariables, AreTheSameForListsAndClients) {
  const CardProcess card({"--speed", "max"});
  Client client(card);
  VariableAPI variables(client);
  EXPECT_EQ(std::pair(variables.GetBoolean("a"), variables.GetInteger("a")), std::pair(false, 0));
  EXPECT_EQ(All(variables), "") << "who asks makes none";
  variables.SetBoolean("a", true), variables.SetInteger("a", -42), variables.SetMarkCounter("b", {});
  EXPECT_EQ(client
                .Run(WithIds("BACF 2 @ true PI 1 SWIV 0 @ CASGR 2 -42 PI 2 IVS @ 7 IC @ BVS U32:5 true "
                             "IVS U32:6 9 SIS @ PI 3"))
                .front(),
            "progress 3");
  EXPECT_EQ(variables.GetInteger("a"), 8);
  EXPECT_EQ(All(variables),
            "Boolean 5 =1\nBoolean 3826002220 a=1\nInteger 6 =9\nInteger 3826002220 a=8\nMarkCounter "
            "3876335077 b=0\n");
  client.Call("ResetExecution");
  EXPECT_EQ(All(variables), "MarkCounter 3876335077 b=0\n");
  const Text longest(255, 'n');
  variables.SetBoolean(longest, true);
  EXPECT_EQ(All(variables).substr(0, 7), "Boolean");
  const auto refused = [&](const char* method, const auto&... values) {
    for (const Text& name : {Text(), longest + "n"}) {
      EXPECT_EQ(client.Refusal(method, name, values...), "The name of a variable has 1 to 255 bytes.");
    }
  };
  refused("SetBooleanVariable", true), refused("GetBooleanVariable"), refused("SetIntegerVariable", 1);
  refused("GetIntegerVariable"), refused("SetMarkCounter", MarkCounter()), refused("GetMarkCounter");
  refused("ResetMarkCounter");
}

TEST(VirtualCardVariables, AreAThousandInNoTimeAndNoMoreThanThereIsRoomFor) {
  const CardProcess card({"--speed", "max"});
  Client client(card);
  VariableAPI variables(client);
  constexpr double Most = Sanitized ? 10000 : 1000;
  double best = HUGE_VAL;
  std::vector<CardVariable> all;
  for (int tries = 0; tries < 5 && best >= Most; ++tries) {
    const Stopwatch watch;
    for (int i = 0; i < 1000; ++i) variables.SetInteger("v" + std::to_string(i), i);
    all = variables.GetAll();
    best = std::min(best, watch.Milliseconds());
  }
  EXPECT_LT(best, Most);
  ASSERT_EQ(all.size(), 1000U);
  for (const CardVariable& v : all) {
    EXPECT_EQ(v.VariableName, "v" + std::to_string(v.Value));
    EXPECT_EQ(v.Id, VariableId(v.VariableName));
  }
  EXPECT_TRUE(std::ranges::is_sorted(all, {}, &CardVariable::Id));
  CommandList list;
  for (std::uint32_t id = 0; id < 65536; ++id) {
    list.Append(CommandCode::INCR_COUNTER, id);
  }
  client.Lists.Set(1, list, false, -1);
  client.Lists.Execute(1);
  EXPECT_TRUE(client.EventsUpTo("idle").front().ends_with("(IC): There are too many variables."));
  EXPECT_EQ(client.Refusal("SetIntegerVariable", Text("new"), 1), "There are too many variables.");
  EXPECT_EQ(client.Refusal("SetMarkCounter", Text("new"), MarkCounter()), "There are too many variables.");
}

TEST(VirtualCardVariables, CountAsTheirCountersSay) {
  struct Row {
    MarkCounter How;
    int Before;
    std::vector<int> After;  // setting it, and each count
  };
  const Row rows[] = {
      {Counter(2, 1, 0, 4), 9, {2, 3, 4, 0, 1}},
      {Counter(2, 3, 0, 4), 4, {4, 0, 3, 0}},
      {Counter(2, -1, 0, 4), 1, {1, 0, 4, 3}},
      {Counter(-2, -3, -4, 4), -5, {-2, 4, 1, -2}},
      {Counter(7, 5, 7, 7), 0, {7, 7}},
      {Counter(0, Greatest, Least, Greatest), 1, {1, Least, -1}},
      {Counter(0, Least, Least, Greatest), -1, {-1, Greatest, -1}},
  };
  const CardProcess card({"--speed", "max"});
  Client client(card);
  VariableAPI variables(client);
  for (const auto& [how, before, after] : rows) {
    SCOPED_TRACE(before);
    client.Call("ResetExecution");
    variables.SetInteger("a", before);
    variables.SetMarkCounter("a", how);
    std::vector<int> values{variables.GetInteger("a")};
    while (values.size() < after.size()) {
      client.Run(WithIds("IC @"));
      values.push_back(variables.GetInteger("a"));
    }
    EXPECT_EQ(values, after);
    EXPECT_EQ(Packed(variables.GetMarkCounter("a")), Packed(how));
    variables.ResetMarkCounter("a");
    EXPECT_EQ(variables.GetInteger("a"), how.Start);
    variables.SetInteger("a", 0), client.Call("ResetExecution");
    EXPECT_EQ(variables.GetInteger("a"), how.Start);
  }
  variables.SetMarkCounter("new", Counter(3, 1, 3, 5));
  EXPECT_EQ(variables.GetInteger("new"), 3);
  const std::pair<MarkCounter, Text> faults[] = {
      {Counter(0, 1, 1, 0), "The counter's minimum is greater than its maximum."},
      {Counter(5, 1, 0, 4), "The counter's start is not from its minimum to its maximum."},
      {Counter(-1, 1, 0, 4), "The counter's start is not from its minimum to its maximum."},
      {Counter(0, 0, 0, 4), "The counter's step must not be 0."},
  };
  for (const auto& [counter, text] : faults) {
    EXPECT_EQ(client.Refusal("SetMarkCounter", Text("a"), counter), text);
  }
  variables.SetInteger("i", 1);
  for (const Text name : {"i", "none"}) {
    EXPECT_EQ(client.Refusal("GetMarkCounter", name), "There is no mark counter '" + name + "'.");
    EXPECT_EQ(client.Refusal("ResetMarkCounter", name), "There is no mark counter '" + name + "'.");
  }
}

TEST(VirtualCardTimes, AreWrittenAsTheirFormatSays) {
  // Seconds since 1970; what %d.%m.%Y %y %j %H:%M:%S %G-W%V-%u gives.
  const std::pair<std::uint64_t, const char*> cases[] = {
      {0, "01.01.1970 70 001 00:00:00 1970-W01-4"},
      {951868799, "29.02.2000 00 060 23:59:59 2000-W09-2"},
      {1104537600, "01.01.2005 05 001 00:00:00 2004-W53-6"},
      {1230768000 - 1, "31.12.2008 08 366 23:59:59 2009-W01-3"},
      {1262476805, "03.01.2010 10 003 00:00:05 2009-W53-7"},
      {DateTime::LastSecond, "31.12.9999 99 365 23:59:59 9999-W52-5"},
  };
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(Simulation::TimeText("%d.%m.%Y %y %j %H:%M:%S %G-W%V-%u", DateTime::FromSeconds(seconds)),
              text);
  }
  EXPECT_EQ(Simulation::TimeText("%Y%%%j", DateTime()), "0001%001") << "the first day that there is";
  const CardProcess card({"--speed", "max"});
  Client client(card);
  VariableAPI variables(client);
  Font font(3);
  for (const char character : Text("0123456789/:")) {
    font.CharContainer[static_cast<std::uint16_t>(character)] = List("PI " + std::to_string(character));
  }
  client.Call("SetFont", font), client.Call("SetFontActive", 3);
  EXPECT_EQ(variables.GetMarkTimeFormat(), "%H:%M:%S");
  variables.SetMarkTimeFormat("%y/%j");
  client.Call("SetSystemTime", DateTime::FromSeconds(951868799 - 7200));
  client.Call("ResetExecution");  // it stays
  Text marked;
  for (const Text& event : client.Run("MT")) {
    if (event.starts_with("progress ")) marked += static_cast<char>(std::stoi(event.substr(9)));
  }
  EXPECT_EQ(marked, "00/060");
  const std::pair<Text, Text> faults[] = {
      {"", "The format of a time has 1 to 100 bytes."},
      {Text(101, '-'), "The format of a time has 1 to 100 bytes."},
      {"%H%q", "'%q' is no part of a time."},
      {"%H%", "'%' is no part of a time."},
  };
  for (const auto& [format, text] : faults) EXPECT_EQ(client.Refusal("SetMarkTimeFormat", format), text);
  EXPECT_EQ(variables.GetMarkTimeFormat(), "%y/%j");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
