// What all configuration records have in common, and their bytes and texts. A record joins with a line.
#include "capi/FlatRecord.h"
#include "config/LaserConfig.h"
#include "config/MotfConfig.h"
#include "config/ProcessVariables.h"
#include "config/QuadratureDecoderConfig.h"
#include "config/ScannerConfig.h"
#include "config/ScannerMonitoringConfig.h"
#include "config/SystemConfig.h"
#include "int/Helpers.h"
#include "kelvo/kelvo.h"
#include "services/EventConfig.h"
#include "services/OpticalParameters.h"

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
    EXPECT_EQ(Failure([&] { Flat::FromRecord(variables, flatVariables); }),
              outcome("Too much OnOffPattern values"));
    EXPECT_EQ(Failure([&] { Flat::FromRecord(decoders, flatDecoders); }),
              outcome("Error converting QuadratureDecoderConfig to C."));
    for (const EventConfig& config : {events, exclusions}) {
      EXPECT_EQ(Failure([&] { Flat::FromRecord(config, flatEvents); }),
                outcome("Error converting EventConfig to C."));
    }
  }
}

// As many a line as fit.
// clang-format off
TEST(Records, TravelAsTheseBytesAndReadAsTheseTexts) {
  const std::string d0 = " CB 00 00 00 00 00 00 00 00", d1 = " CB 3F F0 00 00 00 00 00 00", d3 = d0 + d0 + d0;
  const std::string small = " CB 3F 1A 36 E2 EB 1C 43 2D", module = " 97 04 C2" + d0 + d0 + " C2 C2" + d1;
  const std::string x = " 93" + d1 + d0 + d0, y = " 93" + d0 + d1 + d0, moduleText =
      "{ SimulateEncoder=false, SimulationSpeed=0, SimulationAcceleration=0, InvertDirection=false, "
      "EnableIndex=false, DistancePerCount=1, ConfigVersion=4 }";
  EventConfig events;
  events.EventSettings = {{-1, {true, {7, -8}}}, {5, {}}};
  const auto expect = [](const auto& record, const std::string& bytes, const std::string& text) {
    EXPECT_EQ(Hex(Packed(record)), bytes);
    EXPECT_EQ(record.ToString().substr(0, text.size()), text);
  };
  expect(LaserConfig(), "DC 00 1E 08 00 00 00" + d3 + d3 + d0 + d0 + d1 +
         " CB 40 00 00 00 00 00 00 00 01 00 02 00 C2" + d0 + d0 + " C2 C2 C2 C2 C2 C2 C2 C2 C2",
         "FpsPolarity=ActiveHigh, GatePolarity=ActiveHigh, LMPolarity=ActiveHigh, FpsStart=0, ");
  expect(ProcessVariables(), "DC 00 1B 12" + d1 + d1 + d0 + " C2" + d0 + d0 + d1 + d0 +
         " CB 3E A0 C6 F7 A0 B5 ED 8D C2" + d3 + " CB 40 8F 40 00 00 00 00 00 CB 3F B9 99 99 99 99 99 9A" + d1 +
         " 00 00 92 99" + d1 + d3 + d1 + d3 + d1 + " 93" + d3 + " 93" + d1 + d1 + d1 + d0 + " 90 C2" + d0 +
         " 99 04 00" + d0 + " CB 7F F8 00 00 00 00 00 00" + d3 + d0 + d0 + " 94 01 92" + d0 + d0 + " 92" + small +
         small + " 92" + d0 + " CB 3F F9 21 FB 54 44 2D 18",
         "SpeedScale=1, JumpSpeed=1, JumpDelay=0, EnableVariableJumpDelay=false, MinJumpDelay=0, JumpLengthLimit=0, "
         "MarkSpeed=1, MarkDelay=0, MagnificationSpeed=5e-07, EnableVariablePolyDelay=false, PolyDelay=0, "
         "MaxDwellTime=1000, LaserOnDelay=0, LaserOffDelay=0, LmFrequency=0.1, LmWidth=1, Power=0, Power1=0, "
         "Transformation=" + RecordText::Of(Transform3D()) + ", HeadingScale={ X=1, Y=1, Z=1 }, TileOffset=0, "
         "OnOffPattern=[  ], EnableDashedLine=false, EvaluationLeadTime=0, SkyWriting={ Mode=Disabled, MinCoH=0, "
         "MergedExtensionsMaxCoH=nan, ExtensionTime=0, AccelerationDelay=0, DecelerationDelay=0, LaserOnDelay=0, "
         "LaserOffDelay=0, ConfigVersion=4 }, Wobble={ Amplitude={ 0, 0 }, Frequency={ 0.0001, 0.0001 }, "
         "Phase={ 0, 1.5708 }, ConfigVersion=1 }, ConfigVersion=18");
  expect(MotfConfig(), "9E 09 00 93 02 00 00 C2 93 02 00 01 C2" + d0 + " C2" + d3 + x + y + " 93" + d3,
         "OperatingMode=Standard, MainSource={ SourceType=QuadratureDecoder, ModuleID=0, ConfigVersion=2 }, "
         "UseCompensation=false, CompensationSource={ SourceType=QuadratureDecoder, ModuleID=1, ConfigVersion=2 }, "
         "EnableDebounce=false, DebounceTime=0, EnableSuppression=false, SuppressionDistance=0, PartDistance=0, "
         "ResponseTime=0, MainDirection={ X=1, Y=0, Z=0 }, CompensationDirection={ X=0, Y=1, Z=0 }, "
         "Offset={ X=0, Y=0, Z=0 }, ConfigVersion=9");
  expect(QuadratureDecoderConfig(), "92 04 92" + module + module,
         "Modules=[ " + moduleText + ", " + moduleText + " ], ConfigVersion=4");
  expect(events, "92 01 82 FF 92 C3 92 F8 07 05 92 C2 90",
         "{ ConfigVersion=1, EventSettings=[ -1={ EnableGlobally=true, Exclusions=[ -8, 7 ] }, "
         "5={ EnableGlobally=false, Exclusions=[  ] } ] }");
}
// clang-format on

// There and back would undo a matrix that is turned about its diagonal.
TEST(Transforms, HaveTheRowsOfThePlainOnes) {
  vlProcessVariables variables{};
  EXPECT_EQ(vlProcessInitVariables(&variables), 0);
  variables.Transformation = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {10, 11, 12}};
  char text[2000];
  std::uint32_t length = 0;
  EXPECT_EQ(vlProcessToStringVariables(&variables, text, sizeof text, &length), 0);
  EXPECT_NE(std::string(text).find(" Transformation={ ( 1, 2, 3, 4, 5, 6, 7, 8, 9 ), ( 10, 11, 12 ) }"),
            std::string::npos)
      << text;
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
