// The library as C++ programs see it: what a card is asked and what comes back, and runs on a virtual card.
#include "kelvo/kelvo.hpp"

#include <numeric>

#include "ext/AskedCard.h"
#include "int/CardProcess.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace std::chrono_literals;

// What a call returns, 0 for nothing, or the text of its error.
std::string Said(const auto& call) {
  try {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
      return "0";
    } else {
      return testing::PrintToString(call());
    }
  } catch (const kelvo::Error& error) {
    return error.what();
  }
}
#define SAID(...) Said([&] { return __VA_ARGS__; })
#define CPP(...) #__VA_ARGS__, [&] { return SAID(__VA_ARGS__); }

TEST(Cpp, ArgumentsArriveAndAnswersComeBackAsCppHasThem) {
  AskedCard asked;
  const kelvo::CardRef c(asked);
  const std::vector<double> biases = {0.5, 1.5};
  const std::array<std::uint32_t, 3> many = {7, 8, 9};
  std::vector<std::uint32_t> values(1000);
  std::iota(values.begin(), values.end(), 1);
  const std::string words = "one two", zero("a\0b", 3), longText(5000, 'x');
  const std::string_view one = std::string_view(words).substr(0, 3);
  const auto axes = kelvo::Axes::Y | kelvo::Axes::SensorZ;
  using enum kelvo::PowerTarget;
  const AskingCall rows[] = {
      {CPP(c.Laser().ArmLaser(true)), "ArmLaser[true]"},
      {CPP(c.Laser().GetPowerScale(Dac1)), "GetPowerScaleByTarget[2]", "2.5", Packed(2.5)},
      {CPP(c.Laser().ReadLaserStatus() == (kelvo::LaserStatus::Armed | kelvo::LaserStatus::Alarm)),
       "ReadLaserStatus[]", "true", "\6"},
      {CPP(c.Scanner().SetHeadBias(1, axes, biases)), "SetHeadBias[1,34,[0.5,1.5]]"},
      {CPP(c.Scanner().SetHeadBias(1, axes, {0.5})), "SetHeadBias[1,34,[0.5]]"},
      {CPP(c.Scanner().SetHeadBias(1, axes, {biases.data() + 1, 1})), "SetHeadBias[1,34,[1.5]]"},
      {CPP(c.Scanner().SetHeadBias(1, axes, std::span(biases).last(1))), "SetHeadBias[1,34,[1.5]]"},
      {CPP(c.Scanner().GetNominalPosition().Z), "GetNominalPosition[]", "6", "\x93\4\5\6"},
      {CPP(c.Laser().SetPowerCalibration(2, many)), "SetPowerCalibrationByEngine[[7,8,9],2]"},
      {CPP(c.Laser().GetPowerCalibration(2) == values), "GetPowerCalibrationByEngine[2]", "true",
       Packed(values)},
      {CPP(c.System().GetOSVersion() == longText), "GetOSVersion[]", "true", Packed(longText)},
      {CPP(c.System().GetOSVersion()), "GetOSVersion[]", "std::bad_cast", "\1"},
      {CPP(c.Variable().GetInteger(one)), "GetIntegerVariable[\"one\"]", "7", "\7"},
      {CPP(c.Variable().GetInteger(words)), "GetIntegerVariable[\"one two\"]", "7", "\7"},
      {CPP(c.Variable().GetInteger(zero)), "", "A text has a zero inside."},
      {CPP(c.Variable().GetInteger(nullptr)), "", "A null pointer was passed for 'name'."},
      {CPP(c.Gpio().PulsePins(kelvo::IOPort::PortF, 6, 1500ns)), "PulseGpioPins[5,6,1.5]"},
      {CPP(c.Gpio().PulsePins(kelvo::IOPort::PortF, 6, 250.5)), "PulseGpioPins[5,6,250.5]"},
      {CPP(c.CallJson("Any", "[1]")), "Any[1]", "\"[7]\"", "\x91\7"},
  };
  ExpectAsked(asked, rows);
}

