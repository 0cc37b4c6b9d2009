// The virtual card as a program of its own, spoken to over real sockets.
#include <sys/un.h>

#include "common/Descriptor.h"
#include "config/LaserConfig.h"
#include "config/ScannerAPI.h"
#include "config/SystemConfig.h"
#include "int/CardClient.h"
#include "lists/ListStatus.h"
#include "services/Font.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(VirtualCardRun, TakesTheTimeThatItsCommandsTake) {
  // With these a mark by 1 takes 500 us, a jump by 1 takes 50 us and the jump delay.
  const Text set = "JS 0.02 MS 0.002 JD 100.0 MD 30.0 PD 7.0 ";
  Text deep = "SL 1.0";
  for (int depth = 10000; depth > 0; --depth) deep.append(" LOE " + std::to_string(depth));
  for (int depth = 10000; depth > 0; --depth) deep.insert(0, "LOS 1 " + std::to_string(depth) + " ");
  // Name, microseconds, macro vectors, micro vectors, list.
  const std::tuple<const char*, double, int, int, Text> cases[] = {
      {"empty list", 0, 0, 0, ""},
      {"starting speeds: 5 / 0.01, then 5 / 0.001", 500 + 5000, 2, 550, "JA 3,4 MR 0,5"},
      {"a motion of 15 us takes two ticks", 15, 1, 2, "JA 0.15,0"},
      {"rounding makes no further tick", 300, 1, 30, "MA 0.30000000000000004,0"},
      {"3D; 2D keeps z", 600 + 400 + 3000 + 1000, 5, 500, "J3A 1,2,2 J3R 0,0,3 JA 1,6 M3R 1,2,2 M3A 2,8,6"},
      {"jump delay also without a way", 50 + 100 + 100, 2, 5, set + "JR 1,0 JR 0,0"},
      {"poly delays, mark delay", 3 * 500 + 2 * 7 + 30 + 150, 4, 155, set + "MR 1,0 MR 1,0 MR 1,0 JR 1,0"},
      {"marks kept together", 2 * 500 + 7 + 30, 2, 100, set + "MR 1,0 PI 1 NO LOS 1 1 MR 1,0 LOE 1"},
      {"a sleep ends marks", 2 * 500 + 2 * 30 + 1000, 2, 100, set + "MR 1,0 SL 1000.0 MR 1,0"},
      {"laser-off delay beyond the mark delay; laser-on delay", 590, 1, 50, set + "LN 40.0 LF 90.0 MR 1,0"},
      {"delays that take no time", 530, 1, 50, set + "LN 40.0 LF -90.0 MR 1,0"},
      {"the laser switched ends marks", 2 * 500 + 2 * 30, 2, 100, set + "MR 1,0 LON LOF MR 1,0"},
      {"a wait ends marks", 2 * 500 + 2 * 30 + 10, 2, 100, set + "MR 1,0 WFS U32:1 10 MR 1,0"},
      {"delays of the moment", 2 * 500 + 9 + 80, 2, 100, set + "MR 1,0 PD 9.0 MR 1,0 MD 80.0"},
      {"laser on before the first mark", 40 + 500 + 7 + 500 + 30, 2, 100, set + "LN -40.0 MR 1,0 MR 1,0"},
      {"laser switched on", 500 + 30 + 150, 2, 55, set + "LN -40.0 LF 90.0 LON MR 1,0 JR 1,0 LOF"},
      {"nested loops", 3 * (1 + 2 * 10), 0, 0, "LOS 3 1 SL 1.0 LOS 2 2 SL 10.0 LOE 2 LOE 1"},
      {"no passes", 5, 0, 0, "LOS 0 1 LOS 2 2 SL 99.0 LOE 2 LOE 1 LOS -1 1 SL 99.0 LOE 1 SL 5.0"},
      {"a break", 2 * (1 + 10), 0, 0, "LOS 2 1 SL 1.0 LOS 1000000 2 SL 10.0 LOB SL 99.0 LOE 2 LOE 1"},
      {"deep loops", 1, 0, 0, deep},
      {"without effect", 0, 0, 0,
       "PWR U16:1 1 PWRC U16:1 5.0 0 SPR U16:1 LW 1.0 PIL true ARM true VDP true 0 PDP true 0 PCA true 0 "
       "HBS 1 1 F64[0.5] FSCT 0 1 SKLON 1.0 SKLOF -1.0 SKMMEMCH nan ELT 5.0 MFSTR MFTOF 1.0 MFWP 1 MFWD 1.0 "
       "1 1 "
       "PEC 1 U32:1 U32:1 PDA 1 U32:1 PTC 1 U32:1 U32:1 U32:1 PTL 1 NO"},
      {"what is sent to the world outside", 0, 0, 0,
       "PPT U32:1 U32:1 U32:1 PSP 1 U32:1 STX Byte[1] STXL Byte[1]"},
  };
  LoneClient client({"--speed", "max"});
  for (const auto& [name, microseconds, macroVectors, microVectors, list] : cases) {
    SCOPED_TRACE(name);
    client.Run("J3A 0,0,0");  // the galvos stay where a run leaves them
    const Events events = client.Run(list);
    EXPECT_EQ(events.at(events.size() - 2), "done 7") << events[0];
    const ListExecutionStats stats = client.Lists.GetLastExecutionStats();
    EXPECT_NEAR(stats.ExecutionTime, microseconds, 1e-6);
    EXPECT_EQ(stats.MacroVectors, macroVectors);
    EXPECT_EQ(stats.MicroVectors, microVectors);
  }
}

