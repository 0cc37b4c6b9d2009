// Where a run goes on the virtual card: branches, calls, switches, waits, glyphs. Progress values mark the way.
#include "int/CardClient.h"
#include "lists/ListStatus.h"
#include "services/Font.h"
#include "surroundings/AbortSignal.h"

namespace VELTRO::KELVO::Test {
namespace {

// "@" is the hash of the name "a".
void Set(Client& client, int id, Text text) {
  for (std::size_t at = 0; (at = text.find('@')) != Text::npos;) text.replace(at, 1, "U32:3826002220");
  CommandList list = List(text);
  client.Lists.Set(id, list, false, -1);
}

// Lists that others call: 8 and so on; and 100 calls 101, which calls 102, down to 164.
void SetCalledLists(Client& client) {
  constexpr const char* Lists[] = {
      "PI 80",  "LOS 2 1 CL 8 EXL LOE 1 PI 91", "BRL 8 PI 100", "NO JS 0.0", "LOS 1 1", "BRL 14", "BRL 13",
      "DEFGA 0"};
  for (int i = 0; i < 8; ++i) Set(client, 8 + i, Lists[i]);
  for (int id = 100; id <= 164; ++id) Set(client, id, id < 164 ? "CL " + std::to_string(id + 1) : "PI 64");
}

// Runs the list and tells its way: "1 2 done", or with an error "1 !List 7, command 0 (NO): TEXT".
Text Way(Client& client, const Text& list) {
  client.Call("ResetExecution");
  Set(client, 7, list);
  client.Lists.Execute(7);
  Text way;
  for (const Text& event : client.EventsUpTo("idle")) {
    if (event.starts_with("progress ")) way += event.substr(9) + " ";
    if (event.starts_with("done")) way += "done";
    if (event.starts_with("error")) way += "!" + event.substr(6);
  }
  return way;
}

TEST(VirtualCardFlow, GoesWhereItsCommandsLead) {
  const char* const cases[][2] = {
      {"BA 2 PI 1 BR 2 PI 2 BACF 8 @ true PI 3 BVS @ true BR -3 BA 10 PI 4", "3 done"},
      {"NO BA 3", "!List 7, command 1 (BA): There is no command 3 to branch to."},
      // Out of a loop, to its end, to its start, into it.
      {"LOS 5 1 PI 1 BR 2 LOE 1 LOS 2 1 PI 3 LOE 1", "1 3 3 done"},
      {"LOS 2 1 LOS 2 2 PI 1 BR 2 PI 2 LOE 2 BR 3 PI 3 LOE 1 PI 4", "1 1 4 done"},
      {"LOS 2 1 BACF 4 @ true BVS @ true BA 0 PI 1 LOE 1", "1 1 done"},
      {"LOS 2 1 BR 2 LOS 1 2 LOE 2 LOE 1", "!List 7, command 3 (LOE): Its loop is not open here."},
      // Conditions on port 3, which is 0x12: all bits, any bit, and not.
      {"BRC 2 U32:19 3 true true U32:18 PI 1 BRC 2 U32:19 3 true true U32:19 PI 2", "2 done"},
      {"BRC 2 U32:19 3 true false U32:19 PI 1 BRC 2 U32:13 3 true false U32:15 PI 2", "2 done"},
      {"CLC 8 U32:1 3 true true U32:0 BRLC 9 U32:1 3 true true U32:1 PI 1", "80 1 done"},
      {"BAC 2 U32:13 3 false false U32:15 PI 1 EXLC U32:2 3 true true U32:2 PI 2", "done"},
      {"SWI 3 true U32:18 CASCL 8 18 CASCL 9 9 CASCL 8 9 DEFCL 8 PI 1", "80 1 done"},
      {"SWI 3 false U32:16 CASGR 2 16 PI 1 SWIV 0 @ CASGA 7 16 DEFGA 7 PI 2 PI 3", "3 done"},
      {"IVS @ -1 IC @ IC @ SWIV 0 @ CASBL 8 1 PI 1", "80 done"},
      {"IVS @ 2147483647 IC @ SWIV 0 @ CASCL 8 -2147483648", "80 done"},
      // A boolean, an integer and a signal of one name.
      {"IVS @ 1 SIS @ BRCF 2 @ true PI 1 BVS @ true SIR @ SWIV 0 @ CASCL 8 1 BRCF 2 @ true PI 2",
       "1 80 done"},
      {"SWI 3 true U32:18 DEFGR 2 PI 1 PI 2 DEFBL 8", "2 done"},
      {"SWI 3 true U32:18 CASCL 9 8 DEFBL 8 PI 1", "80 done"},
      {"SWI 3 true U32:1 CL 15", "!List 15, command 0 (DEFGA): There was no switch before it."},
      // Calls come back, branches to lists do not.
      {"CL 9 CL 10 CL 101 LOS 2 1 CL 8 LOE 1 GTSAL PI 1", "80 80 64 80 80 80 done"},
      {"CLCF 8 @ false BRLCF 8 @ true EXLF @ true PI 1 EXLF @ false PI 2", "80 1 done"},
      {"CL 100", "!List 163, command 0 (CL): More than 64 calls are open."},
      {"BRL 99", "!List 7, command 0 (BRL): There is no list 99 on the card."},
      {"CL 11", "!List 11, command 1 (JS): The speed must be positive and finite."},
      {"CL 12", "!List 12, command 0 (LOS): The loop has no end."},
      // A signal that is set, and time-outs, which take no real time.
      {"SIS @ WFS @ -1 WFS @ -1 SIR @ WFS @ 2000000000 WS 2000000000 PI 1", "1 done"},
  };
  LoneClient client({"--speed", "max", "--input", "3=0x12", "--standalone-list", "8"});
  SetCalledLists(client);
  for (const auto& [list, way] : cases) EXPECT_EQ(Way(client, list), way) << list;
  // What is set outlives its run, but not the reset that Way begins with.
  client.Run("BVS U32:1 true");
  EXPECT_EQ(client.Run("BACF 2 U32:1 true PI 1 PI 2").front(), "progress 2");
  EXPECT_EQ(Way(client, "BACF 2 U32:1 true PI 1"), "1 done");
}

TEST(VirtualCardFlow, IsAbortedAtOnceInEveryEndlessListAndWait) {
  for (const char* speed : {"1", "max"}) {
    LoneClient client({"--speed", speed});
    // None of them notifies: what came in floods would hold up the answer.
    Set(client, 8, "NO"), Set(client, 9, "LOS 2 1 CL 8 EXL LOE 1 NO");
    Set(client, 13, "BRL 14"), Set(client, 14, "BRL 13");
    for (const Text endless : {"BR 0", "NO BR -1", "BRL 13", "LOS 2147483647 1 CL 8 CL 9 LOE 1", "WS -1",
                               "SUS", "WI U32:1 1 true true U32:1 -1", "WFS U32:1 -1"}) {
      client.Run("PI 1 " + endless, "progress");
      const Stopwatch watch;
      client.Lists.AbortExecution();
      EXPECT_LT(watch.Milliseconds(), 10000) << endless;
      EXPECT_EQ(client.EventsUpTo("idle").back(), "idle 7") << endless;
    }
  }
}

TEST(VirtualCardFlow, ObeysStandardInput) {
  CardProcess card({"--speed", "0.001"});  // at which a time-out of a second lasts too long
  Client client(card);
  for (const Text wait : {"WS -1", "SUS"}) {
    card.Say("start\nresume\nfly");  // ahead of the run, which forgets them
    card.ReadLine();
    client.Run("PI 0 " + wait + " PI 1", "progress");
    client.Lists.AbortExecution();
    EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"}) << wait;
  }
  client.Run(
      "PI 0 WS 1000000 PI 1 WI U32:6 4 true true U32:2 -1 PI 1 SUS WFS U32:3876335077 -1 PI 1 SUS PI 1 SUS",
      "progress");
  for (const Text line : {"start", "resume\ninput 4 4\ninput 4 0x3", " signal  b \r", "resume"}) {
    card.Say(line);
    EXPECT_EQ(client.EventsUpTo("progress"), Events{"progress 1"}) << line;
  }
  for (const Text line : {"input 4", "input 4 -1", "start now", "signal", "fly"}) {
    card.Say(line);
    EXPECT_THAT(card.ReadLine(), HasSubstr("not '" + line + "'."));
  }
  card.EndInput();
  client.Lists.AbortExecution();
  EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"});
}

TEST(VirtualCardFlow, EndsAtItsExecutionLimit) {
  LoneClient client({"--speed", "max"});
  client.Call("SetExecutionLimit", 5);
  EXPECT_EQ(client.Refusal("SetExecutionLimit", -1), "The execution limit must not be negative.");
  EXPECT_EQ(client.Call<int>("GetExecutionLimit"), 5);
  EXPECT_EQ(Way(client, "SL 4000.0 MR 1,0 BA 3"), "done") << "no longer than it may";
  for (const Text last : {"MR 6,0", "WS -1", "WS 5000", "MR 4,0"}) {
    const Text place = "!List 7, command 2 (" + last.substr(0, 2);
    EXPECT_EQ(Way(client, "MD 2000.0 SL 1.0 " + last),
              place + "): The run has reached the execution limit of 5 ms.");
    EXPECT_EQ(client.Lists.GetLastExecutionStats().ExecutionTime, 5000);
  }
}

TEST(VirtualCardFlow, TakesListsAsTheyAreWhenCalledAndTellsWhereItIs) {
  CardProcess card;
  Client client(card);
  Set(client, 8, "NO PI 1 SUS");
  client.Run("LOS 2 1 CL 8 LOE 1", "progress 1");
  while (client.Call<int>("GetListCaret", 8) != 2) std::this_thread::yield();
  EXPECT_EQ(client.Call<int>("GetListCaret", 7), 1);
  EXPECT_EQ(client.Lists.GetListStatus(8), ClientLib::ListStatus::Running);
  client.Call("StoreList", 8);
  Set(client, 8, "PI 2");
  card.Say("resume");
  EXPECT_EQ(client.EventsUpTo("idle"), (Events{"progress 2", "done 7", "idle 7"}));
  EXPECT_EQ(client.Call<int>("GetListCaret", 7), -1);
  // What was stored comes back also when the list is deleted.
  client.Lists.Delete(8, false);
  EXPECT_EQ(client.Lists.GetStoredListIDs(), (std::vector<std::int32_t>{7, 8}));
  client.Call("LoadList", 8);
  EXPECT_EQ(client.Lists.Get(8).ToString(), List("NO PI 1 SUS").ToString());
  client.Lists.Delete(8, true);
  EXPECT_EQ(client.Refusal("LoadList", 8), "There is no stored list 8 on the card.");
}

TEST(VirtualCardFlow, MarksCharactersTimesAndCounters) {
  LoneClient client({"--speed", "max"});
  Font font(3);
  for (const char character : Text("0123456789:-")) {
    font.CharContainer[static_cast<std::uint16_t>(character)] = List("PI " + std::to_string(character));
  }
  font.CharContainer['x'] = List("NO JS 0.0");
  client.Call("SetFont", font);
  const char* const cases[][2] = {
      {"SF 3 MCH 45", "45 done"},
      {"SF 3 IVS @ -42 MC -468965076 4 MC -468965076 0", "45 48 48 52 50 45 52 50 done"},
      {"SF 3 MCH 46", "!List 7, command 1 (MCH): Font 3 has no character 46."},
      {"SF 3 MCH 120", "!Font 3, character 120, command 1 (JS): The speed must be positive and finite."},
      {"SF 4", "!List 7, command 0 (SF): There is no font 4 on the card."},
      {"MC 1 101", "!List 7, command 0 (MC): The number of digits must be 0 to 100."},
      {"MCH 45", "!List 7, command 0 (MCH): No font is active."},
      {"GTSAL", "!List 7, command 0 (GTSAL): The card has no standalone list."},
  };
  for (const auto& [list, way] : cases) EXPECT_EQ(Way(client, list), way);
  client.Call("SetFontActive", 3);
  const Text time = Way(client, "MT");
  EXPECT_EQ(time.substr(6, 3) + time.substr(15, 3) + time.substr(24), "58 58 done") << time;
}

TEST(VirtualCardFlow, MissesNoKnock) {
  using namespace std::chrono_literals;
  const AtMost promptly(30000);
  for (const bool isAsleep : {false, true}) {
    Simulation::AbortSignal signal;
    const std::uint64_t wakes = signal.GetWakes();  // whatever is looked at is looked at now
    std::jthread knocking([&] {
      if (isAsleep) std::this_thread::sleep_for(50ms);
      signal.Raise();
    });
    if (!isAsleep) knocking.join();
    signal.WaitUntil(std::chrono::steady_clock::now() + 60s, wakes);
    EXPECT_TRUE(signal.IsRaised());
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