TEST(Cpp, TimesAreRoundedUpAndStayInTheirRange) {
  using kelvo::ListTimeout, kelvo::Milliseconds, kelvo::UnsignedMilliseconds;
  const std::pair<std::int64_t, std::int64_t> rows[] = {
      {Milliseconds(1500us).Passed(), 2},
      {Milliseconds(2s).Passed(), 2000},
      {Milliseconds(-5ms).Passed(), 0},
      {Milliseconds(std::chrono::hours::max()).Passed(), 2147483647},
      {Milliseconds(-1).Passed(), -1},
      {kelvo::ConnectionTimeout.Passed(), KELVO_CONNECTION_TIMEOUT},
      {UnsignedMilliseconds(3000000s).Passed(), 3000000000},
      {ListTimeout(1ms).Passed(), 1000},
      {ListTimeout(-5).Passed(), -5},
  };
  for (const auto& [passed, expected] : rows) EXPECT_EQ(passed, expected) << &passed - &rows[0].first;
}

TEST(Cpp, OwnersReleaseWhatReferencesOnlyName) {
  const AskedCard asked;
  std::int32_t card = -1;
  std::int64_t list = -1, font = -1;
  {
    kelvo::Card first("127.0.0.1", asked.Card.Port());
    card = first.handle();
    kelvo::Card owner(std::move(first));
    EXPECT_EQ(SAID(first.GetTimeout()), "Illegal handle.");
    kelvo::List made(owner, "{ MA, P2D[ X=1 Y=2 ] }");
    list = made.handle();
    const kelvo::ListRef reference = made;
    {
      kelvo::Font glyphs(owner, 3);
      font = glyphs.handle();
      glyphs.AddChar('a', reference);
      glyphs.AddChar('b', reference);
      EXPECT_EQ(glyphs.Chars(), (std::vector<std::uint16_t>{'a', 'b'}));
      made = glyphs.GetChar('a');
      EXPECT_EQ(SAID(glyphs.GetChar('c')), "Character does not exist.");
    }
    EXPECT_EQ(vlFontClear(font), -1) << "it lives on";
    EXPECT_EQ(SAID(reference.CommandCount()), "List does not exist.") << "what was assigned over";
    EXPECT_EQ(SAID(kelvo::ListRef(made).CommandCount()), "1");
    list = made.GiveUp();
    EXPECT_EQ(vlListCommandCount(list), 1);
    made = kelvo::List::Adopt(list);
    made.DeleteHandle();
    EXPECT_EQ(vlListCommandCount(list), -1);
    made = kelvo::List(owner);
    bool connected = false;
    EXPECT_TRUE(vlIsConnected(card, &connected) == 0 && connected);
  }
  bool connected = true;
  EXPECT_TRUE(vlIsConnected(card, &connected) == 0 && !connected);
  EXPECT_EQ(SAID(kelvo::Card("127.0.0.1", 0)), "Port must be between 1 and 65535.");
}