TEST(VirtualCardRun, FollowsRealTimeAtTheGivenSpeedAndTellsEveryClientInOrder) {
  const CardProcess card({"--speed", "100", "--address", "::1"});
  Client first(card, "::1"), second(card, "::1");
  const Events expected{
      "progress 10", "progress -2147483647", "progress 10", "progress -2147483647", "done 7", "idle 7"};
  const Stopwatch watch;
  EXPECT_EQ(first.Run("LOS 2 1 PI 10 LOS 500 2 SL 20000.0 LOE 2 PI -2147483647 LOE 1"), expected);
  EXPECT_GE(watch.Milliseconds(), 200);
  EXPECT_LT(watch.Milliseconds(), 15000);
  EXPECT_EQ(second.EventsUpTo("idle"), expected);
}

TEST(VirtualCardRun, IsAbortedAtOnceHoweverLongItWouldTake) {
  const PictureFile picture;
  const CardProcess card({"--svg", picture.Name()});
  Client client(card), other(card);
  for (const Text endless : {"SL 3.6e9", "LOS 2147483647 1 LOE 1", "MA 1e300,0"}) {
    EXPECT_EQ(client.Run("MR 1,0 PI 1 " + endless, "progress"), Events{"progress 1"});
    EXPECT_TRUE(client.Lists.IsExecutionInProgress());
    EXPECT_EQ(client.Lists.GetListStatus(7), ClientLib::ListStatus::Running);
    EXPECT_EQ(other.Refusal("ExecuteList", 7), "A list is already running.");
    EXPECT_EQ(other.Refusal("SetList", 7, CommandList(), true), "List 7 is running.");
    EXPECT_EQ(other.Refusal("DeleteList", 7, true), "List 7 is running.");
    const Stopwatch watch;
    other.Lists.AbortExecution();
    EXPECT_LT(watch.Milliseconds(), 10000);
    EXPECT_FALSE(client.Lists.IsExecutionInProgress());
    EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"});
  }
  // The picture of the last one ends where the time did, at a thousandth of a unit per microsecond.
  const Text content = picture.Content();
  const std::size_t end = content.find(",0'/>");
  ASSERT_THAT(content, HasSubstr("<polyline points='2,0 3,0"));
  const double microseconds = client.Lists.GetLastExecutionStats().ExecutionTime;
  const double place = 2 + microseconds * 0.001;  // of which nine digits are told
  EXPECT_NEAR(std::stod(content.substr(content.rfind(' ', end))), place, 1e-8 * place);
}

