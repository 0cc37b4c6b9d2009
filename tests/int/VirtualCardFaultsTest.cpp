// Faults that a virtual card was asked for: their texts, whom they befall, and what then comes over the wire.
#include "faults/Faults.h"
#include "int/CardClient.h"

namespace VELTRO::KELVO::Test {
namespace {

using VirtualCard::Fault;
using VirtualCard::Faults;
using VirtualCard::FaultSide;

TEST(VirtualCardFaults, SayWhatIsWrongWithTheirText) {
  const char* const cases[][2] = {
      {"",
       "'' in a fault: that is nothing to have a fault. There are the methods of the card, * for all of "
       "them, "
       "ListIdle, ListDone, Progress, Error, and notification for all of those."},
      {"SetLst:drop", "'SetLst' in a fault: that is nothing"},
      {"SetLst:off", "'SetLst' in a fault: that is nothing"},
      {"SetList", "it has no action. A fault is TARGET[:CONDITION...]:ACTION, such as"},
      {"SetList:count=2", "it has no action."},
      {"SetList:", "it has no action."},
      {"SetList:fly",
       "'fly' in a fault: there are the conditions connection, from, count, chance, direction and the "
       "actions error, delay, drop, silent, slow, garbage, truncate, reorder."},
      {"SetList::drop", "'' in a fault: there are the conditions"},
      {"SetList:off:drop", "'off' in a fault: there are the conditions"},
      {"SetList:drop:silent", "'silent' in a fault: it has its action already, drop."},
      {"SetList:drop=1", "'drop=1' in a fault: drop takes no value."},
      {"SetList:error", "'error' in a fault: error takes a text."},
      {"SetList:error=No:count=2",
       "'count=2' in a fault: conditions stand ahead of error, whose text is all the rest."},
      {"SetList:delay", "takes a time of at most an hour, such as 150ms, 2s or 1min."},
      {"SetList:delay=2", "delay takes a time"},
      {"SetList:delay=61min", "delay takes a time"},
      {"SetList:delay=-1s", "delay takes a time"},
      {"SetList:delay=nans", "delay takes a time"},
      {"SetList:reorder=x", "reorder takes a time"},
      {"SetList:slow=0B/s", "slow takes 1B/s to 1000MB/s, such as 1kB/s."},
      {"SetList:count=0:drop", "count takes a whole number from 1 on."},
      {"SetList:from=1.5:drop", "from takes a whole number"},
      {"SetList:connection=1x:drop", "connection takes a whole number"},
      {"SetList:chance=1.1:drop", "chance takes a number from 0 to 1, or 0% to 100%."},
      {"SetList:direction=in:drop", "direction takes 'request' or 'answer'."},
      {"SetList:direction=request:garbage", "garbage is of answers and notifications only."},
      {"ListIdle:direction=request:drop", "notifications are no requests."},
  };
  Faults faults(1);
  for (const auto& [text, told] : cases) {
    EXPECT_THAT(Failure([&, text = text] { faults.Set(text); }), HasSubstr(told)) << text;
  }
  EXPECT_THAT(Failure([&] { faults.Set("*:error=" + Text(1000, 'x')); }),
              HasSubstr("at most 1000 characters"));
  EXPECT_TRUE(faults.List().empty() && faults.AreNone());
  for (std::size_t i = 0; i < Faults::Most; ++i) faults.Set("*:silent");
  EXPECT_THAT(Failure([&] { faults.Set("*:silent"); }), HasSubstr("at most 100 faults at once"));
  for (const char* option : {"--fault", "--fault-seed"}) {
    CardProcess card({option, "SetLst:drop"});
    EXPECT_EQ(card.End(0), 2) << option;
  }
}

TEST(VirtualCardFaults, HaveTheValuesOfTheirText) {
  const Fault slow = VirtualCard::ParseFault("SetList:connection=3:direction=request:slow=1.5kB/s");
  EXPECT_TRUE(slow.Connection == 3 && slow.Side == FaultSide::Request && slow.Rate == 1500) << slow.Rate;
  const Fault error = VirtualCard::ParseFault("ListIdle:count=2:from=4:chance=25%:error=a:b=c:");
  EXPECT_TRUE(error.Count == 2 && error.From == 4 && error.Chance == 0.25 && error.Side == FaultSide::Answer);
  EXPECT_EQ(error.ErrorText, "a:b=c:");
  const std::pair<const char*, int> delays[] = {
      {"7us", 7}, {"1.5ms", 1500}, {"2s", 2000000}, {"1min", 60000000}};
  for (const auto& [text, wanted] : delays) {
    EXPECT_EQ(VirtualCard::ParseFault(Text("*:delay=") + text).Delay.count(), wanted) << text;
  }
  const std::pair<const char*, double> rates[] = {{"7B/s", 7}, {"0.25kB/s", 250}, {"3MB/s", 3e6}};
  for (const auto& [text, wanted] : rates) {
    EXPECT_EQ(VirtualCard::ParseFault(Text("*:slow=") + text).Rate, wanted) << text;
  }
}

// Which fault befalls each of the calls "A1 B2": methods by their first letter, and the connection; its error's text,
// or "-".
Text Befallen(Faults& faults, const Text& calls) {
  Text all;
  std::istringstream stream(calls);
  for (Text call; stream >> call;) {
    const auto connection = static_cast<std::uint64_t>(call[1] - '0');
    const auto fault = call[0] == 'I'   ? faults.OfNotification("ListIdle", connection)
                       : call[0] == 'S' ? faults.OfRequest("SetList", connection)
                                        : faults.OfRequest("GetList", connection);
    all += fault ? fault->ErrorText : "-";
  }
  return all;
}

TEST(VirtualCardFaults, BefallWhatTheyAreFor) {
  const std::tuple<std::vector<const char*>, Text, Text> cases[] = {
      {{"SetList:error=x"}, "S1 G1 I1 S2", "x--x"},
      {{"*:error=x"}, "S1 G1 I1", "xx-"},
      {{"notification:error=x"}, "S1 I1 I2", "-xx"},
      {{"SetList:count=2:error=x"}, "S1 G1 S1 S1", "x-x-"},
      {{"SetList:from=3:error=x"}, "S1 G1 S2 S1 S1", "---xx"},
      {{"*:connection=2:from=2:error=x"}, "S1 S2 G1 G2 I2", "---x-"},
      {{"*:error=x", "SetList:count=1:error=y"}, "S1 S1 G1", "yxx"},
      {{"*:from=3:error=x", "SetList:count=2:error=y"}, "S1 S1 S1 G1", "yyxx"},
      {{"*:error=x", "SetList:error=y", "SetList:off"}, "S1 G1", "xx"},
      {{"*:error=x", "SetList:error=y", "off"}, "S1 G1", "--"},
      {{"*:chance=0:error=x", "SetList:chance=100%:error=y"}, "S1 G1", "y-"},
  };
  for (const auto& [texts, calls, befallen] : cases) {
    Faults faults(1);
    for (const char* text : texts) faults.Set(text);
    EXPECT_EQ(Befallen(faults, calls), befallen) << texts.back();
  }
}

TEST(VirtualCardFaults, ByChanceComeAgainWithTheirSeed) {
  const auto drawn = [](std::uint64_t seed, Text calls) {
    Faults faults(seed);
    faults.Set("SetList:chance=0.3:error=x");
    faults.Set("GetList:chance=0.3:error=x");
    Text all;
    for (int i = 0; i < 2000; ++i) all += Befallen(faults, calls);
    const auto entries = faults.List();
    const auto& entry = calls[0] == 'S' ? entries.back() : entries.front();
    EXPECT_EQ(entry.Befell, static_cast<std::uint64_t>(std::ranges::count(all, 'x')));
    EXPECT_EQ(entry.Calls, all.size());
    return all;
  };
  const Text first = drawn(7, "S1");
  EXPECT_EQ(drawn(7, "S1"), first);
  EXPECT_NE(drawn(8, "S1"), first);
  EXPECT_NE(drawn(7, "G1"), first) << "each fault has draws of its own";
  EXPECT_NEAR(static_cast<double>(std::ranges::count(first, 'x')), 600, 100);
  const CardProcess card({"--fault", "SetList:chance=0.5:silent", "--fault-seed", "4711"});
  EXPECT_EQ(card.GetWarnings(), "The seed of faults by chance is 4711.\n");
}

TEST(VirtualCardFaults, AreOnTheWire) {
  const Text first = Response(1, false), second = Response(2, false), third = Response(3, "12345");
  const Text error = FrameOf(0x81, 1, std::make_tuple("No", "", msgpack::type::nil_t()));
  Text inverted = first;
  for (char& byte : inverted) byte = static_cast<char>(~byte);
  const struct {
    const char* fault;
    Text sent;
    bool ends = false;
    double least = 0;  // milliseconds
  } cases[] = {
      {"IsUpdateActive:connection=2:drop", first + second + third},
      {"IsUpdateActive:count=1:error=No", error + second + third},
      {"IsUpdateActive:count=1:direction=answer:error=No", error + second + third},
      {"IsUpdateActive:count=1:delay=50ms", first + second + third, false, 50},
      {"IsUpdateActive:count=1:direction=answer:delay=4s", second + third + first, false, 4000},
      {"IsUpdateActive:from=2:drop", first, true},
      {"IsUpdateActive:from=2:direction=answer:drop", first, true},
      {"IsUpdateActive:count=1:silent", second + third},
      {"IsUpdateActive:count=1:direction=answer:silent", second + third},
      {"IsUpdateActive:count=1:garbage", inverted + second + third},
      {"IsUpdateActive:from=2:truncate", first + second.substr(0, second.size() / 2), true},
      {"IsUpdateActive:count=1:reorder=1min", second + first + third},
      {"GetCardSerialNumber:reorder=50ms", first + second + third, false, 50},
      {"*:slow=200B/s", first + second + third, false, 140},
      {"*:direction=request:slow=1kB/s", first + second + third, false, 60},
  };
  for (const auto& one : cases) {
    const CardProcess card({"--fault", one.fault});
    const int socket = Connect(card);
    Peer peer(socket);
    const Stopwatch watch;
    for (std::uint32_t id : {1U, 2U}) peer.Send(FrameOf(0x00, id, "IsUpdateActive", std::vector<int>()));
    peer.Send(FrameOf(0x00, 3U, "GetCardSerialNumber", std::vector<int>()));
    Text sent(one.sent.size(), '?');
    EXPECT_EQ(recv(socket, sent.data(), sent.size(), MSG_WAITALL), static_cast<ssize_t>(sent.size()));
    EXPECT_TRUE(sent == one.sent) << one.fault;
    EXPECT_GE(watch.Milliseconds(), one.least) << one.fault;
    EXPECT_TRUE(!one.ends || !peer.Fill(1)) << one.fault;
  }
}

// Who asks and asks is not asked for more while so much is kept back.
TEST(VirtualCardFaults, KeepNoMoreBackThanThereIsRoomFor) {
  constexpr int Requests = 40000;
  CardProcess card({"--fault", "IsUpdateActive:direction=answer:delay=60min"});
  Peer peer(Connect(card));
  Text frames;
  for (int i = 0; i < Requests; ++i) frames += FrameOf(0x00, 1U, "IsUpdateActive", std::vector<int>());
  std::thread sending([&] { peer.Send(frames); });
  const auto befallen = [&card] {
    card.Say("fault");
    const Text line = card.ReadLine();
    return std::stoi(line.substr(line.find("befell ") + 7));
  };
  int before = -1, now = 0;
  for (; now == 0 || now != before; before = std::exchange(now, befallen())) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  EXPECT_LT(now, Requests / 2);
  EXPECT_EQ(card.End(SIGTERM), 0);
  sending.join();
}

TEST(VirtualCardFaults, BefallNotificationsAndAreChangedWhileTheCardRuns) {
  CardProcess card({"--speed", "max"});
  Client client(card);
  const std::pair<const char*, Events> cases[] = {
      {"Progress:count=1:silent", {"progress 2", "done 7", "idle 7"}},
      {"Progress:from=2:error=Hot", {"progress 1", "error Hot", "done 7", "idle 7"}},
      {"ListDone:reorder=1min", {"progress 1", "progress 2", "idle 7", "done 7"}},
      {"Progress:count=1:delay=5s", {"progress 2", "done 7", "idle 7", "progress 1"}},
      {"ListIdle:slow=100B/s", {"progress 1", "progress 2", "done 7", "idle 7"}},
  };
  for (const auto& [fault, events] : cases) {
    // The run waits until the fault is there and every call is answered: an answer lets out what is reordered, too.
    client.Run("PI 0 SUS PI 1 PI 2", "progress 0");
    card.Say(Text("fault ") + fault + "\nfault");
    EXPECT_EQ(card.ReadLine(), Text("Fault ") + fault + ": befell 0 of 0\n");
    card.Say("resume");
    EXPECT_EQ(client.EventsUpTo(events.back()), events) << fault;
    card.Say("fault off\nfault");
    EXPECT_EQ(card.ReadLine(), "There are no faults.\n");
  }
  card.Say("fault SetLst:drop");
  EXPECT_THAT(card.ReadLine(),
              AllOf(HasSubstr("'fault SetLst:drop' failed: "), HasSubstr("nothing to have a fault")));
  // A card that ends does not wait for a fault.
  card.Say("fault AbortExecution:delay=1min\nfault");
  EXPECT_THAT(card.ReadLine(), HasSubstr("befell 0 of 0"));
  Peer waiting(Connect(card));
  waiting.Send(FrameOf(0x00, 1, "AbortExecution", std::vector<int>()));
  for (Text told; told.find("befell 1 of 1") == Text::npos; told = card.ReadLine()) card.Say("fault");
  const AtMost promptly(10000, "the end");
  EXPECT_EQ(card.End(SIGTERM), 0);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