// Commands by C++ and by C make the same list: one for every kind of argument.
TEST(Cpp, CommandsAreThoseOfC) {
  const AskedCard asked;
  const kelvo::CardRef card(asked);
  const kelvo::List cpp(card);
  const kelvo::List flat(card);
  const std::int64_t c = flat.handle();
  const vlPoint2D points[] = {{1, 2}, {3, 4}};
  const double times[] = {1.5, 2.5};
  const std::uint16_t powers[] = {7, 8, 9};
  const std::uint8_t bytes[] = {0, 1, 2};
  const vlTransform3D transform = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {10, 11, 12}};
  const vltbTraceBufferConfig_Struct trace = {1, 2, 3, 4};
  const std::tuple<const char*, std::function<void()>, std::function<std::int32_t()>> rows[] = {
#define SAME(call, arguments, ...) \
#call, [&] { cpp.call arguments; }, [&] { return vlList##call(c, __VA_ARGS__); }
      {SAME(AppendMarkAbs2D, (1, 2), 1, 2)},
      {SAME(AppendPointAndShootLineAbs2D, (1, 2, 3, 4, times, powers, 1), 1, 2, 3, 4, times, 2, powers, 3,
            1)},
      {SAME(AppendJumpAndShoot2D, ({{1, 2}, {3, 4}}, 5), points, 2, 5)},
      {SAME(AppendTransformation, (transform), &transform)},
      {SAME(AppendTraceConfig, (trace), &trace)},
      {SAME(AppendHeadBias, (1, kelvo::Axes::XY, times), 1, 3, times, 2)},
      {SAME(AppendMarkDelay, (3ms), 3000)},
      {SAME(AppendSkyWritingMode, (kelvo::SkyWritingMode::MinimumCoH), 2)},
      {SAME(AppendWaitForInput, (1, kelvo::IOPort::PortC, true, false, 2, 1s), 1, 2, true, false, 2,
            1000000)},
      {SAME(AppendBranchToLabelCondFlag, ("label", "name", true), "label", "name", true)},
      {SAME(AppendMarkChar, ('c'), 'c')},
      {SAME(AppendSerialPortVerifyResponseBytes, (bytes, {0, 1}), bytes, 3, bytes, 2)},
      {SAME(AppendList, (flat), c)},
      {SAME(AppendCommandFromString, ("{ MA, P2D[ X=1 Y=2 ] }"), "{ MA, P2D[ X=1 Y=2 ] }")},
  };
  for (const auto& [name, byCpp, byC] : rows) {
    byCpp();
    EXPECT_OK(byC()) << name;
    EXPECT_EQ(cpp.ToString(), TextOf(c)) << name;
  }
}

TEST(Cpp, ARunIsFollowedByWaitsAndCallbacks) {
  const CardProcess process({"--speed", "max"});
  const kelvo::Card card("127.0.0.1", process.GetPort());
  const kelvo::ListArea lists = card.List();
  kelvo::List list(card);
  for (const int value : {11, 22}) list.AppendProgress(value);
  lists.Set(5, list);
  lists.Set(5, list, true);
  EXPECT_EQ(lists.GetStoredListIDs(), std::vector<std::int32_t>{5});
  EXPECT_EQ(lists.GetListStatus(5), kelvo::ListStatus::Ready);

  std::mutex mutex;
  std::vector<std::int32_t> seen, once, done;
  const auto into = [&](std::vector<std::int32_t>& values) {
    return [&](std::int32_t value) {
      const std::lock_guard lock(mutex);
      values.push_back(value);
    };
  };
  std::optional<kelvo::Registration> closing;
  const auto held = std::make_shared<int>();
  kelvo::Registration all = lists.RegisterProgressCallback(into(seen));
  closing = lists.RegisterProgressCallback([&, held](std::int32_t value) {
    closing->Close();
    once.push_back(value + *held);
  });
  const auto atDone = lists.RegisterListDoneCallback(into(done));
  const auto run = [&] {
    lists.Execute(5);
    EXPECT_EQ(lists.WaitForListDone(10s), 5);
    EXPECT_EQ(lists.WaitForListIdle(), 5);
  };
  run();
  EXPECT_EQ(held.use_count(), 1) << "a callback that has ended keeps what it held";
  all.Close();
  run();
  EXPECT_EQ(seen, (std::vector<std::int32_t>{11, 22, 11, 22}));
  EXPECT_EQ(once, std::vector<std::int32_t>{11});
  EXPECT_EQ(done, (std::vector<std::int32_t>{5, 5}));
  EXPECT_EQ(lists.WaitForProgress(0ms), 11);
  lists.ClearPendingEvents();
  EXPECT_EQ(lists.WaitForProgress(-1s), std::nullopt);

  // C and C++ share the places that there are; what fails for want of one is not called later.
  std::uint32_t ids[4];
  for (std::uint32_t& id : ids) {
    EXPECT_OK(vlListRegisterErrorEventCallback(
        card.handle(), [](auto, auto, auto, auto) {}, &id));
  }
  const auto fifth = lists.RegisterErrorEventCallback([](auto, auto) {});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(SAID(void(lists.RegisterErrorEventCallback([](auto, auto) {}))),
              "Unable to register callback!");
  }
  EXPECT_OK(vlListUnRegisterErrorEventCallback(card.handle(), ids[0]));
  std::vector<std::string> told;
  const auto again = lists.RegisterErrorEventCallback(
      [&](kelvo::RpcEventType, std::string_view message) { told.emplace_back(message); });
  list.Clear();
  list.AppendSelectFont(77);
  lists.Set(6, list);
  lists.Execute(6);
  EXPECT_EQ(lists.WaitForListIdle(10s), 6);
  EXPECT_THAT(told, testing::ElementsAre(HasSubstr("77")));
  EXPECT_EQ(SAID(void(lists.RegisterProgressCallback(nullptr))), "A null pointer was passed for 'callback'.");
}