TEST(VirtualCardRun, EndsWithAnErrorThatNamesTheCommand) {
  const std::pair<const char*, const char*> cases[] = {
      {"0 (code 7654321): not supported by the virtual card.", "UNKNOWN"},
      {"0 (JS): The speed must be positive and finite.", "JS 0.0"},
      {"0 (SL): The duration must be finite and not negative.", "SL nan"},
      {"0 (MA): The target is not finite.", "MA nan,0"},
      {"2 (JR): The target is not finite.", "JS 1e10 JA 1.7e308,0 JR 1.7e308,0"},
      {"1 (SL): The run takes too long.", "SL 1.7e308 SL 1.7e308"},
      {"0 (SL): Command has too many values.", "SL 1.0 1.0"},
      {"0 (PI): Command value is of type Double, not Int32.", "PI 1.0"},
      {"0 (LOB): No loop is open here.", "LOB"},
      {"0 (LOS): The loop has no end.", "LOS 1 1"},
      {"0 (LOE): No loop is open here.", "LOE 1"},
      {"1 (LOE): It ends loop depth 2, but depth 1 is open here.", "LOS 1 1 LOE 2"},
      {"0 (ARCA): The sweep must be finite and have at most 100000 turns.", "ARCA 1,0 1e6"},
      {"0 (ARCA): The target is not finite.", "ARCA nan,0 1.0"},
      {"0 (BEZA): The shape is not finite.", "BEZA 1e308,0 -1e308,0"},
      {"0 (ELLA): The half axis must be positive and finite.", "ELLA 0,0 1.0 0.0 0.0"},
      {"0 (ELLCA): The ratio of the half axes must be positive and finite.", "ELLCA 0,0 -1.0 0.0 1.0"},
      {"0 (BMPA): There must be at least one power.", "BMPA 0,0 1,0 U16[] 0"},
      {"0 (BMPA): Command value is of type DoubleArr, not UInt16Arr.", "BMPA 0,0 1,0 F64[] 0"},
      {"0 (PASA): There must be at least one power and one exposure time.", "PASA 0,0 1,0 U16[1] F64[] 0"},
      {"0 (PWR): There is no power channel 2.", "PWR U16:1 2"},
      {"0 (JASA): The last point is not whole.", "JASA F64[1;2;3] 1"},
      {"0 (LONP): The number of pulses must be finite and not negative.", "LONP -1 true"},
      {"0 (DLP): The length of the whole pattern must be positive and finite.", "DLP F64[0;0]"},
      {"2 (MA): The pattern is too short for a mark of this length.", "DLP F64[1e-9] DLE true 0.0 MA 1,0"},
      {"2 (MA): The wobble is too fast for a mark of this duration.", "WOBF 1e9,1 WOBE true MA 1,0"},
      {"0 (TRA): A transformation has 9 factors and 3 shifts.", "TRA F64[1] F64[1]"},
      {"0 (SKWM): There is no sky-writing mode 3.", "SKWM 3"},
      {"0 (SPSC): The scale of the speeds must be positive and finite.", "SPSC 0.0"},
      {"0 (LY): The frequency must be positive and finite.", "LY 0.0"},
      {"0 (SPMA): The magnification must be positive and finite.", "SPMA 0.0 false"},
      {"0 (JD): The delay must be finite and not negative.", "JD -1.0"},
      {"0 (LN): The delay must be finite.", "LN nan"},
      {"0 (SKMCH): The cosine must be finite.", "SKMCH nan"},
      {"0 (WOBA): The wobble must be finite.", "WOBA nan,0"},
      {"0 (PASA): The exposure time must be finite and not negative.", "PASA 0,0 1,0 U16[1] F64[-1] 0"},
      {"0 (PWRC): The length of the ramp must be finite and not negative.", "PWRC U16:1 -1.0 0"},
      {"0 (PWSC): The scale of the power must be finite and not negative.", "PWSC -1.0 0"},
      {"0 (LW): The width must be finite and not negative.", "LW -1.0"},
      {"0 (JLL): The length must be finite and not negative.", "JLL -1.0"},
      {"0 (DLP): The length of a dash must be finite and not negative.", "DLP F64[-1;2]"},
  };
  LoneClient client({"--speed", "max"});
  for (const auto& [error, list] : cases) {
    client.Run("JA 0,0");
    EXPECT_EQ(client.Run(list), (Events{Text("error List 7, command ") + error, "idle 7"}));
  }
}

