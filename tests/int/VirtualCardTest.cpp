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
using Events = std::vector<std::string>;
using Clock = std::chrono::steady_clock;
using C = CommandCode;
using F = CommandCode2;

template <class... Values>
CommandList One(std::int32_t code, const Values&... values) {
  CommandList list;
  list.Append(code, values...);
  return list;
}

template <class... Parts>
CommandList Join(const Parts&... parts) {
  CommandList list;
  (list.Append(parts), ...);
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

CommandList Loop(std::int32_t count, std::int32_t depth, const CommandList& body) {
  return Join(One(F::LOOP_START, count, depth), body, One(F::LOOP_END, depth));
}

CommandList Sleep(double duration) {
  return One(C::SLEEP, duration);
}

CommandList DeepLoop(std::int32_t depth) {
  CommandList list;
  for (std::int32_t i = 1; i <= depth; ++i) list.Append(F::LOOP_START, 1, i);
  list.AppendSleep(1);
  for (std::int32_t i = depth; i >= 1; --i) list.Append(F::LOOP_END, i);
  return list;
}

const CommandList Mark = One(C::MARK_REL, Point2D{{1, 0}});  // 500 us with these parameters
const CommandList Jump = One(C::JUMP_REL, Point2D{{1, 0}});  // 50 us and the jump delay
const CommandList Parameters =
    Join(One(C::JUMP_SPEED, 0.02), One(C::MARK_SPEED, 0.002), One(C::JUMP_DELAY, 100.0),
         One(C::MARK_DELAY, 30.0), One(C::POLY_DELAY, 7.0));

const struct TimingCase {
  const char* Name;
  double Microseconds;
  int MacroVectors;
  int MicroVectors;
  CommandList Commands;
} TimingCases[] = {
    {"empty list", 0, 0, 0, {}},
    {"default speeds: 5 / 0.01, then 5 / 0.001", 500 + 5000, 2, 550,
     Join(One(C::JUMP_ABS, Point2D{{3, 4}}), One(C::MARK_REL, Point2D{{0, 5}}))},
    {"a motion of 15 us takes two ticks", 15, 1, 2, One(C::JUMP_ABS, Point2D{{0.15, 0}})},
    {"rounding makes no further tick", 300, 1, 30, One(C::MARK_ABS, Point2D{{0.1 + 0.2, 0}})},
    {"three dimensions; 2D commands keep z", 300 + 300 + 400, 3, 100,
     Join(One(C::JUMP_3D_ABS, Point3D{{1, 2, 2}}), One(C::JUMP_3D_REL, Point3D{{0, 0, 3}}),
          One(C::JUMP_ABS, Point2D{{1, 6}}))},
    {"marks in three dimensions", 3000 + 1000, 2, 400,
     Join(One(C::MARK_3D_REL, Point3D{{1, 2, 2}}), One(C::MARK_3D_ABS, Point3D{{1, 2, 1}}))},
    {"jump delay also behind a jump to the same place", 50 + 100 + 100, 2, 5,
     Join(Parameters, Jump, One(C::JUMP_REL, Point2D{}))},
    {"poly delays between marks, mark delay before the jump", 3 * 500 + 2 * 7 + 30 + 50 + 100, 4, 155,
     Join(Parameters, Mark, Mark, Mark, Jump)},
    {"what does not move keeps marks together; the end of the list ends them", 2 * 500 + 7 + 30, 2, 100,
     Join(Parameters, Mark, One(C::PROGRESS_ID, 1), One(C::NOOP), Loop(1, 1, Mark))},
    {"a sleep ends marks", 500 + 30 + 1000 + 500 + 30, 2, 100, Join(Parameters, Mark, Sleep(1000), Mark)},
    {"a laser-off delay longer than the mark delay is waited for, a laser-on delay is not", 500 + 90, 1, 50,
     Join(Parameters, One(C::LON_DELAY, 40.0), One(C::LOFF_DELAY, 90.0), Mark)},
    {"a laser that is on before the first mark takes time once", 40 + 500 + 7 + 500 + 30, 2, 100,
     Join(Parameters, One(C::LON_DELAY, -40.0), Mark, Mark)},
    {"laser switched on: its delays do not count", 500 + 30 + 50 + 100, 2, 55,
     Join(Parameters, One(C::LON_DELAY, -40.0), One(C::LOFF_DELAY, 90.0), One(C::LASER_ON), Mark, Jump,
          One(C::LASER_OFF))},
    {"nested loops", 3 * (1 + 2 * 10), 0, 0, Loop(3, 1, Join(Sleep(1), Loop(2, 2, Sleep(10))))},
    {"loops of no passes are skipped, with all that is in them", 5, 0, 0,
     Join(Loop(0, 1, Loop(2, 2, Sleep(99))), Loop(-1, 1, Loop(2, 2, Sleep(99))), Sleep(5))},
    {"a break leaves the innermost loop only", 2 * (1 + 10), 0, 0,
     Loop(2, 1, Join(Sleep(1), Loop(1000000, 2, Join(Sleep(10), One(F::LOOP_BREAK), Sleep(99)))))},
    {"loops as deep as one likes", 1, 0, 0, DeepLoop(100000)},
};

TEST(VirtualCardRun, TakesTheTimeThatItsCommandsTake) {
  const CardProcess card({"--speed", "max"});
  CardClient client(card);
  // The galvos stay where a run leaves them: each case begins with a return to the origin, in no time.
  for (const TimingCase& test : TimingCases) {
    SCOPED_TRACE(test.Name);
    client.Execute(1, One(C::JUMP_3D_ABS, Point3D{}));
    EXPECT_EQ(client.Execute(7, test.Commands).back(), "idle 7");
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
  const CommandList list = Loop(2, 1, Join(One(C::PROGRESS_ID, 10), Jump, One(C::PROGRESS_ID, -2147483647)));
  const Events expected{
      "progress 10", "progress -2147483647", "progress 10", "progress -2147483647", "done 7", "idle 7"};
  EXPECT_EQ(first.Execute(7, list), expected);
  EXPECT_EQ(second.EventsUpTo("idle"), expected);
  second.Execute(8, One(C::JUMP_ABS, Point2D{}));
  EXPECT_DOUBLE_EQ(first.Lists().GetLastExecutionStats().ExecutionTime, 200);
}

TEST(VirtualCardRun, FollowsRealTimeAtTheGivenSpeed) {
  const CardProcess card({"--speed", "10"});
  CardClient client(card);
  const auto start = Clock::now();
  client.Execute(7, Loop(1000, 1, Sleep(2000)));
  EXPECT_GE(SecondsSince(start), 0.2);
  EXPECT_LT(SecondsSince(start), 2);
}

TEST(VirtualCardRun, IsAbortedAtOnceHoweverLongItWouldTake) {
  const CardProcess card;
  CardClient client(card);
  CardClient other(card);
  const CommandList lists[] = {
      Sleep(3.6e9),
      One(C::MARK_ABS, Point2D{{1e300, 0}}),
      Loop(2147483647, 1, {}),
  };
  for (const CommandList& endless : lists) {
    CommandList list = Join(One(C::PROGRESS_ID, 1), endless);
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
  EXPECT_EQ(client.Execute(8, One(C::PROGRESS_ID, 2)).front(), "progress 2");
}

TEST(VirtualCardRun, EndsWithAnErrorThatNamesTheCommand) {
  const double nan = std::nan("");
  const Point2D far{{1.7e308, 0}};
  const unsigned char shortPayload[] = {1, 0, 0, 9, 0x2B, 0, 0};
  const struct {
    const char* Error;
    CommandList Commands;
  } cases[] = {
      {"command 1 (ARCA): not supported by the virtual card.", One(C::MARK_ARC_ABS, Point2D{}, 1.0)},
      {"command 1 (code 7654321): not supported by the virtual card.", One(7654321)},
      {"command 1 (JS): The speed must be positive and finite.", One(C::JUMP_SPEED, 0.0)},
      {"command 1 (MS): The speed must be positive and finite.", One(C::MARK_SPEED, nan)},
      {"command 1 (JD): The delay must be finite and not negative.", One(C::JUMP_DELAY, -1.0)},
      {"command 1 (LN): The delay must be finite.", One(C::LON_DELAY, double{INFINITY})},
      {"command 1 (SL): The duration must be finite and not negative.", Sleep(-1)},
      {"command 1 (MA): The target is not finite.", One(C::MARK_ABS, Point2D{{nan, 0}})},
      {"command 3 (JR): The target is not finite.",
       Join(One(C::JUMP_SPEED, 1e10), One(C::JUMP_ABS, far), One(C::JUMP_REL, far))},
      {"command 2 (SL): The run takes too long.", Join(Sleep(1.7e308), Sleep(1.7e308))},
      {"command 1 (SL): Command payload is malformed.", Join(CommandView{C::SLEEP, shortPayload})},
      {"command 1 (SL): Command has no further value.", One(C::SLEEP)},
      {"command 1 (SL): Command has too many values.", One(C::SLEEP, 1.0, 1.0)},
      {"command 1 (PI): Command value is of type Double, not Int32.", One(C::PROGRESS_ID, 1.0)},
      {"command 1 (LOB): No loop is open here.", One(F::LOOP_BREAK)},
      // Loops are looked at before anything runs.
      {"command 1 (LOS): The loop has no end.", One(F::LOOP_START, 1, 1)},
      {"command 1 (LOE): No loop is open here.", One(F::LOOP_END, 1)},
      {"command 2 (LOE): It ends loop depth 2, but depth 1 is open here.",
       Join(One(F::LOOP_START, 1, 1), One(F::LOOP_END, 2))},
      {"command 1 (LOS): Command has no further value.", One(F::LOOP_START, 1)},
  };
  const CardProcess card({"--speed", "max"});
  CardClient client(card);
  for (const auto& test : cases) {
    SCOPED_TRACE(test.Error);
    client.Execute(1, One(C::JUMP_ABS, Point2D{}));
    Events events = client.Execute(7, Join(One(C::PROGRESS_ID, 5), test.Commands));
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

  CommandList tail = One(C::PROGRESS_ID, -1);
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
    bad.Send(test.Bytes);
    EXPECT_TRUE(bad.IsEnded());
    EXPECT_EQ(other.Rpc().Call<std::string>("GetFirmwareProductVersion"), "Test 1.0");
  }
  EXPECT_EQ(other.Rpc().Call<std::string>("GetCardSerialNumber"), "777");
}

// Library and card share their packet classes: without these bytes, both could be wrong together.
TEST(VirtualCardConnections, SpeakTheseBytes) {
  const CardProcess card({"--speed", "max"});
  RawConnection raw(card);
  const struct {
    std::string Request, Answer;
  } cases[] = {
      {Frame(0x94, 0, "\x05\xADGetListStatus\x91\x07"), Frame(0x94, 1, std::string("\x05\x00", 2))},
      {Frame(0x94, 0,
             "\xCC\x80\xA3"
             "Fly\x90"),
       Frame(0x94, '\x81', "\xCC\x80\x93\xB5Unknown method 'Fly'.\xC0\xC0")},
      // List 7: PI 300.
      {Frame(0x94, 0,
             std::string("\x06\xA7SetList\x93\x07\x92\xFF\x92\x01\xC4\x09\x01\0\0\x05\x22\x2C\x01\0\0\xC2",
                         27)),
       Frame(0x94, 1, "\x06\xC0")},
      {Frame(0x94, 0, "\x07\xB5IsExecutionInProgress\x90"), Frame(0x94, 1, "\x07\xC2")},
  };
  for (const auto& test : cases) {
    raw.Send(test.Request);
    EXPECT_EQ(raw.Receive(test.Answer.size()), test.Answer);
  }
  CardClient(card).Lists().Execute(7);
  const std::string told = Frame(0x94, 2, "\x92\x11\xCD\x01\x2C") + Frame(0x94, 2, "\x92\x02\x07") +
                           Frame(0x94, 2, "\x92\x01\x07");
  EXPECT_EQ(raw.Receive(told.size()), told);
}

TEST(VirtualCardConnections, MayBeHundreds) {
  const CardProcess card({"--speed", "max"});
  std::vector<std::unique_ptr<CardClient>> clients;
  for (int i = 0; i < 300; ++i) clients.push_back(std::make_unique<CardClient>(card));
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
  // Both ask for much more than their sockets hold and read nothing of it.
  RawConnection late(card);
  RawConnection slow(card);
  for (unsigned id = 0; id < 60; ++id) {
    OutputPacket request = OutputPacket::AllocateRequest(id);
    msgpack::packer(request).pack("GetList").pack(std::array{1});
    const auto frame = request.Close();
    for (RawConnection* raw : {&late, &slow}) {
      raw->Send({reinterpret_cast<const char*>(frame.data()), frame.size()});
    }
  }
  // One reads in the end, and gets everything.
  constexpr std::size_t answerBytes = 6 + 1 + 3 + 1 + 30000 * 27;
  EXPECT_EQ(late.Receive(60 * answerBytes).size(), 60 * answerBytes);
  const auto start = Clock::now();
  const CommandList chatty = Loop(20000, 1, One(C::PROGRESS_ID, 1000000));
  // Notifications now pile up behind the answers that the other one does not read.
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
  client.Execute(7, Join(One(C::JUMP_ABS, Point2D{{-10, 5}}), One(C::MARK_ABS, Point2D{{30, 5}}),
                         One(C::PROGRESS_ID, 50), One(C::MARK_REL, Point2D{{0.1, 0.2}}),
                         One(C::MARK_REL, Point2D{{0.2, 0.1}}), One(C::JUMP_ABS, Point2D{}), One(C::LASER_ON),
                         Sleep(10), One(C::LASER_OFF), One(C::JUMP_ABS, Point2D{{10, 20}}), One(C::LASER_ON),
                         One(C::JUMP_ABS, Point2D{{20, 20}}), One(C::MARK_ABS, Point2D{{20, -2.5e-7}}),
                         One(C::LASER_OFF)));
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
  EXPECT_EQ(picture.find("<circle"), picture.rfind("<circle")) << "a laser that moved made no dot";
  EXPECT_EQ(directory.CountFiles(), 1U);

  client.Execute(8, One(C::MARK_REL, Point2D{{1, 0}}));
  EXPECT_EQ(ContentOf(file).find("30.1,5.2"), std::string::npos) << "a picture is of one run";
}

TEST(VirtualCardPicture, EndsWhereAnAbortedRunEnded) {
  const TemporaryDirectory directory;
  const std::string file = directory.File("run.svg");
  const CardProcess card({"--svg", file});
  CardClient client(card);
  CommandList list =
      Join(One(C::MARK_ABS, Point2D{{1, 0}}), One(C::PROGRESS_ID, 1), One(C::MARK_ABS, Point2D{{1e6, 0}}));
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
    CommandList list = Join(One(C::MARK_ABS, Point2D{{0.5, 0}}), One(C::PROGRESS_ID, 1), Sleep(3.6e9));
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