TEST(Cpp, ACardsFilesConfigurationsAndAnswersOfAnyLength) {
  const CardProcess process;
  const kelvo::Card card("127.0.0.1", process.GetPort());
  const TemporaryDirectory directory;
  const std::filesystem::path path = directory.Path + "/file";
  std::ofstream(path) << std::string(20000, 'x');
  const kelvo::FileArea files = card.File();
  using enum kelvo::DirectorySelector;
  std::vector<std::uint64_t> moved;
  files.Put(JOBFILES, "job", path, [&](std::uint64_t now, std::uint64_t) {
    moved.push_back(now);
    return true;
  });
  EXPECT_EQ(moved, (std::vector<std::uint64_t>{8192, 16384, 20000}));
  EXPECT_THROW(files.Get(JOBFILES, "job", path, [](auto, auto) -> bool { throw std::out_of_range("mine"); }),
               std::out_of_range);
  const auto stop = [](auto, auto) { return false; };
  EXPECT_EQ(SAID(files.Get(JOBFILES, "job", path, stop)), "The transfer was cancelled.");
  std::ofstream(path) << "short";
  std::vector<std::string> names = {"job"};
  for (int i = 0; i < 60; ++i) {
    names.push_back(std::string(200, 'n') + std::to_string(i));
    files.Put(JOBFILES, names.back(), path);
  }
  EXPECT_THAT(files.GetFiles(JOBFILES), testing::UnorderedElementsAreArray(names));
  EXPECT_TRUE(files.GetFiles(BINFILES).empty());

  for (int i = 0; i < 300; ++i) card.Variable().SetInteger("v" + std::to_string(i), i);
  EXPECT_EQ(card.Variable().GetAll().size(), 300U);
  EXPECT_GT(card.System().GetSupportedTimeZones().size(), 10U);

  kelvo::GpioConfig gpio = card.Gpio().GetConfig();
  std::strcpy(gpio.Ports.Items[2].PinNames.Items[1], "part");
  gpio.Ports.Items[2].PinNames.Count = 2;
  card.Gpio().SetConfig(gpio);
  gpio = card.Gpio().GetConfig();
  const auto [port, pin] = kelvo::GpioArea::ConfigFindPin(gpio, "part");
  EXPECT_TRUE(port == kelvo::IOPort::PortC && pin == 1);
  EXPECT_THAT(kelvo::GpioArea::ToStringConfig(gpio), HasSubstr("part"));
  EXPECT_EQ(card.Gpio().WaitForChange(port, 2, 0, 0ms), std::nullopt);
  EXPECT_EQ(card.Gpio().WaitForChange(port, 2, 2, 1s), 0U);
  EXPECT_EQ(card.SerialPort().Read(0, 10, 0ms), std::nullopt);
  const kelvo::SystemTime time(1234567890s);
  card.System().SetSystemTime(time);
  EXPECT_LT(card.System().GetUniversalTime() - time, 100s);
  EXPECT_EQ(
      kelvo::PredictIPAddressFromSerialNumber("12345", kelvo::Installation::Internal, true).substr(0, 6),
      "fe80::");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