TEST(VirtualCardLists, ComeBackAsTheyWereSent) {
  LoneClient client;
  ListAPI& lists = client.Lists;
  CommandList list;
  for (int i = 0; i < 100000; ++i) list.AppendMarkAbs(Point2D{{i * 0.1, -i * 0.3}});
  ASSERT_LT(list.FindChunkEnd(list.FindChunkEnd(0)), list.GetCommandCount()) << "too short for three pieces";
  CommandList tail = List("PI -1");
  lists.Set(7, list, false, 42);
  lists.Set(-3, tail, true, 43);  // appending makes a list, too
  EXPECT_EQ(lists.Get(7).GetListField(), 42);
  lists.AbortExecution();  // of nothing
  EXPECT_EQ(lists.GetListStatus(7), ClientLib::ListStatus::Ready);
  lists.Set(7, tail, true, 42);
  list.Append(tail);
  EXPECT_TRUE(lists.Get(7).ToString() == list.ToString());
  EXPECT_EQ(lists.GetStoredListIDs(), (std::vector<std::int32_t>{-3, 7}));
  lists.Set(7, tail, false, -1);
  EXPECT_EQ(lists.Get(7).GetCommandCount(), 1U);
  lists.Delete(7, true);
  EXPECT_EQ(lists.GetListStatus(7), ClientLib::ListStatus::NoSuchList);
  EXPECT_EQ(lists.GetStoredListIDs(), std::vector<std::int32_t>{-3});
}

