// The virtual card as a program of its own, spoken to over real sockets.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "int/CardClient.h"
#include "int/CardProcess.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace ClientLib;
using Build = std::function<void(CommandList&)>;
using Events = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

CommandList Make(const Build& build) {
  CommandList list;
  build(list);
  return list;
}

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// A file name that is free, in a directory of the test's own.
class TemporaryDirectory {
 public:
  TemporaryDirectory() : path_("/tmp/kelvo-test-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary directory");
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  std::string File(const char* name) const { return path_ + "/" + name; }
  std::size_t CountFiles() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path_), {}));
  }

 private:
  std::string path_;
};

std::string ContentOf(const std::string& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// ---- Runs ----

struct TimingCase {
  const char* Name;
  double Microseconds;
  int MacroVectors;
  int MicroVectors;
  Build Commands;
};

void SetDelays(CommandList& l) {
  l.AppendJumpSpeed(0.02);
  l.AppendMarkSpeed(0.002);
  l.AppendJumpDelay(100);
  l.AppendMarkDelay(30);
  l.AppendPolyDelay(7);
}

const TimingCase TimingCases[] = {
    {"empty list", 0, 0, 0, [](auto&) {}},
    {"default speeds: 5 / 0.01, then 5 / 0.001", 500 + 5000, 2, 550,
     [](auto& l) {
       l.AppendJumpAbs(Point2D{{3, 4}});
       l.AppendMarkRel(Point2D{{0, 5}});
     }},
    {"a motion of 15 us takes two ticks", 15, 1, 2,
     [](auto& l) {
       l.AppendJumpAbs(Point2D{{0.15, 0}});
     }},
    {"rounding makes no further tick", 300, 1, 30,
     [](auto& l) {
       l.AppendMarkAbs(Point2D{{0.1 + 0.2, 0}});
     }},
    {"three dimensions; 2D commands keep z", 300 + 300 + 400, 3, 100,
     [](auto& l) {
       l.AppendJumpAbs(Point3D{{1, 2, 2}});
       l.AppendJumpRel(Point3D{{0, 0, 3}});
       l.AppendJumpAbs(Point2D{{1, 6}});
     }},
    {"jump delay also behind a jump to the same place", 500 + 100 + 100, 2, 50,
     [](auto& l) {
       SetDelays(l);
       l.AppendJumpAbs(Point2D{{10, 0}});
       l.AppendJumpAbs(Point2D{{10, 0}});
     }},
    {"poly delays between marks, mark delay before the jump", 3 * 500 + 2 * 7 + 30 + 50 + 100, 4, 155,
     [](auto& l) {
       SetDelays(l);
       for (int i = 0; i < 3; ++i) l.AppendMarkRel(Point2D{{1, 0}});
       l.AppendJumpRel(Point2D{{1, 0}});
     }},
    {"what does not move keeps marks together; the end of the list ends them", 2 * 500 + 7 + 30, 2, 100,
     [](auto& l) {
       SetDelays(l);
       l.AppendMarkRel(Point2D{{1, 0}});
       l.AppendProgress(1);
       l.Append(CommandCode::NOOP);
       l.AppendLoopStart(1);
       l.AppendMarkRel(Point2D{{1, 0}});
       l.AppendLoopEnd();
     }},
    {"a sleep ends marks", 500 + 30 + 1000 + 500 + 30, 2, 100,
     [](auto& l) {
       SetDelays(l);
       l.AppendMarkRel(Point2D{{1, 0}});
       l.AppendSleep(1000);
       l.AppendMarkRel(Point2D{{1, 0}});
     }},
    {"a laser delay longer than the mark delay is waited for", 500 + 90, 1, 50,
     [](auto& l) {
       SetDelays(l);
       l.AppendLaserOffDelay(90);
       l.AppendMarkRel(Point2D{{1, 0}});
     }},
    {"a laser that is on before the first mark takes time once", 40 + 500 + 7 + 500 + 30, 2, 100,
     [](auto& l) {
       SetDelays(l);
       l.AppendLaserOnDelay(-40);
       l.AppendMarkRel(Point2D{{1, 0}});
       l.AppendMarkRel(Point2D{{1, 0}});
     }},
    {"a positive laser-on delay takes no time", 500 + 30, 1, 50,
     [](auto& l) {
       SetDelays(l);
       l.AppendLaserOnDelay(40);
       l.AppendMarkRel(Point2D{{1, 0}});
     }},
    {"laser switched on: its delays do not count", 500 + 30 + 50 + 100, 2, 55,
     [](auto& l) {
       SetDelays(l);
       l.AppendLaserOnDelay(-40);
       l.AppendLaserOffDelay(90);
       l.AppendLaserOn();
       l.AppendMarkRel(Point2D{{1, 0}});
       l.AppendJumpRel(Point2D{{1, 0}});
       l.AppendLaserOff();
     }},
    {"nested loops: 3 * (1 + 2 * 10)", 63, 0, 0,
     [](auto& l) {
       l.AppendLoopStart(3);
       l.AppendSleep(1);
       l.AppendLoopStart(2);
       l.AppendSleep(10);
       l.AppendLoopEnd();
       l.AppendLoopEnd();
     }},
    {"loops of no passes are skipped, with all that is in them", 5, 0, 0,
     [](auto& l) {
       for (const int count : {0, -1}) {
         l.AppendLoopStart(count);
         l.AppendLoopStart(2);
         l.AppendSleep(1000);
         l.AppendLoopEnd();
         l.AppendLoopEnd();
       }
       l.AppendSleep(5);
     }},
    {"a break leaves the innermost loop only", 2 * (1 + 10), 0, 0,
     [](auto& l) {
       l.AppendLoopStart(2);
       l.AppendSleep(1);
       l.AppendLoopStart(1000000);
       l.AppendSleep(10);
       l.AppendLoopBreak();
       l.AppendSleep(100);
       l.AppendLoopEnd();
       l.AppendLoopEnd();
     }},
    {"loops as deep as one likes", 1, 0, 0,
     [](auto& l) {
       for (int i = 0; i < 100000; ++i) l.AppendLoopStart(1);
       l.AppendSleep(1);
       for (int i = 0; i < 100000; ++i) l.AppendLoopEnd();
     }},
};

TEST(VirtualCardRun, TakesTheTimeThatItsCommandsTake) {
  const CardProcess card({"--speed", "max"});
  CardClient client(card);
  // The galvos stay where a run leaves them: each case begins with a return to the origin, in no time.
  for (const TimingCase& test : TimingCases) {
    SCOPED_TRACE(test.Name);
    client.Execute(1, Make([](auto& l) { l.AppendJumpAbs(Point3D{}); }));
    EXPECT_EQ(client.Execute(7, Make(test.Commands)).back(), "idle 7");
    const ListExecutionStats stats = client.Lists().GetLastExecutionStats();
    EXPECT_NEAR(stats.ExecutionTime, test.Microseconds, 1e-6);
    EXPECT_EQ(stats.MacroVectors, test.MacroVectors);
    EXPECT_EQ(stats.MicroVectors, test.MicroVectors);
    EXPECT_GT(stats.ComputationTime, 0);
    EXPECT_DOUBLE_EQ(stats.ComputationTimePerMicroVector * std::max(1, test.MicroVectors),
                     test.MicroVectors > 0 ? stats.ComputationTime : 0);
  }
}

TEST(VirtualCardRun, TellsEveryClientInOrderAndKeepsThePosition) {
  const CardProcess card({"--speed", "max"});
  CardClient first(card);
  CardClient second(card);
  const CommandList list = Make([](auto& l) {
    l.AppendLoopStart(2);
    l.AppendProgress(10);
    l.AppendJumpRel(Point2D{{1, 0}});
    l.AppendProgress(-2147483647);
    l.AppendLoopEnd();
  });
  const Events expected{
      "progress 10", "progress -2147483647", "progress 10", "progress -2147483647", "done 7", "idle 7"};
  EXPECT_EQ(first.Execute(7, list), expected);
  EXPECT_EQ(second.EventsUpTo("idle"), expected);
  second.Execute(8, Make([](auto& l) { l.AppendJumpAbs(Point2D{}); }));
  EXPECT_DOUBLE_EQ(first.Lists().GetLastExecutionStats().ExecutionTime, 200);
}

TEST(VirtualCardRun, FollowsRealTimeAtTheGivenSpeed) {
  const CardProcess card({"--speed", "10"});
  CardClient client(card);
  const auto start = Clock::now();
  client.Execute(7, Make([](auto& l) {
                   l.AppendLoopStart(1000);
                   l.AppendSleep(2000);
                   l.AppendLoopEnd();
                 }));
  EXPECT_GE(SecondsSince(start), 0.199);
  EXPECT_LT(SecondsSince(start), 2);
}

TEST(VirtualCardRun, IsAbortedAtOnceHoweverLongItWouldTake) {
  const CardProcess card;
  CardClient client(card);
  CardClient other(card);
  const Build lists[] = {
      [](CommandList& l) { l.AppendSleep(3.6e9); },
      [](CommandList& l) {
        l.AppendMarkAbs(Point2D{{1e300, 0}});
      },
      [](CommandList& l) {
        l.AppendLoopStart(2147483647);
        l.AppendLoopEnd();
      },
  };
  for (const Build& build : lists) {
    CommandList list = Make([](auto& l) { l.AppendProgress(1); });
    list.Append(Make(build));
    client.Lists().Set(7, list, false, -1);
    client.Lists().Execute(7);
    client.EventsUpTo("progress");
    EXPECT_TRUE(client.Lists().IsExecutionInProgress());
    EXPECT_EQ(client.Lists().GetListStatus(7), 2);
    EXPECT_EQ(other.ErrorOf("ExecuteList", 7), "A list is already running.");
    EXPECT_EQ(other.ErrorOf("SetList", 7, list, true), "List 7 is running.");
    EXPECT_EQ(other.ErrorOf("DeleteList", 7, true), "List 7 is running.");
    const auto start = Clock::now();
    other.Lists().AbortExecution();
    EXPECT_LT(SecondsSince(start), 1);
    EXPECT_FALSE(client.Lists().IsExecutionInProgress());
    EXPECT_EQ(client.Lists().GetListStatus(7), 1);
    EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"});
  }
  EXPECT_LT(client.Lists().GetLastExecutionStats().ExecutionTime, 20e6);
  client.Lists().AbortExecution();  // nothing runs: nothing happens
  EXPECT_EQ(client.Execute(8, Make([](auto& l) { l.AppendProgress(2); })).front(), "progress 2");
}

TEST(VirtualCardRun, EndsWithAnErrorThatNamesTheCommand) {
  const double nan = std::nan("");
  const unsigned char shortPayload[] = {1, 0, 0, 9, 0x2B, 0, 0};
  const struct {
    const char* Error;
    Build Commands;
  } cases[] = {
      {"command 1 (ARCA): not supported by the virtual card.",
       [](auto& l) { l.Append(CommandCode::MARK_ARC_ABS, Point2D{}, 1.0); }},
      {"command 1 (code 7654321): not supported by the virtual card.", [](auto& l) { l.Append(7654321); }},
      {"command 1 (JS): The speed must be positive and finite.", [](auto& l) { l.AppendJumpSpeed(0); }},
      {"command 1 (MS): The speed must be positive and finite.", [&](auto& l) { l.AppendMarkSpeed(nan); }},
      {"command 1 (JD): The delay must be finite and not negative.", [](auto& l) { l.AppendJumpDelay(-1); }},
      {"command 1 (LN): The delay must be finite.", [](auto& l) { l.AppendLaserOnDelay(INFINITY); }},
      {"command 1 (SL): The duration must be finite and not negative.", [](auto& l) { l.AppendSleep(-1); }},
      {"command 1 (MA): The target is not finite.",
       [&](auto& l) {
         l.AppendMarkAbs(Point2D{{nan, 0}});
       }},
      {"command 3 (JR): The target is not finite.",
       [](auto& l) {
         l.AppendJumpSpeed(1e10);
         l.AppendJumpAbs(Point2D{{1.7e308, 0}});
         l.AppendJumpRel(Point2D{{1.7e308, 0}});
       }},
      {"command 2 (SL): The run takes too long.",
       [](auto& l) {
         l.AppendSleep(1.7e308);
         l.AppendSleep(1.7e308);
       }},
      {"command 1 (SL): Command payload is malformed.",
       [&](auto& l) {
         l.Append(CommandView{CommandCode::SLEEP, shortPayload});
       }},
      {"command 1 (SL): Command has no further value.", [](auto& l) { l.Append(CommandCode::SLEEP); }},
      {"command 1 (SL): Command has too many values.",
       [](auto& l) { l.Append(CommandCode::SLEEP, 1.0, 1.0); }},
      {"command 1 (PI): Command value is of type Double, not Int32.",
       [](auto& l) { l.Append(CommandCode::PROGRESS_ID, 1.0); }},
      {"command 1 (LOB): No loop is open here.", [](auto& l) { l.Append(CommandCode2::LOOP_BREAK); }},
      // Loops are looked at before anything runs.
      {"command 1 (LOS): The loop has no end.", [](auto& l) { l.Append(CommandCode2::LOOP_START, 1, 1); }},
      {"command 1 (LOE): No loop is open here.", [](auto& l) { l.Append(CommandCode2::LOOP_END, 1); }},
      {"command 2 (LOE): It ends loop depth 2, but depth 1 is open here.",
       [](auto& l) {
         l.Append(CommandCode2::LOOP_START, 1, 1);
         l.Append(CommandCode2::LOOP_END, 2);
       }},
      {"command 1 (LOS): Command has no further value.",
       [](auto& l) { l.Append(CommandCode2::LOOP_START, 1); }},
  };
  const CardProcess card({"--speed", "max"});
  CardClient client(card);
  for (const auto& test : cases) {
    SCOPED_TRACE(test.Error);
    client.Execute(1, Make([](auto& l) { l.AppendJumpAbs(Point2D{}); }));
    CommandList list = Make([](auto& l) { l.AppendProgress(5); });
    list.Append(Make(test.Commands));
    Events events = client.Execute(7, list);
    if (events.front() == "progress 5") events.erase(events.begin());
    EXPECT_EQ(events, (Events{"error List 7, " + std::string(test.Error), "idle 7"}));
  }
}

// ---- Lists ----

TEST(VirtualCardLists, ComeBackAsTheyWereSent) {
  const CardProcess card;
  CardClient client(card);
  CommandList list;
  for (int i = 0; i < 50000; ++i) {
    list.AppendMarkAbs(Point2D{{i * 0.1, -i * 0.3}});
    list.AppendProgress(i);
  }
  const std::size_t count = list.GetCommandCount();
  ASSERT_LT(list.FindChunkEnd(list.FindChunkEnd(0)), count) << "should take three pieces at least";
  client.Lists().Set(7, list, false, 42);
  client.Lists().Set(-3, list, false, -1);
  EXPECT_EQ(client.Lists().GetStoredListIDs(), (std::vector<std::int32_t>{-3, 7}));
  const CommandList back = client.Lists().Get(7);
  EXPECT_EQ(back.GetListField(), 42);
  EXPECT_TRUE(back.ToString() == list.ToString());

  CommandList tail = Make([](auto& l) { l.AppendProgress(-1); });
  client.Lists().Set(7, tail, true, -1);
  client.Lists().Set(8, tail, true, -1);  // appending makes a list, too
  const CommandList longer = client.Lists().Get(7);
  ASSERT_EQ(longer.GetCommandCount(), count + 1);
  EXPECT_EQ(longer.At(count).ToString(), tail.At(0).ToString());
  EXPECT_EQ(client.Lists().Get(8).GetCommandCount(), 1U);
  client.Lists().Set(7, tail, false, -1);
  EXPECT_EQ(client.Lists().Get(7).GetCommandCount(), 1U);

  client.Lists().Delete(7, true);
  EXPECT_EQ(client.Lists().GetListStatus(7), 0);
  EXPECT_EQ(client.Lists().GetStoredListIDs(), (std::vector<std::int32_t>{-3, 8}));
}

// ---- Calls ----

TEST(VirtualCardCalls, AreRefusedWithWordsThatHelp) {
  const CardProcess card;
  CardClient c(card);
  using Text = std::string;
  const struct {
    const char* Error;
    std::function<Text()> Call;
  } cases[] = {
      {"Unknown method 'Fly'.", [&] { return c.ErrorOf("Fly", 1); }},
      {"Method 'GetList' takes 1 arguments, 0 were given.", [&] { return c.ErrorOf("GetList"); }},
      {"Method 'AbortExecution' takes 0 arguments, 2 were given.",
       [&] { return c.ErrorOf("AbortExecution", 1, 2); }},
      {"Method 'GetList': argument 1 is of the wrong type.", [&] { return c.ErrorOf("GetList", Text("7")); }},
      {"Method 'GetList': argument 1 is of the wrong type.", [&] { return c.ErrorOf("GetList", 1LL << 40); }},
      {"Method 'SetList': argument 2 is of the wrong type.",
       [&] { return c.ErrorOf("SetList", 1, std::vector<Text>{"x"}, false); }},
      {"Method 'SetList': argument 3 is of the wrong type.",
       [&] { return c.ErrorOf("SetList", 1, CommandList(), 0); }},
      {"There is no list 7 on the card.", [&] { return c.ErrorOf("GetList", 7); }},
      {"There is no list 7 on the card.", [&] { return c.ErrorOf("ExecuteList", 7); }},
      {"There is no list -7 on the card.", [&] { return c.ErrorOf("DeleteList", -7, false); }},
  };
  for (const auto& test : cases) EXPECT_EQ(test.Call(), test.Error);
  EXPECT_TRUE(c.Lists().GetStoredListIDs().empty());
}

std::string Frame(unsigned char start, char type, const std::string& body) {
  const std::string header{static_cast<char>(start), type, static_cast<char>(body.size()), 0, 0, 0};
  return header + body;
}

TEST(VirtualCardConnections, AreClosedWhenTheySendGarbageAndOthersLiveOn) {
  const std::string deep = std::string("\x01\xA1M", 3) + std::string(250, '\x91');
  const std::string endless("\x01\xA1M\xDD\xFF\xFF\xFF\xFF", 8);
  const struct {
    const char* Name;
    std::string Bytes;
  } cases[] = {
      {"wrong start", Frame(0x93, 0x00, std::string("\x01\xA1M\x90", 4))},
      {"an answer", Frame(0x94, 0x01, std::string("\x01\xA1M\x90", 4))},
      {"a notification", Frame(0x94, 0x02, std::string("\x90", 1))},
      {"a length beyond the limit", std::string("\x94\0\1\0\0\1", 6)},
      {"a length of 4 GiB", std::string("\x94\0\xFF\xFF\xFF\xFF", 6)},
      {"no body", Frame(0x94, 0x00, "")},
      {"no request id", Frame(0x94, 0x00, "\xA1M\x90")},
      {"no method", Frame(0x94, 0x00, "\x01")},
      {"a number for a method", Frame(0x94, 0x00, "\x01\x02\x90")},
      {"no arguments", Frame(0x94, 0x00, "\x01\xA1M")},
      {"arguments that are no array", Frame(0x94, 0x00, "\x01\xA1M\x05")},
      {"more than a request", Frame(0x94, 0x00, "\x01\xA1M\x90\x90")},
      {"an array that claims four thousand million elements", Frame(0x94, 0x00, endless)},
      {"arrays in arrays, cut short", Frame(0x94, 0x00, deep)},
      {"a text for a frame", "GET /\r\n"},
  };
  const CardProcess card({"--firmware", "Test 1.0", "--serial", "777"});
  CardClient other(card);
  for (const auto& test : cases) {
    SCOPED_TRACE(test.Name);
    RawConnection bad(card);
    bad.Send({reinterpret_cast<const unsigned char*>(test.Bytes.data()), test.Bytes.size()});
    EXPECT_TRUE(bad.IsEnded());
    EXPECT_EQ(other.Rpc().Call<std::string>("GetFirmwareProductVersion"), "Test 1.0");
  }
  EXPECT_EQ(other.Rpc().Call<std::string>("GetCardSerialNumber"), "777");
}

TEST(VirtualCardConnections, MayBeHundreds) {
  const CardProcess card({"--speed", "max"});
  std::vector<std::unique_ptr<CardClient>> clients;
  for (int i = 0; i < 300; ++i) clients.push_back(std::make_unique<CardClient>(card));
  for (const auto& client : clients) client->Rpc().Call("SetClientLibVersion", std::string("1.0"));
  clients[0]->Execute(7, CommandList());
  for (std::size_t i = 1; i < clients.size(); ++i) {
    EXPECT_EQ(clients[i]->EventsUpTo("idle"), (Events{"done 7", "idle 7"}));
  }
}

TEST(VirtualCardConnections, ThatDoNotReadHoldUpNobody) {
  const CardProcess card({"--speed", "max", "--queue", "65536"});
  CardClient client(card);
  CommandList large;
  for (int i = 0; i < 30000; ++i) large.AppendMarkAbs(Point2D{{1, 2}});
  client.Lists().Set(1, large, false, -1);
  // Asks for much and reads nothing of it, so that its socket is full, and then gets notifications, too.
  RawConnection slow(card);
  for (unsigned id = 0; id < 60; ++id) {
    OutputPacket request = OutputPacket::AllocateRequest(id);
    msgpack::packer(request).pack("GetList").pack(std::array{1});
    slow.Send(request.Close());
  }
  const auto start = Clock::now();
  const CommandList chatty = Make([](auto& l) {
    l.AppendLoopStart(20000);
    l.AppendProgress(1000000);
    l.AppendLoopEnd();
  });
  // Until the slow one's socket has filled up, it is sent notifications like everybody.
  bool overflowed = false;
  while (!overflowed && SecondsSince(start) < 20) {
    EXPECT_EQ(client.Execute(7, chatty).size(), 20002U);
    overflowed = card.ReadErrors().find("does not read") != std::string::npos;
  }
  EXPECT_TRUE(overflowed);
  EXPECT_TRUE(slow.IsEnded());
}

// ---- The picture ----

TEST(VirtualCardPicture, ShowsWhatTheLaserMarked) {
  const TemporaryDirectory directory;
  const std::string file = directory.File("run.svg");
  const CardProcess card({"--speed", "max", "--svg", file, "--beam", "0.2"});
  EXPECT_NE(ContentOf(file).find("</svg>"), std::string::npos) << "there is a picture before the first run";
  CardClient client(card);
  client.Execute(7, Make([](auto& l) {
                   l.AppendJumpAbs(Point2D{{-10, 5}});
                   l.AppendMarkAbs(Point2D{{30, 5}});
                   l.AppendProgress(50);
                   l.AppendMarkRel(Point2D{{0.1, 0.2}});
                   l.AppendMarkRel(Point2D{{0.2, 0.1}});
                   l.AppendJumpAbs(Point2D{{0, 0}});
                   l.AppendLaserOn();
                   l.AppendSleep(10);
                   l.AppendLaserOff();
                   l.AppendJumpAbs(Point2D{{10, 20}});
                   l.AppendLaserOn();
                   l.AppendJumpAbs(Point2D{{20, 20}});
                   l.AppendMarkAbs(Point2D{{20, -2.5e-7}});
                 }));
  const std::string picture = ContentOf(file);
  for (const char* part : {
           // 40.3 x 20 and 5 % of the larger side all around; y points up, so the picture begins at its top.
           "width='44.33mm' height='24.0300003mm' viewBox='-12.015 -22.015 44.33 24.0300003'",
           "<g transform='scale(1 -1)'",
           "<polyline points='-10,5 30,5 30.1,5.2 30.3,5.3'/>",
           "<polyline points='30.3,5.3 0,0 10,20'/>",
           "<polyline points='10,20 20,20 20,-2.5e-07'/>",
           "<circle cx='0' cy='0' r='0.1'/>",
           "stroke-width='0.2'",
       }) {
    EXPECT_NE(picture.find(part), std::string::npos) << part << " is not in\n" << picture;
  }
  EXPECT_EQ(directory.CountFiles(), 1U);

  client.Execute(8, Make([](auto& l) { l.AppendMarkRel(Point2D{{1, 0}}); }));
  EXPECT_EQ(ContentOf(file).find("30.1,5.2"), std::string::npos) << "a picture is of one run";
}

TEST(VirtualCardPicture, EndsWhereAnAbortedRunEnded) {
  const TemporaryDirectory directory;
  const std::string file = directory.File("run.svg");
  const CardProcess card({"--svg", file});
  CardClient client(card);
  CommandList list = Make([](auto& l) {
    l.AppendMarkAbs(Point2D{{1, 0}});
    l.AppendProgress(1);
    l.AppendMarkAbs(Point2D{{1e6, 0}});
  });
  client.Lists().Set(7, list, false, -1);
  client.Lists().Execute(7);
  client.EventsUpTo("progress");
  client.Lists().AbortExecution();
  // As far as the time went, at a thousandth of a unit per microsecond.
  const std::string picture = ContentOf(file);
  const std::size_t end = picture.find(",0'/>");
  ASSERT_NE(picture.find("<polyline points='0,0 1,0"), std::string::npos) << picture;
  const double reached = std::stod(picture.substr(picture.rfind(' ', end) + 1));
  EXPECT_NEAR(reached, client.Lists().GetLastExecutionStats().ExecutionTime * 0.001, 1e-6);
  EXPECT_LT(reached, 20e3);
}

// ---- The program ----

TEST(VirtualCardProgram, EndsInOrderOnASignal) {
  for (const int signal : {SIGTERM, SIGINT}) {
    const TemporaryDirectory directory;
    CardProcess card({"--svg", directory.File("run.svg")});
    CardClient client(card);
    CommandList list = Make([](auto& l) {
      l.AppendMarkAbs(Point2D{{0.5, 0}});
      l.AppendProgress(1);
      l.AppendSleep(3.6e9);
    });
    client.Lists().Set(7, list, false, -1);
    client.Lists().Execute(7);
    client.EventsUpTo("progress");
    card.Signal(signal);
    EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"});
    EXPECT_EQ(card.WaitForExit(), 0);
    EXPECT_EQ(card.ReadErrors(), "");
    EXPECT_NE(ContentOf(directory.File("run.svg")).find("0,0 0.5,0"), std::string::npos);
  }
}

TEST(VirtualCardProgram, SpeaksIPv6) {
  const CardProcess card({"--address", "::1"});
  EXPECT_EQ(card.GetAddress(), "[::1]");
  CardClient client(card, "::1");
  EXPECT_EQ(client.Rpc().Call<std::string>("GetCardSerialNumber"), "12345");
}

TEST(VirtualCardProgram, SaysWhatIsWrongWithItsArguments) {
  const CardProcess other;
  const std::string port = std::to_string(other.GetPort());
  const struct {
    std::vector<std::string> Arguments;
    int ExitCode;
    std::string Error;
  } cases[] = {
      {{"--port", port}, 1, "Cannot listen on 127.0.0.1:" + port + ": Address already in use.\n"},
      {{"--port", "0", "--address", "no.such.host.invalid"}, 1, "Invalid IP address"},
      {{"--port", "0", "--svg", "/no/such/directory/run.svg"}, 1, "No such file or directory"},
      {{"--port", "65536"}, 2, "--port"},
      {{"--speed", "0"}, 2, "--speed"},
      {{"--speed", "1x"}, 2, "--speed"},
      {{"--beam", "max"}, 2, "--beam"},
      {{"--frobnicate"}, 2, "--frobnicate"},
      {{"--help"}, 0, ""},
  };
  for (const auto& test : cases) {
    ChildProcess program(VIRTUAL_CARD_PROGRAM, test.Arguments);
    EXPECT_EQ(program.WaitForExit(), test.ExitCode) << test.Error;
    EXPECT_NE(program.ReadErrors().find(test.Error), std::string::npos) << program.ReadErrors();
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
