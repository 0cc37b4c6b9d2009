// Settings: their defaults, their way to the card and back, what is refused, and what a card keeps.
#include "ext/AskedCard.h"
#include "int/CardProcess.h"

namespace VELTRO::KELVO::Test {
namespace {

// Other than that these are defaults.
auto LaserRecord(int version, int polarity, bool last) {
  return std::make_tuple(version, polarity, 0, 0, 0., 0., 0., 0., 0., 0., 0., 0., 1., 2., 1, 0, 2, 0, false,
                         0., 0., false, false, false, false, false, false, false, false, last);
}

auto SystemRecord(int version, const std::string& zone, std::vector<int> axes) {
  return std::make_tuple(
      version, zone, false, 0, 0,
      std::make_tuple(2, false, false, 21120, 11136, 11136, 0, 0, 0, 1000, 3, false, std::move(axes)));
}

template <class F>
F Defaults(std::int32_t (*init)(F*)) {
  F flat{};
  EXPECT_OK(init(&flat));
  return flat;
}

template <class F>
std::string TextOf(std::int32_t (*toString)(const F*, char*, std::uint32_t, std::uint32_t*), const F& flat) {
  char text[3000] = "";
  std::uint32_t length = 0;
  const std::string outcome = Outcome(toString(&flat, text, sizeof text, &length));
  return outcome == "0" ? text : outcome;
}

TEST(Configuration, HasDefaultsOnTheWire) {
  AskedCard card;
  const vlLaserConfig laser = Defaults(vlLaserInitConfig);
  ASSERT_OK(vlLaserSetConfig(card.Handle, &laser));
  EXPECT_TRUE(card.Arguments == Packed(std::make_tuple(LaserRecord(8, 0, false)))) << card.Asked;
  const vlSystemConfig system = Defaults(vlSystemInitConfig);
  ASSERT_OK(vlSystemSetConfig(card.Handle, &system));
  EXPECT_TRUE(card.Arguments == Packed(std::make_tuple(SystemRecord(5, "UTC", {3})))) << card.Asked;
}

TEST(Configuration, HasDefaultsAsTextAndNeedsRoomForItsZero) {
  const vlLaserConfig laser = Defaults(vlLaserInitConfig);
  const std::string text = TextOf(vlLaserToStringConfig, laser);
  EXPECT_THAT(text, StartsWith("FpsPolarity=ActiveHigh, GatePolarity=ActiveHigh, LMPolarity="));
  EXPECT_THAT(text, EndsWith(", EnableEquallySpacedPulses=false, ConfigVersion=8"));
  const std::string system = TextOf(vlSystemToStringConfig, Defaults(vlSystemInitConfig));
  EXPECT_THAT(system, StartsWith("TimeZone=UTC, EnableStandAloneMode=false, StandAloneListID=0, "));
  EXPECT_THAT(system, EndsWith("ScanHeadAxes=[ XY ], ConfigVersion=2 }, ConfigVersion=5"));
  char room[1000] = "";
  const auto size = static_cast<std::uint32_t>(text.size());
  std::uint32_t length = 0;
  EXPECT_EQ(Told(vlLaserToStringConfig(&laser, room, size + 2, &length), length), Told(0, size));
  EXPECT_FAILS(vlLaserToStringConfig(&laser, room, size + 1, &length), "Buffer is too small.");
}

TEST(Configuration, IsLoadedAndStoredByTheCard) {
  AskedCard c;
  const AskingCall calls[] = {
      {ASK(vlLaserLoadConfig(c)), "LoadLaserConfig[]"},
      {ASK(vlLaserStoreConfig(c)), "StoreLaserConfig[]"},
      {ASK(vlSystemLoadConfig(c)), "LoadSystemConfig[]"},
      {ASK(vlSystemStoreConfig(c)), "StoreSystemConfig[]"},
      {ASK(vlScannerLoadConfig(c)), "LoadScannerConfig[]"},
      {ASK(vlScannerStoreConfig(c)), "StoreScannerConfig[]"},
      {ASK(vlProcessLoadVariables(c)), "LoadVariables[]"},
      {ASK(vlProcessStoreVariables(c)), "StoreVariables[]"},
      {ASK(vlMotfLoadConfig(c)), "LoadMotfConfig[]"},
      {ASK(vlMotfStoreConfig(c)), "StoreMotfConfig[]"},
      {ASK(vlMotfQuadratureDecoderLoadConfig(c)), "LoadQuadratureDecoderConfig[]"},
      {ASK(vlMotfQuadratureDecoderStoreConfig(c)), "StoreQuadratureDecoderConfig[]"},
      {ASK(vlEventLoadConfig(c)), "LoadEventConfig[]"},
      {ASK(vlEventStoreConfig(c)), "StoreEventConfig[]"},
  };
  ExpectAsked(c, calls);
}

TEST(Configuration, IsTakenFromTheCardOrStaysAsItWas) {
  AskedCard c;
  const std::string zone(127, 'z');
  const auto *const laserAsked = "GetLaserConfig[]", *const asked = "GetSystemConfig[]";
  const auto system = [](int version, const std::string& name, std::vector<int> axes) {
    return Packed(SystemRecord(version, name, std::move(axes)));
  };
  vlLaserConfig l{};
  vlSystemConfig s{};
  const auto& axes = s.ScannerMonitoring.ScanHeadAxes;
  const AskingCall calls[] = {
      {ASK(vlLaserGetConfig(c, &l), l.ConfigVersion), laserAsked, "0 7", Packed(LaserRecord(7, 1, true))},
      {ASK(vlLaserGetConfig(c, &l), l.ConfigVersion), laserAsked,
       "The Version of the supplied config is newer than the newest supported version. 7",
       Packed(LaserRecord(9, 0, false))},
      {ASK(vlLaserGetConfig(c, &l), l.FpsPolarity), laserAsked,
       "Polarity::_from_integral: invalid argument 1", Packed(LaserRecord(8, 2, false))},
      {ASK(vlLaserGetConfig(c, &l), l.EnableEquallySpacedPulses), laserAsked, "std::bad_cast 1", "\x91\x08"},
      {ASK(vlSystemGetConfig(c, &s), axes.Items[1], s.TimeZone), asked, "0 7 " + zone,
       system(4, zone, {1, 7})},
      {ASK(vlSystemGetConfig(c, &s), axes.Items[1]), asked, "Error converting SystemConfig to C. 7",
       system(5, zone + "z", {})},
      {ASK(vlSystemGetConfig(c, &s), axes.Count), asked, "Error converting ScannerMonitoringConfig to C. 2",
       system(5, "x", {1, 1, 1})},
      {ASK(vlSystemGetConfig(c, &s), axes.Items[0]), asked, "0 5", system(4, zone, {vlAxes_X | vlAxes_Z})},
      {ASK(vlSystemGetConfig(c, &s), s.TimeZone), asked, "Axes::_from_integral: invalid argument " + zone,
       system(5, "x", {64 + 5})},
  };
  ExpectAsked(c, calls);
}

TEST(Configuration, IsNotSentWhenItIsWrong) {
  AskedCard c;
  vlLaserConfig laser = Defaults(vlLaserInitConfig);
  laser.HotPowerTarget = 7;
  vlSystemConfig endless = Defaults(vlSystemInitConfig), axes = endless;
  std::memset(endless.TimeZone, 'x', sizeof endless.TimeZone);
  axes.ScannerMonitoring.ScanHeadAxes.Count = 3;
  vlProcessVariables variables = Defaults(vlProcessInitVariables);
  variables.OnOffPattern.Count = 65;
  vlMotfConfig motf = Defaults(vlMotfInitConfig);
  motf.OperatingMode = 2;
  vlQuadratureDecoderConfig decoders = Defaults(vlMotfQuadratureDecoderInitConfig);
  decoders.Modules.Count = 5;
  vlEventConfig events = Defaults(vlEventInitConfig);
  events.EventSettings.Count = 2;  // of the same number
  const AskingCall calls[] = {
      {ASK(vlLaserSetConfig(c, &laser)), "", "PowerTarget::_from_integral: invalid argument"},
      {ASK(vlSystemSetConfig(c, &endless)), "", "Error converting SystemConfig from C."},
      {ASK(vlSystemSetConfig(c, &axes)), "", "Error converting SystemConfig from C."},
      {ASK(vlProcessSetVariables(c, &variables)), "", "Illegal number of OnOffPattern values"},
      {ASK(vlMotfSetConfig(c, &motf)), "", "MotfOperatingMode::_from_integral: invalid argument"},
      {ASK(vlMotfQuadratureDecoderSetConfig(c, &decoders)), "",
       "Error converting QuadratureDecoderConfig from C."},
      {ASK(vlEventSetConfig(c, &events)), "", "Error converting EventConfig from C."},
  };
  ExpectAsked(c, calls);
  EXPECT_EQ(TextOf(vlProcessToStringVariables, variables), "Illegal number of OnOffPattern values");
  EXPECT_EQ(TextOf(vlMotfToStringConfig, motf), "MotfOperatingMode::_from_integral: invalid argument");
  EXPECT_EQ(TextOf(vlMotfQuadratureDecoderToStringConfig, decoders),
            "Error converting QuadratureDecoderConfig from C.");
}

// Puts nil in the place of every part of an answer, one after the other, also of parts of parts, and calls `look`.
void ForEachSpoiled(msgpack::object& part, const std::function<void()>& look) {
  const msgpack::object whole = std::exchange(part, msgpack::object());
  look();
  part = whole;
  if (part.type == msgpack::type::ARRAY) {
    for (std::uint32_t i = 0; i < part.via.array.size; ++i) ForEachSpoiled(part.via.array.ptr[i], look);
  } else if (part.type == msgpack::type::MAP) {
    for (std::uint32_t i = 0; i < part.via.map.size; ++i) {
      ForEachSpoiled(part.via.map.ptr[i].key, look);
      ForEachSpoiled(part.via.map.ptr[i].val, look);
    }
  }
}

TEST(Configuration, IsRefusedWithAnyPartOfAWrongKind) {
  AskedCard card;
  const auto expectRefusals = [&](auto flat, auto set, auto get) {
    ASSERT_OK(set(card.Handle, &flat));
    const auto arguments = msgpack::unpack(card.Arguments.data(), card.Arguments.size());
    msgpack::object& record = arguments->via.array.ptr[0];
    const auto before = flat;
    int parts = 0;
    ForEachSpoiled(record, [&] {
      card.Answer = Packed(record);
      EXPECT_FAILS(get(card.Handle, &flat), "std::bad_cast") << record;
      ++parts;
    });
    EXPECT_TRUE(std::memcmp(&flat, &before, sizeof flat) == 0) << "a refused answer has changed it";
    EXPECT_GE(parts, 8);
    card.Answer = Packed(record);
    EXPECT_OK(get(card.Handle, &flat));
  };
  vlEventConfig events = Defaults(vlEventInitConfig);
  events.EventSettings.Count = events.EventSettings.Items[0].Value.Exclusions.Count = 1;
  vlProcessVariables variables = Defaults(vlProcessInitVariables);
  variables.OnOffPattern.Count = 2;
  expectRefusals(Defaults(vlLaserInitConfig), vlLaserSetConfig, vlLaserGetConfig);
  expectRefusals(Defaults(vlScannerInitConfig), vlScannerSetConfig, vlScannerGetConfig);
  expectRefusals(variables, vlProcessSetVariables, vlProcessGetVariables);
  expectRefusals(Defaults(vlSystemInitConfig), vlSystemSetConfig, vlSystemGetConfig);
  expectRefusals(Defaults(vlMotfInitConfig), vlMotfSetConfig, vlMotfGetConfig);
  expectRefusals(Defaults(vlMotfQuadratureDecoderInitConfig), vlMotfQuadratureDecoderSetConfig,
                 vlMotfQuadratureDecoderGetConfig);
  expectRefusals(events, vlEventSetConfig, vlEventGetConfig);
  expectRefusals(Defaults(vlHeadCorrectionInitOpticalParameters), vlPowerCorrectionCreate,
                 vlPowerCorrectionGetOpticalParameters);
}

TEST(Motion, DirectionsAreThoseOfAnAngle) {
  vlMotfConfig motf = Defaults(vlMotfInitConfig);
  EXPECT_OK(vlMotfConfigSetDirectionFromAngle(&motf, std::asin(0.6)));
  const std::pair<double, double> rows[] = {{motf.MainDirection.X, 0.8},
                                            {motf.MainDirection.Y, 0.6},
                                            {motf.CompensationDirection.X, -0.6},
                                            {motf.CompensationDirection.Y, 0.8}};
  for (const auto& [value, expected] : rows) EXPECT_NEAR(value, expected, 1e-15);
  EXPECT_OK(vlMotfConfigSetDirectionFromAngle(&motf, -0.0));
  EXPECT_FALSE(std::signbit(motf.MainDirection.Y) || std::signbit(motf.CompensationDirection.X));
}

TEST(Wobble, HasTheShapesOfACircleAndAnEight) {
  vlWobbleSettings w{};
  EXPECT_EQ(Told(vlProcessWobbleSetCircle(&w, 3, 4), w.Amplitude.X, w.Amplitude.Y, w.Frequency.X,
                 w.Frequency.Y, w.Phase.X, w.Phase.Y),
            "0 3 3 4 4 0 1.5708");
  EXPECT_EQ(Told(vlProcessWobbleSetEight(&w, 3, 5, 4), w.Amplitude.X, w.Amplitude.Y, w.Frequency.X,
                 w.Frequency.Y, w.Phase.X, w.Phase.Y),
            "0 3 5 4 8 0 0");
}

TEST(VirtualCard, HasTimeZones) {
  const CardConnection card;
  std::uint32_t zones[999], count = 0;
  std::uint64_t time = 0;
  vlSystemConfig config = Defaults(vlSystemInitConfig);
  EXPECT_FAILS(vlSystemGetSupportedTimeZones(card, zones, 9, &count), "Error converting TimeZone data.");
  ASSERT_OK(vlSystemSetSystemTime(card, 1000000));
  ASSERT_OK(vlSystemGetSupportedTimeZones(card, zones, 999, &count));
  std::map<std::string, double> hours;
  for (const char* name = reinterpret_cast<const char*>(zones); count > 0; --count) {
    std::strcpy(config.TimeZone, name);
    EXPECT_OK(vlSystemSetConfig(card, &config)) << name;
    EXPECT_OK(vlSystemGetTime(card, &time)) << name;
    hours[name] = std::round((static_cast<double>(time) - 1000000) / 360) / 10;
    name += std::strlen(name) + 1;
  }
  EXPECT_GT(hours.size(), 12U);
  EXPECT_EQ(hours["Asia/Kolkata"], 5.5);
  EXPECT_EQ(hours["America/Denver"], -7);
  EXPECT_OK(vlSystemResetToDefaults(card));
  EXPECT_OK(vlSystemGetConfig(card, &config));
  EXPECT_STREQ(config.TimeZone, "UTC");
}

TEST(VirtualCard, KeepsCalibrationsThatAreStored) {
  const TemporaryDirectory directory;
  std::uint32_t table[] = {7, 9}, count = 0;
  for (const bool isStored : {false, true}) {
    const CardConnection card({"--state", directory.Path});
    EXPECT_OK(vlLaserLoadPowerCalibration(card, 1));
    EXPECT_EQ(Told(vlLaserGetPowerCalibration(card, 1, table, 2, &count), count, table[1]),
              isStored ? "0 2 9" : "0 0 9");
    EXPECT_OK(vlLaserSetPowerCalibration(card, 1, table, 2));
    EXPECT_OK(vlLaserStorePowerCalibration(card, 1));
  }
}

TEST(VirtualCard, HasTheHeadsOfItsFormat) {
  const CardProcess process({"--speed", "max"});
  Connection card(process.GetPort());
  vlScannerConfig config = Defaults(vlScannerInitConfig);
  vlScannerPositions at{};
  const double bias[] = {0.5, -1};
  std::int32_t idle = 0;
  EXPECT_EQ(vlScannerSetHeadBias(card, 1, vlAxes_Y | vlAxes_Z, bias, 2), -1) << "there is one head";
  EXPECT_OK(vlScannerConfigSetHeadFormat(&config, vlScanHeadFormat_VL3_Dual3D));
  EXPECT_OK(vlScannerSetConfig(card, &config));
  EXPECT_OK(vlScannerSetHeadBias(card, 1, vlAxes_Y | vlAxes_Z, bias, 2));
  const std::int64_t list = vlListAllocate(card);
  EXPECT_OK(vlListAppendJumpAbs3D(list, 3, 4, 5));
  EXPECT_OK(vlListSet(card, 1, list, false, -1));
  EXPECT_OK(vlListExecute(card, 1));
  EXPECT_OK(vlListWaitForListIdle(card, &idle, 9000));
  const auto& [count, heads] = at.Heads;
  EXPECT_EQ(Told(vlScannerReadPositions(card, &at), count, heads[0].Items[2]), "0 2 5");
  EXPECT_EQ(Told(0, heads[1].Items[0], heads[1].Items[1], heads[1].Items[2]), "0 3 4.5 4");
  EXPECT_OK(vlScannerGetConfig(card, &config));
  const std::string text = TextOf(vlScannerToStringConfig, config);
  EXPECT_THAT(text, EndsWith(", HeadFormat=VL3_Dual3D, ConfigVersion=12"));
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