TEST(VirtualCardCalls, AreRefusedWithWordsThatHelp) {
  LoneClient c;
  ClientLib::SystemConfig zone;
  zone.TimeZone = "Mars";
  const std::pair<Text, const char*> cases[] = {
      {c.Refusal("Fly", 1), "Unknown method 'Fly'."},
      {c.Refusal("GetList"), "Method 'GetList' takes 1 arguments, 0 were given."},
      {c.Refusal("GetList", 1LL << 40), "Method 'GetList': argument 1 is of the wrong type."},
      {c.Refusal("SetList", 1, Text("7"), false), "Method 'SetList': argument 2 is of the wrong type."},
      {c.Refusal("SetList", 1, CommandList(), 0), "Method 'SetList': argument 3 is of the wrong type."},
      {c.Refusal("ExecuteList", 7), "There is no list 7 on the card."},
      {c.Refusal("GetList", 7), "There is no list 7 on the card."},
      {c.Refusal("StoreList", 7), "There is no list 7 on the card."},
      {c.Refusal("LoadList", 7), "There is no stored list 7 on the card."},
      {c.Refusal("DeleteFont", 3), "There is no font 3 on the card."},
      {c.Refusal("StoreFont", 3), "There is no font 3 on the card."},
      {c.Refusal("SetFontActive", 3), "There is no font 3 on the card."},
      {c.Refusal("LoadFont", 3), "There is no stored font 3 on the card."},
      {c.Refusal("EndUpdate"), "No update is active."},
      {c.Refusal("SetSystemConfig", zone), "There is no time zone 'Mars'."},
      {c.Refusal("GetPowerScaleByTarget", 7), "There is no power target 7."},
      {c.Refusal("CreatePowerCalibrationByEngine", 2), "There is no laser engine 2."},
      {c.Refusal("GetHeadBias", 1), "There is no scan head 1."},
      {c.Refusal("ReceiveEnhancedCommand", 0, 64, 9U), "There are no axes 64."},
      {c.Refusal("SetHeadBias", 0, 3, std::vector{0.5}), "The number of values is not that of the axes."},
      {c.Refusal("ReadEncoderPosition", 2), "There is no decoder module 2."},
      {c.Refusal("DeleteList", -7, false), "There is no list -7 on the card."},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
  EXPECT_TRUE(c.Lists.GetStoredListIDs().empty());
  EXPECT_EQ(c.Call<ClientLib::SystemConfig>("GetSystemConfig").TimeZone, "UTC");
}

TEST(VirtualCardCalls, AreAnsweredForWhatTheCardDoesNotHave) {
  const TemporaryDirectory state;
  std::ofstream(state.Path + "/LaserConfig") << "damaged";
  LoneClient c({"--speed", "max", "--state", state.Path});
  const auto get = [&](const char* method, const auto&... arguments) {
    return c.Call<double>(method, arguments...);
  };
  EXPECT_EQ(get("GetOperatingState"), 1);
  EXPECT_EQ(get("ReadLaserStatus"), 0);
  EXPECT_EQ(get("GetPowerScaleByTarget", 1), 1);
  EXPECT_EQ(get("GetFactor1xSpeed"), 1);
  c.Run("J3A 1,2,3");
  const auto positions = c.Call<ClientLib::ScannerPositions>("ReadPositions").Heads;
  c.Run("J3A 4,5,6");
  for (const char* method : {"ResetOperatingState", "LaserOn", "LaserOff", "ResetMotfState"}) c.Call(method);
  for (const char* method : {"EnablePilot", "ArmLaser"}) c.Call(method, true);
  for (const int target : {1, 12}) c.Call("SetPowerScaleByTarget", target, target + 0.5);
  c.Call("SetFactor1xSpeed", 2.5);
  const std::pair<double, double> numbers[] = {{get("GetOperatingState"), 0},
                                               {get("ReadLaserStatus"), 3},
                                               {get("GetPowerScaleByTarget", 1), 1.5},
                                               {get("GetFactor1xSpeed"), 2.5},
                                               {get("GetPendingParts"), 0},
                                               {get("ReadEncoderPosition", 1), 0},
                                               {positions.at(0).at(1), 2},
                                               {c.Call<Point3D>("GetNominalPosition").Z(), 6}};
  for (const auto& [number, expected] : numbers)
    EXPECT_EQ(number, expected) << &expected - &numbers[0].second;
  EXPECT_EQ(c.Call<ClientLib::ScannerPositions>("ReadLastPositions").Heads, positions);
  EXPECT_EQ(c.Call<Text>("GetFpgaVersion") + c.Call<Text>("GetOSVersion"), "Virtual FPGA 1.0Virtual OS 1.0");
  using Words = std::vector<std::uint32_t>;
  EXPECT_EQ(c.Call<Words>("GetPowerCalibrationByEngine", 1), Words());
  c.Call("CreatePowerCalibrationByEngine", 1);
  EXPECT_EQ(c.Call<Words>("GetPowerCalibrationByEngine", 1).at(255), 255U);
  // A message comes back; commands are kept for who receives from the same axes.
  std::vector<std::uint8_t> message{7, 8};
  c.Call("TransmitVeltroMessage", 0, 1, message, 9U);
  EXPECT_EQ(c.Call<decltype(message)>("TransceiveVeltroMessage", 0, 1, message, 9U), message);
  c.Call("TransmitEnhancedCommand", 0, 1, Words{5}, 9U);
  EXPECT_EQ(c.Call<Words>("TransceiveEnhancedCommand", 0, 2, Words{6}, 9U), Words{6});
  for (const auto& [axes, kept] : {std::pair{1, Words{5}}, {2, {6}}, {3, {}}}) {
    EXPECT_EQ(c.Call<Words>("ReceiveEnhancedCommand", 0, axes, 9U), kept) << axes;
  }
}

TEST(VirtualCardCalls, ThatSetWaitForTheEndOfTheirGroup) {
  const CardProcess card;
  Client c(card);
  ClientLib::LaserConfig one, two;
  one.FpsStart = 1, two.FpsStart = 2;
  const auto active = [&] { return c.Call<ClientLib::LaserConfig>("GetLaserConfig").FpsStart; };
  c.Call("SetLaserConfig", one);
  {
    Client other(card);
    other.Call("BeginUpdate");
  }
  EXPECT_EQ(c.Refusal("BeginUpdate"), "An update is already active.");
  // Stored is what is active; what is set, loaded and reset in the group ends as the last of them left it.
  c.Call("SetLaserConfig", two), c.Call("StoreLaserConfig"), c.Call("LoadLaserConfig"),
      c.Call("ResetToDefaults");
  EXPECT_EQ(active(), 1);
  c.Call("EndUpdate");
  EXPECT_EQ(active(), 0);
  c.Call("LoadLaserConfig");
  EXPECT_EQ(active(), 1);
}

TEST(VirtualCardConnections, AreClosedWhenTheySendGarbageAndOthersLiveOn) {
  const std::vector<int> none;
  const CardProcess card({"--speed", "max", "--firmware", "Test 1.0", "--serial", "777"});
  Client other(card);
  const Stopwatch watch;
  for (
      const Text& bytes : {
          // Another start, no requests, too long without an id, incomplete, of wrong types, more than a request.
          "\x93" + FrameOf(0x00, 1, "M", none).substr(1), FrameOf(0x01, 1, "M", none), FrameOf(0x02, none),
          Bytes("94 00 FF FF FF FF") + Text(20, '\xC0'), Frame(0x00, ""), FrameOf(0x00, 1),
          FrameOf(0x00, 1, "M"), FrameOf(0x00, "M", none), FrameOf(0x00, 1, 2, none),
          FrameOf(0x00, 1, "M", 5), FrameOf(0x00, 1, "M", none, none), Text("GET /\r\n"),
          Frame(0x00, Bytes("01 A1 4D DD FF FF FF FF")),       // four thousand million arguments
          Frame(0x00, Bytes("01 A1 4D") + Text(250, '\x91')),  // arrays in arrays, cut short
      }) {
    SCOPED_TRACE(Hex(bytes));
    Peer bad(Connect(card));
    bad.Send(bytes);
    EXPECT_FALSE(bad.Fill(1));
    EXPECT_EQ(other.Run("PI 5"), (Events{"progress 5", "done 7", "idle 7"}));
  }
  EXPECT_LT(watch.Milliseconds(), 50000) << "one was not closed at once";
  EXPECT_EQ(other.GetFirmwareProductVersion() + other.GetCardSerialNumber(), "Test 1.0777");
}

TEST(VirtualCardConnections, ThatDoNotReadHoldUpNobody) {
  constexpr std::size_t Commands = 30000;
  constexpr std::size_t Answers = 60;
  constexpr std::size_t AllBytes = Answers * (6 + 1 + 3 + 1 + Commands * 27);
  // Room for all notifications of a run: the one who reads is never given up, however busy the machine is.
  const CardProcess card({"--speed", "max", "--queue", "400000"});
  Client client(card);
  CommandList large;
  for (std::size_t i = 0; i < Commands; ++i) large.AppendMarkAbs(Point2D{{1, 2}});
  client.Lists.Set(1, large, false, -1);
  // Both ask for much more than their sockets hold; one reads in the end, and gets everything.
  Peer late(Connect(card)), slow(Connect(card));
  for (Peer* peer : {&late, &slow}) {
    for (std::size_t i = 0; i < Answers; ++i) peer->Send(FrameOf(0x00, 1, "GetList", std::make_tuple(1)));
  }
  EXPECT_TRUE(late.Fill(AllBytes));
  // Notifications now pile up behind the answers that the other one does not read: it is given up.
  for (int i = 0; i < 3; ++i) EXPECT_EQ(client.Run("LOS 20000 1 PI 1000000 LOE 1").size(), 20002U);
  EXPECT_FALSE(slow.Fill(AllBytes));
}

TEST(VirtualCardConnections, OutliveARequestThatIsTooLong) {
  const CardProcess card;
  Client client(card);
  Font font(5);
  const std::string most(900000, 'x');
  for (std::uint16_t character = 0; character < 20; ++character) {
    Command command(1);
    command.Add(std::span(reinterpret_cast<const std::uint8_t*>(most.data()), most.size()));
    font.CharContainer[character].Append(command);
  }
  const Text refusal = client.Refusal("SetFont", font);
  EXPECT_TRUE(refusal.starts_with("The request has 18000") &&
              refusal.ends_with(" bytes; the card takes 16777216 at most."))
      << refusal;
  EXPECT_EQ(client.Refusal("GetFont", 5), "There is no font 5 on the card.");
  font.CharContainer.erase(0), font.CharContainer.erase(1);
  client.Call("SetFont", font);
  EXPECT_EQ(client.Call<Font>("GetFont", 5).CharContainer.size(), 18U);
  // Its parts may come one by one, and with the next request behind them.
  Peer peer(Connect(card));
  Text frame = Frame(0x00, Packed(7) + Text((16 << 20) + 10, '\xC0')) +
               FrameOf(0x00, 8, "IsUpdateActive", std::vector<int>());
  for (const std::size_t size : {std::size_t{3}, std::size_t{4}, std::size_t{100000}, frame.size()}) {
    peer.Send(frame.substr(0, size));
    frame.erase(0, size);
  }
  Text both =
      FrameOf(0x81, 7,
              std::make_tuple(Text("The request has 16777227 bytes; the card takes 16777216 at most."), "",
                              msgpack::type::nil_t()));
  both += Response(8, false);
  EXPECT_TRUE(peer.Fill(both.size()));
}

TEST(VirtualCardErrors, AreToldOnceToWhoeverCalls) {
  LoneClient client({"--speed", "max"});
  Text message;
  client.GetListEvents().RegisterErrorEventCallback(
      [&](int, int, const char* text, std::uint32_t length) { message.assign(text, length); });
  client.Run("JS 0.0");
  const Text refusal = Failure([&] { client.Lists.Execute(8); });
  for (const auto& [text, sentence] :
       {std::pair<Text, Text>{message, "List 7, command 0 (JS): The speed must be positive and finite."},
        {refusal, "There is no list 8 on the card."}}) {
    EXPECT_EQ(text, "BeginException------------------------------------\n" + sentence +
                        "\nInnerException------------------------------------\nStackTrace--------------------"
                        "--------------------\n"
                        "\nEndException--------------------------------------");
  }
}

TEST(VirtualCardPicture, ShowsWhatTheLaserMarked) {
  const PictureFile picture;
  std::filesystem::create_symlink("target", picture.Name());
  LoneClient client({"--speed", "max", "--svg", picture.Name(), "--beam", "0.2"});
  client.Run(
      "JA -10,5 MA 30,5 PI 50 MR 0.1,0.2 MR 0.2,0.1 JA 0,0 LON SL 10.0 LOF JA 10,20 LON "
      "JA 20,20 MA 20,-2.5e-7 LOF");
  const Text content = picture.Content();
  for (const char* part : {
           // 40.3 x 20 and 5 % of the larger side all around; y points up, so the picture begins at its top.
           "width='44.33mm' height='24.0300003mm' viewBox='-12.015 -22.015 44.33 24.0300003'",
           "transform='scale(1 -1)'",
           "<polyline points='-10,5 30,5 30.1,5.2 30.3,5.3'/>",
           "<polyline points='30.3,5.3 0,0 10,20'/>",
           "<polyline points='10,20 20,20 20,-2.5e-07'/>",
           "<circle cx='0' cy='0' r='0.1'/>",
           "stroke-width='0.2'",
       }) {
    EXPECT_THAT(content, HasSubstr(part));
  }
  EXPECT_EQ(content.find("<circle"), content.rfind("<circle")) << "a laser that moved made no dot";
  EXPECT_TRUE(std::filesystem::is_symlink(picture.Name()));
  client.Run("MR 1,0");
  EXPECT_EQ(picture.Content().find("30.1,5.2"), Text::npos) << "a picture is of one run";
}

TEST(VirtualCardProgram, DoesWhatItsOptionsSay) {
  const PictureFile picture;
  CardProcess card({"--svg", picture.Name(), "--svg-all-runs", "--speed", "max", "--input", "1=3", "--input",
                    "2=0x10", "--verbose"});
  EXPECT_THAT(picture.Content(), HasSubstr("</svg>")) << "it is written when the card starts";
  {
    Client client(card);
    EXPECT_EQ(client.GetFirmwareProductVersion() + client.GetCardSerialNumber(), "Virtual 3.1012345");
    const Events marked =
        client.Run("BRC 2 U32:255 1 true true U32:3 PI 1 BRC 2 U32:255 2 true true U32:16 PI 2 MA 1,0");
    EXPECT_EQ(marked, (Events{"done 7", "idle 7"})) << "a run begins at 0,0";
    client.Run("MA 2,0");
    client.Refusal("Fly", 1);
  }
  // Of both runs, with a margin of five beams.
  EXPECT_THAT(picture.Content(), HasSubstr("width='3mm' height='1mm' viewBox='-0.5 -0.5 3 1'"));
  EXPECT_THAT(picture.Content(), HasSubstr("<polyline points='0,0 1,0 2,0'/>"));
  Text log;
  while (!log.ends_with(" disconnected\n") && log.size() < 100000) log += card.ReadLine();
  for (const char* part : {" connected\n", "ExecuteList(7)", "Unknown method 'Fly'."}) {
    EXPECT_THAT(log, HasSubstr(part));
  }
}

TEST(VirtualCardProgram, EndsInOrderOnASignal) {
  for (const int signal : {SIGTERM, SIGINT}) {
    CardProcess card;
    Client client(card);
    client.Run("PI 1 SL 3.6e9", "progress");
    EXPECT_EQ(card.End(signal), 0);
    EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"});
    EXPECT_EQ(card.ReadLine(), "") << "it complained";
  }
}

TEST(VirtualCardProgram, TellsWhoManagesServicesWhenItListensAndWhenItEnds) {
  const TemporaryDirectory directory;
  sockaddr_un place{AF_UNIX, {}};
  const Text path = directory.Path + "/notify";
  path.copy(place.sun_path, sizeof place.sun_path - 1);
  const ClientLib::Descriptor manager(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(bind(manager.Get(), reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
  const auto told = [&] {
    char text[100];
    const ssize_t size = recv(manager.Get(), text, sizeof text, MSG_DONTWAIT);
    return Text(text, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  };
  setenv("NOTIFY_SOCKET", path.c_str(), 1);
  CardProcess card;
  CardProcess another({"--port", std::to_string(card.GetPort())});
  unsetenv("NOTIFY_SOCKET");
  EXPECT_EQ(another.End(0), 1);
  EXPECT_EQ(card.End(SIGTERM), 0);
  EXPECT_EQ(told(), "READY=1");
  EXPECT_EQ(told(), "STOPPING=1");
  EXPECT_EQ(told(), "") << "by one that could not start";
}

TEST(VirtualCardProgram, SaysWhatIsWrongWithItsArguments) {
  const CardProcess other;
  const Text port = std::to_string(other.GetPort());
  const std::tuple<std::vector<Text>, int, Text> cases[] = {
      {{"--port", port}, 1, "Cannot listen on 127.0.0.1:" + port + ": Address already in use."},
      {{"--svg", "/no/such/run.svg"}, 1, "Cannot write '/no/such/run.svg': No such file or directory."},
      {{"--port", "65536"}, 2, "--port: takes a whole number from 0 to 65535, not '65536'"},
      {{"--port", "0x10"}, 2, "not '0x10'"},
      {{"--queue", "-1"}, 2, "--queue: takes a whole number from 0 to 1099511627776, not '-1'"},
      {{"--queue", "99999999999999999999"}, 2, "--queue: takes a whole number"},
      {{"--queue="}, 2, "--queue"},
      {{"--memory", "1e6"}, 2, "--memory: takes a whole number from 0 to 1099511627776, not '1e6'"},
      {{"--connections", "0"}, 2, "--connections: takes a whole number from 1 to 10000, not '0'"},
      {{"--standalone-list", "2147483648"}, 2, "--standalone-list: takes a whole number from -2147483648 to"},
      {{"--speed", "0"}, 2, "--speed: takes a positive, finite number or 'max', not '0'"},
      {{"--speed", "inf"}, 2, "--speed: takes a positive"},
      {{"--beam", "nan"}, 2, "--beam: takes a positive, finite number, not 'nan'"},
      {{"--beam", "1e999"}, 2, "--beam: takes a positive"},
      {{"--input", "1=4294967296"},
       2,
       "--input: takes PORT=VALUE, two numbers of 32 bits, not '1=4294967296'"},
      {{"--input", "1"}, 2, "--input: takes PORT=VALUE"},
  };
  for (const auto& [arguments, exitCode, error] : cases) {
    CardProcess card(arguments);
    EXPECT_THAT(card.GetFirstLine(), HasSubstr(error));
    EXPECT_EQ(card.End(0), exitCode);
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
