// What all configuration records have in common, and their bytes and texts. A record joins with a line.
#include "capi/FlatRecord.h"
#include "int/Filler.h"
#include "int/Helpers.h"
#include "peripherals/AdapterBoardConfig.h"
#include "peripherals/GpioConfig.h"
#include "peripherals/SerialPortConfig.h"
#include "peripherals/SpiConfig.h"

namespace VELTRO::KELVO::Test {
namespace {

// The plain struct has the fields of the record in their order, and no other: each begins where the one before it
// leaves room.
template <class R, class Plain>
void ExpectSameLayout() {
  R record;
  Plain plain{};
  std::size_t end = 0, place = 0;
  const auto aligned = [&](std::size_t alignment) { return (end + alignment - 1) / alignment * alignment; };
  const auto follow = [&]<class T>(const T& field) {
    const auto at = reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&plain);
    EXPECT_EQ(static_cast<std::size_t>(at), aligned(alignof(T))) << place;
    end = static_cast<std::size_t>(at) + sizeof field;
  };
  const auto followVersion = [&] {
    if (place++ == R::VersionPlace) follow(plain.ConfigVersion);
  };
  followVersion();
  R::ForEachPair(record, plain,
                 [&](const auto&, const auto& namesake) { follow(namesake), followVersion(); });
  EXPECT_EQ(aligned(alignof(Plain)), sizeof plain);
}

// Whatever is wrong with a reply, the record that it is for stays as it was.
template <class R, class Plain>
void ExpectChecks() {
  const std::string bytes = Packed(R());
  const auto unpacked = msgpack::unpack(bytes.data(), bytes.size());
  const auto elements = unpacked->as<std::vector<msgpack::object>>();
  auto changed = elements;
  R kept;
  const auto outcome = [&] {
    const std::string reply = Packed(std::exchange(changed, elements));
    return Failure([&] { msgpack::unpack(reply.data(), reply.size())->convert(kept); });
  };
  changed[R::VersionPlace] = msgpack::object(R::CurrentConfigVersion - 1);
  EXPECT_EQ(outcome(), "no failure");
  kept.init();
  const std::string text = kept.ToString();
  EXPECT_NE(text, R().ToString()) << "it has a version of its own";
  Plain plain{};
  Flat::FromRecord(kept, plain);
  EXPECT_EQ(Flat::Taken<R>(&plain).ToString(), text);
  const auto expectFailureWith = [&](std::size_t place, const auto& value, const std::string& expected) {
    changed.resize(std::max(place + 1, changed.size()));
    changed[place] = msgpack::object(value);
    EXPECT_EQ(outcome(), expected) << place;
    EXPECT_EQ(kept.ToString(), text);
  };
  expectFailureWith(elements.size(), 0, "std::bad_cast");
  expectFailureWith(R::VersionPlace, R::CurrentConfigVersion + 1,
                    "The Version of the supplied config is newer than the newest supported version.");
  R::ForEachField(kept, [&, place = std::size_t{0}]<class T>(const char*, const T&) mutable {
    if (place == R::VersionPlace) ++place;
    if constexpr (IsReflectiveEnum<T>) {
      expectFailureWith(place, 999, std::string(T::_name()) + "::_from_integral: invalid argument");
    }
    ++place;
  });
  changed.pop_back();
  EXPECT_EQ(outcome(), "std::bad_cast");
}

template <class R, class Plain>
void ExpectRecord() {
  SCOPED_TRACE(testing::internal::GetTypeName<R>());
  ExpectChecks<R, Plain>();
  ExpectSameLayout<R, Plain>();
}

TEST(Records, AreCheckedElementByElement) {
  ExpectRecord<LaserConfig, vlLaserConfig>();
  ExpectRecord<ScannerConfig, vlScannerConfig>();
  ExpectRecord<ScanHeadConfig, vlScanHeadConfig>();
  ExpectRecord<ScannerMonitoringConfig, vlScannerMonitoringConfig>();
  ExpectRecord<ProcessVariables, vlProcessVariables>();
  ExpectRecord<SkyWritingSettings, vlSkyWritingSettings>();
  ExpectRecord<WobbleSettings, vlWobbleSettings>();
  ExpectRecord<SystemConfig, vlSystemConfig>();
  ExpectRecord<MotfConfig, vlMotfConfig>();
  ExpectRecord<MotfSource, vlMotfSource>();
  ExpectRecord<QuadratureDecoderConfig, vlQuadratureDecoderConfig>();
  ExpectRecord<QuadratureDecoderModule, vlQuadratureDecoderModule>();
  ExpectRecord<EventConfig, vlEventConfig>();
  ExpectRecord<OpticalParameters, vlOpticalParameters>();
  ExpectRecord<GpioConfig, vlGpioConfig>();
  ExpectRecord<SerialPortConfig, vlSerialPortConfig>();
  ExpectRecord<PortConfig, vlPortConfig>();
  ExpectRecord<SpiConfig, vlSpiConfig>();
  ExpectRecord<SpiModule, vlSpiModule>();
  ExpectRecord<AdapterBoardConfig, vlAdapterBoardConfig>();
}

TEST(Records, AreRefusedWhenThePlainStructHasNoRoomForTheirLists) {
  ProcessVariables variables;
  QuadratureDecoderConfig decoders;
  EventConfig events, exclusions;
  vlProcessVariables flatVariables{};
  vlQuadratureDecoderConfig flatDecoders{};
  vlEventConfig flatEvents{};
  for (const std::size_t excess : {0U, 1U}) {
    variables.OnOffPattern.resize(KELVO_ON_OFF_PATTERN_CAPACITY + excess);
    decoders.Modules.resize(KELVO_DECODER_MODULE_CAPACITY + excess);
    while (events.EventSettings.size() < KELVO_EVENT_CAPACITY + excess) {
      events.EventSettings[static_cast<std::int32_t>(events.EventSettings.size())];
    }
    auto& excluded = exclusions.EventSettings[1].Exclusions;
    while (excluded.size() < KELVO_EVENT_EXCLUSION_CAPACITY + excess) {
      excluded.insert(static_cast<std::int32_t>(excluded.size()));
    }
    const auto outcome = [&](const char* failure) { return excess == 0 ? "no failure" : failure; };
    EXPECT_FAILURE(Flat::FromRecord(variables, flatVariables), outcome("Too much OnOffPattern values"));
    EXPECT_FAILURE(Flat::FromRecord(decoders, flatDecoders),
                   outcome("Error converting QuadratureDecoderConfig to C."));
    for (const EventConfig& config : {events, exclusions}) {
      EXPECT_FAILURE(Flat::FromRecord(config, flatEvents), outcome("Error converting EventConfig to C."));
    }
  }
}

TEST(Records, TravelWithTheseDefaults) {
  const std::string d0 = " CB 00 00 00 00 00 00 00 00", d1 = " CB 3F F0 00 00 00 00 00 00", d3 = d0 + d0 + d0;
  const std::string small = " CB 3F 1A 36 E2 EB 1C 43 2D", module = " 97 04 C2" + d0 + d0 + " C2 C2" + d1;
  const std::string x = " 93" + d1 + d0 + d0, y = " 93" + d0 + d1 + d0;
  EXPECT_EQ(Hex(Packed(LaserConfig())), "DC 00 1E 08 00 00 00" + d3 + d3 + d0 + d0 + d1 +
                                            " CB 40 00 00 00 00 00 00 00 01 00 02 00 C2" + d0 + d0 +
                                            " C2 C2 C2 C2 C2 C2 C2 C2 C2");
  EXPECT_EQ(Hex(Packed(ProcessVariables())),
            "DC 00 1B 12" + d1 + d1 + d0 + " C2" + d0 + d0 + d1 + d0 + " CB 3E A0 C6 F7 A0 B5 ED 8D C2" + d3 +
                " CB 40 8F 40 00 00 00 00 00 CB 3F B9 99 99 99 99 99 9A" + d1 + " 00 00 92 99" + d1 + d3 +
                d1 + d3 + d1 + " 93" + d3 + " 93" + d1 + d1 + d1 + d0 + " 90 C2" + d0 + " 99 04 00" + d0 +
                " CB 7F F8 00 00 00 00 00 00" + d3 + d0 + d0 + " 94 01 92" + d0 + d0 + " 92" + small + small +
                " 92" + d0 + " CB 3F F9 21 FB 54 44 2D 18");
  EXPECT_EQ(Hex(Packed(MotfConfig())),
            "9E 09 00 93 02 00 00 C2 93 02 00 01 C2" + d0 + " C2" + d3 + x + y + " 93" + d3);
  EXPECT_EQ(Hex(Packed(QuadratureDecoderConfig())), "92 04 92" + module + module);
}

TEST(Records, ReadOddValuesAsTheseTexts) {
  const std::string variables = ProcessVariables().ToString();
  for (const char* part : {"MagnificationSpeed=5e-07, ", "OnOffPattern=[  ], ",
                           "MergedExtensionsMaxCoH=nan, ", "Phase={ 0, 1.5708 }"}) {
    EXPECT_THAT(variables, HasSubstr(part));
  }
  ScannerMonitoringConfig monitoring;
  monitoring.ScanHeadAxes = {Axes::XY, static_cast<Axes::_enumerated>(0x25)};
  EXPECT_TRUE(monitoring.ToString().ends_with(", ScanHeadAxes=[ XY, X|Z|SensorZ ], ConfigVersion=2"));
  EventConfig events;
  events.EventSettings = {{-1, {true, {7, -8}}}, {5, {}}};
  EXPECT_EQ(Hex(Packed(events)), "92 01 82 FF 92 C3 92 F8 07 05 92 C2 90");
  EXPECT_EQ(events.ToString(),
            "{ ConfigVersion=1, EventSettings=[ -1={ EnableGlobally=true, Exclusions=[ -8, 7 ] }, 5={ "
            "EnableGlobally=false, Exclusions=[  ] } ] }");
}

// The values on the wire, and the text of those that have something of their own in it: else it is the names, which
// docs/protocol.md has, too, with the values in the same order.
template <class R>
void ExpectInPlace(const char* wire, const char* text = nullptr) {
  const R record = Filled<R>();
  const std::string bytes = Packed(record);
  std::ostringstream values;
  values << msgpack::unpack(bytes.data(), bytes.size()).get();
  EXPECT_EQ(values.str(), wire);
  EXPECT_EQ(record.ToString(), text != nullptr ? text : record.ToString());
}

// Numbers rise in the order of the fields, so that one in another's place shows.
TEST(Records, HaveEachFieldInItsPlaceOnTheWireAndInText) {
  ExpectInPlace<LaserConfig>(
      "[8,1,1,1,1.5,2.5,3.5,4.5,5.5,6.5,7.5,8.5,9.5,10.5,0,1,0,11,true,12.5,13.5,true,true,true,true,true,"
      "true,true,true,true]");
  ExpectInPlace<ProcessVariables>(
      "[18,1.5,2.5,3.5,true,4.5,5.5,6.5,7.5,8.5,true,9.5,10.5,11.5,12.5,13.5,14.5,15,16,[[17.5,18.5,19.5,20."
      "5,21.5,22.5,23.5,24.5,25.5],[26.5,27.5,28.5]],[29.5,30.5,31.5],32.5,[33.5],true,34.5,[4,1,35.5,36.5,"
      "37.5,38.5,39.5,40.5,41.5],[1,[42.5,43.5],[44.5,45.5],[46.5,47.5]]]",
      "SpeedScale=1.5, JumpSpeed=2.5, JumpDelay=3.5, EnableVariableJumpDelay=true, MinJumpDelay=4.5, "
      "JumpLengthLimit=5.5, MarkSpeed=6.5, MarkDelay=7.5, MagnificationSpeed=8.5, "
      "EnableVariablePolyDelay=true, PolyDelay=9.5, MaxDwellTime=12.5, LaserOnDelay=10.5, "
      "LaserOffDelay=11.5, LmFrequency=13.5, LmWidth=14.5, Power=15, Power1=16, Transformation={ ( 17.5, "
      "18.5, 19.5, 20.5, 21.5, 22.5, 23.5, 24.5, 25.5 ), ( 26.5, 27.5, 28.5 ) }, HeadingScale={ X=29.5, "
      "Y=30.5, Z=31.5 }, TileOffset=32.5, OnOffPattern=[ 33.5 ], EnableDashedLine=true, "
      "EvaluationLeadTime=34.5, SkyWriting={ Mode=ForceAtStartFinish, MinCoH=35.5, "
      "MergedExtensionsMaxCoH=36.5, ExtensionTime=37.5, AccelerationDelay=38.5, DecelerationDelay=39.5, "
      "LaserOnDelay=40.5, LaserOffDelay=41.5, ConfigVersion=4 }, Wobble={ Amplitude={ 42.5, 43.5 }, "
      "Frequency={ 44.5, 45.5 }, Phase={ 46.5, 47.5 }, ConfigVersion=1 }, ConfigVersion=18");
  ExpectInPlace<ScannerConfig>(
      "[12,[1.5,2.5,3.5],4.5,5,[[6,10,[[7.5,8.5,9.5,10.5,11.5,12.5,13.5,14.5,15.5],[16.5,17.5,18.5]],[[19.5,"
      "20.5,21.5],[22.5,23.5,24.5],[25.5,26.5,27.5],[28.5,29.5,30.5]],true],[31,10,[[32.5,33.5,34.5,35.5,36."
      "5,37.5,38.5,39.5,40.5],[41.5,42.5,43.5]],[[44.5,45.5,46.5],[47.5,48.5,49.5],[50.5,51.5,52.5],[53.5,54."
      "5,55.5]],true]],56.5,0]",
      "FieldSize={ X=1.5, Y=2.5, Z=3.5 }, MaxMagnification=4.5, HeadCount=5, Heads=[ { FieldTransform={ ( "
      "7.5, 8.5, 9.5, 10.5, 11.5, 12.5, 13.5, 14.5, 15.5 ), ( 16.5, 17.5, 18.5 ) }, Axes=[ "
      "AccelerationTime=19.5, TrackingError=20.5, HeadBias=21.5, AccelerationTime=22.5, TrackingError=23.5, "
      "HeadBias=24.5, AccelerationTime=25.5, TrackingError=26.5, HeadBias=27.5, AccelerationTime=28.5, "
      "TrackingError=29.5, HeadBias=30.5 ], EnableFieldCorrection=true, ConfigVersion=10 }, { "
      "FieldTransform={ ( 32.5, 33.5, 34.5, 35.5, 36.5, 37.5, 38.5, 39.5, 40.5 ), ( 41.5, 42.5, 43.5 ) }, "
      "Axes=[ AccelerationTime=44.5, TrackingError=45.5, HeadBias=46.5, AccelerationTime=47.5, "
      "TrackingError=48.5, HeadBias=49.5, AccelerationTime=50.5, TrackingError=51.5, HeadBias=52.5, "
      "AccelerationTime=53.5, TrackingError=54.5, HeadBias=55.5 ], EnableFieldCorrection=true, "
      "ConfigVersion=10 } ], ScanHeadDelay=56.5, HeadFormat=XY2_Single3D, ConfigVersion=12");
  ExpectInPlace<SystemConfig>(
      "[5,\"Asia\\/Kolkata\",true,1,2,[2,true,true,3,4,5,6,7,8,9,10,true,[0,1]]]",
      "TimeZone=Asia/Kolkata, EnableStandAloneMode=true, StandAloneListID=1, "
      "StandAloneExecuteOnErrorListID=2, ScannerMonitoring={ Enabled=true, UsePingPong=true, Command=3, "
      "Mask=4, GoodValue=5, Command1=6, Mask1=7, GoodValue1=8, Period=9, MinConsecutiveErrors=10, "
      "ContinueOnError=true, ScanHeadAxes=[ None, X ], ConfigVersion=2 }, ConfigVersion=5");
  ExpectInPlace<MotfConfig>(
      "[9,1,[2,1,1],true,[2,1,2],true,3.5,true,4.5,5.5,6.5,[7.5,8.5,9.5],[10.5,11.5,12.5],[13.5,14.5,15.5]]");
  ExpectInPlace<QuadratureDecoderConfig>(
      "[4,[[4,true,1.5,2.5,true,true,3.5],[4,true,4.5,5.5,true,true,6.5],[4,true,7.5,8.5,true,true,9.5]]]");
  ExpectInPlace<OpticalParameters>(
      "[7,1,2,8,3,4,5,6,7.5,8.5,9.5,10.5,11.5,12.5,13.5,14.5,[15.5,16.5,17.5],[18.5,19.5,20.5],21.5,22.5,"
      "23.5,24.5,25.5,26.5,27.5,\"Asia\\/Kolkata\",[28.5,29.5,30.5,31.5],[32.5,33.5,34.5,35.5]]",
      "ConfigVersion=7, MinorVersion=1, UsedAxes=2, HeadFormat=XY2_Dual3D, XLayers=3, YLayers=4, "
      "ZLayers=5, "
      "MLayers=6, MaxAngleX=7.5, MaxAngleY=8.5, MaxMagnification=9.5, Y2Z0=10.5, X2Y=11.5, O2X=12.5, "
      "FocalLength=13.5, MaxLensTravel=14.5, FieldSize={ X=15.5, Y=16.5, Z=17.5 }, FieldOffset={ X=18.5, "
      "Y=19.5, Z=20.5 }, Aperture=21.5, WorkingDistance=22.5, Wavelength=23.5, BitPerMicronZ0=24.5, "
      "BitPerMicronZ1=25.5, BitPerMicronE0=26.5, BitPerMicronE1=27.5, Hash=Asia/Kolkata, InputScale={ "
      "X=28.5, "
      "Y=29.5, Z=30.5, M=31.5 }, InputOffset={ X=32.5, Y=33.5, Z=34.5, M=35.5 }");
  ExpectInPlace<EventConfig>("[1,{-7:[true,[-1,1,5]],3:[true,[-1,2,5]]}]",
                             "{ ConfigVersion=1, EventSettings=[ -7={ EnableGlobally=true, Exclusions=[ -1, "
                             "1, 5 ] }, 3={ EnableGlobally=true, Exclusions=[ -1, 2, 5 ] } ] }");
  ExpectInPlace<SerialPortConfig>(
      "[1,[[1,1,2,1,2,1,1,3],[1,4,5,1,2,1,1,6]]]",
      "Ports=[ { BaudRate=1, DataBits=2, Parity=Odd, StopBits=Two, Handshake=XOnXOff, LineEnd=Lf, "
      "ResponseTimeout=3, ConfigVersion=1 }, { BaudRate=4, DataBits=5, Parity=Odd, StopBits=Two, "
      "Handshake=XOnXOff, LineEnd=Lf, ResponseTimeout=6, ConfigVersion=1 } ], ConfigVersion=1");
  ExpectInPlace<SpiConfig>(
      "[3,[[1,1,2.5,3,true,true],[1,4,5.5,6,true,true],[1,7,8.5,9,true,true]]]",
      "Modules=[ { Mode=1, ClockFrequency=2.5, WordLength=3, LsbFirst=true, SelectActiveHigh=true, "
      "ConfigVersion=1 }, { Mode=4, ClockFrequency=5.5, WordLength=6, LsbFirst=true, SelectActiveHigh=true, "
      "ConfigVersion=1 }, { Mode=7, ClockFrequency=8.5, WordLength=9, LsbFirst=true, SelectActiveHigh=true, "
      "ConfigVersion=1 } ], ConfigVersion=3");
}

using Numbers = std::vector<double>;

TEST(PlainStructs, TakeEveryKindOfFieldFromTheirRecords) {
  vlProcessVariables v{};
  Flat::FromRecord(Filled<ProcessVariables>(), v);
  const vlTransform3D& t = v.Transformation;
  EXPECT_EQ((Numbers{t.A[0][0], t.A[0][1], t.A[1][0], t.A[2][1], t.b[0], t.b[2]}),
            (Numbers{17.5, 18.5, 20.5, 24.5, 26.5, 28.5}));
  EXPECT_EQ((Numbers{v.HeadingScale.X, v.HeadingScale.Y, v.HeadingScale.Z}), (Numbers{29.5, 30.5, 31.5}));
  EXPECT_EQ((Numbers{v.Wobble.Frequency.X, v.Wobble.Frequency.Y}), (Numbers{44.5, 45.5}));
  EXPECT_EQ((Numbers{1. * v.OnOffPattern.Count, v.OnOffPattern.Items[0]}), (Numbers{1, 33.5}));
  EXPECT_EQ((Numbers{v.MaxDwellTime, v.LaserOnDelay, 1. * v.Power, 1. * v.SkyWriting.Mode}),
            (Numbers{12.5, 10.5, 15, 1}));
  vlOpticalParameters o{};
  Flat::FromRecord(Filled<OpticalParameters>(), o);
  EXPECT_EQ((Numbers{o.InputScale.X, o.InputScale.Y, o.InputScale.Z, o.InputScale.M}),
            (Numbers{28.5, 29.5, 30.5, 31.5}));
  EXPECT_STREQ(o.Hash, "Asia/Kolkata");
  vlEventConfig e{};
  Flat::FromRecord(Filled<EventConfig>(), e);
  const vlEventSetting& second = e.EventSettings.Items[1];
  EXPECT_EQ((Numbers{1. * e.EventSettings.Count, 1. * second.Number, 1. * second.Value.Exclusions.Items[1]}),
            (Numbers{2, 3, 2}));
  vlScannerConfig s{};
  ScannerConfig scanner = Filled<ScannerConfig>();
  scanner.HeadCount = 2;
  Flat::FromRecord(scanner, s);
  const vlScanHeadConfig& head = s.Heads.Items[1];
  EXPECT_EQ(
      (Numbers{head.FieldTransform.A[1][0], head.FieldTransform.b[1], head.Axes.Items[3].TrackingError}),
      (Numbers{35.5, 42.5, 54.5}));
}

TEST(PlainStructs, GiveEveryKindOfFieldToTheirRecords) {
  vlProcessVariables v{};
  Flat::FromRecord(ProcessVariables(), v);
  v.Transformation = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {10, 11, 12}};
  v.HeadingScale = {13, 14, 15};
  v.OnOffPattern = {2, {16, 17}};
  v.SkyWriting.Mode = vlSkyWritingMode_MinimumCoH;
  v.Wobble.Amplitude = {18, 19};
  const std::string variables = Flat::Taken<ProcessVariables>(&v).ToString();
  for (const char* part :
       {"{ ( 1, 2, 3, 4, 5, 6, 7, 8, 9 ), ( 10, 11, 12 ) }, HeadingScale={ X=13, Y=14, Z=15 }", "=[ 16, 17 ]",
        "Mode=MinimumCoH", "Amplitude={ 18, 19 }"}) {
    EXPECT_THAT(variables, HasSubstr(part));
  }
  vlOpticalParameters o{};
  Flat::FromRecord(OpticalParameters(), o);
  o.InputOffset = {1, 2, 3, 4};
  const std::string optics = Flat::Taken<OpticalParameters>(&o).ToString();
  EXPECT_THAT(optics, EndsWith("InputOffset={ X=1, Y=2, Z=3, M=4 }"));
  vlEventConfig e{1, {2, {{5, {true, {2, {8, 7}}}}, {-6, {}}}}};
  EXPECT_EQ(Flat::Taken<EventConfig>(&e).ToString(),
            "{ ConfigVersion=1, EventSettings=[ -6={ EnableGlobally=false, Exclusions=[  ] }, 5={ "
            "EnableGlobally=true, Exclusions=[ 7, 8 ] } ] }");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
