// The formats of scan heads, the records of the scanner, and affine maps.
#include <random>

#include "capi/FlatRecord.h"
#include "config/ScannerConfig.h"
#include "config/ScannerMonitoringConfig.h"
#include "int/Helpers.h"
#include "kelvo/kelvo.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(HeadFormats, AreThoseOfTheTable) {
  std::ostringstream known;  // value, name, heads, axes, their count, dimensions, optical zoom, the axes by index
  for (int format = -1; format < 260; ++format) {
    std::int32_t heads = 0, axes = 0, count = 0, dimensions = 0, axis = 0, index = 0;
    bool zoom = false, extended = false, auxiliary = false;
    EXPECT_OK(vlScannerHeadFormatIsExtended(format, &extended) + vlScannerHeadFormatHasAuxiliary(format, &auxiliary));
    EXPECT_TRUE(extended == ((format & vlSHFlags_Extended) != 0) && auxiliary == ((format & vlSHFlags_Auxiliary) != 0)) << format;
    EXPECT_FAILS(vlScannerHeadFormatGetAxes(format, nullptr), "Out parameter must not be null");
    const bool isKnown = vlScannerHeadFormatGetAxes(format, &axes) == 0;
    EXPECT_EQ(LastError(), isKnown ? "" : "Unknown head format.");
    EXPECT_EQ(vlScannerHeadFormatGetHeadCount(format, &heads) + vlScannerHeadFormatGetAxisCount(format, &count) +
              vlScannerHeadFormatHasOpticalZoom(format, &zoom) + vlScannerHeadFormatGetDimensions(format, &dimensions), isKnown ? 0 : -4);
    EXPECT_EQ(LastError(), isKnown ? "" : "Unknown head format");
    if (!isKnown) continue;
    known << format << " " << ScanHeadFormat::_from_integral(format)._to_string() << " " << heads << " " << axes << " " << count << " " << dimensions << " " << zoom << " ";
    for (int i = 0; vlScannerHeadFormatGetAxisAtIndex(format, i, &axis) == 0; ++i) {
      EXPECT_TRUE(vlScannerHeadFormatGetIndexOfAxis(format, axis, &index) == 0 && index == i) << format;
      known << axis;
    }
    known << ", ";
  }
  EXPECT_EQ(known.str(),
            "0 XY2_Single3D 1 7 3 3 0 012, 1 SL2_Single3D 1 7 3 3 0 012, 2 VL3_Single3D 1 7 3 3 0 012, 8 XY2_Dual3D 2 7 3 3 0 012, 9 SL2_Dual2D 2 3 2 2 0 01, "
            "10 VL3_Dual3D 2 7 3 3 0 012, 17 SL2_Single3DA 1 23 4 3 0 0124, 18 VL3_Single3DA 1 23 4 3 0 0124, 33 SL2_Single3DX 1 39 4 3 0 0125, "
            "34 VL3_Single3DX 1 39 4 3 0 0125, 50 VL3_Single3DXA 1 55 5 3 0 01245, 65 SL2_Single4D 1 15 4 4 1 0123, 66 VL3_Single4D 1 15 4 4 1 0123, "
            "69 SL2_Single4DF 1 7 3 4 0 012, 70 VL3_Single4DF 1 7 3 4 0 012, 82 VL3_Single4DA 1 31 5 4 1 01234, 85 SL2_Single4DFA 1 23 4 4 0 0124, "
            "86 VL3_Single4DFA 1 23 4 4 0 0124, 98 VL3_Single4DX 1 47 5 4 1 01235, 101 SL2_Single4DFX 1 39 4 4 0 0125, 102 VL3_Single4DFX 1 39 4 4 0 0125, "
            "114 VL3_Single4DXA 1 63 6 4 1 012345, 118 VL3_Single4DFXA 1 55 5 4 0 01245, ");
}

TEST(ScannerRecords, CrossWireAndPlainStructs) {
  ScannerConfig config;
  ScannerMonitoringConfig monitoring;
  vlScannerConfig flat{};
  vlScannerMonitoringConfig flatMonitoring{};
  std::string hex;
  const auto through = [&](const auto& record, auto& plain) {  // both, and what comes out
    const std::string bytes = Packed(record);
    hex = Hex(bytes);
    using R = std::remove_cvref_t<decltype(record)>;
    Flat::FromRecord(msgpack::unpack(bytes.data(), bytes.size()).get().template as<R>(), plain);
    return Flat::Taken<R>(&plain).ToString();
  };
  EXPECT_OK(vlScannerInitConfig(&flat));
  flat.FieldSize.Y = 7, flat.Heads.Items[0].Axes.Items[1].HeadBias = 5, flat.HeadFormat = 3;
  for (const auto& [format, heads, axes] : {std::tuple(vlScanHeadFormat_VL3_Single4DXA, 1, 6), {vlScanHeadFormat_SL2_Dual2D, 2, 2},
                                            {vlScanHeadFormat_SL2_Single3D, 1, 3}, {vlScanHeadFormat_VL3_Dual3D, 2, 3}}) {
    EXPECT_OK(vlScannerConfigSetHeadFormat(&flat, format));
    const vlScanHeadConfig& last = flat.Heads.Items[heads - 1];
    EXPECT_TRUE(flat.HeadFormat == format && flat.HeadCount == heads && flat.Heads.Count == static_cast<std::uint32_t>(heads)) << format;
    EXPECT_TRUE(last.AxisCount == axes && last.Axes.Count == static_cast<std::uint32_t>(axes) && last.FieldTransform.A[2][2] == 1) << format;
    EXPECT_TRUE(flat.FieldSize.Y == 7 && flat.Heads.Items[0].Axes.Items[1].HeadBias == 5) << format;
  }
  EXPECT_FAILS(vlScannerConfigSetHeadFormat(&flat, 3), "Unknown head format");
  EXPECT_EQ(flat.HeadFormat, vlScanHeadFormat_VL3_Dual3D);
  config.SetHeadFormat(ScanHeadFormat::VL3_Dual3D);
  config.Heads[1].FieldTransform.Scale(2, 3).Translate(0.5, 0, 0);
  config.Heads[1].Axes[2].HeadBias = 4;
  const std::string axis = "AccelerationTime=0, TrackingError=0, HeadBias=", end = " ], EnableFieldCorrection=false, ConfigVersion=10 }";
  EXPECT_EQ(through(config, flat), "FieldSize={ X=65536, Y=65536, Z=1 }, MaxMagnification=1, HeadCount=2, Heads=[ "
            "{ FieldTransform={ ( 1, 0, 0, 0, 1, 0, 0, 0, 1 ), ( 0, 0, 0 ) }, Axes=[ " + axis + "0, " + axis + "0, " + axis + "0" + end +
            ", { FieldTransform={ ( 2, 0, 0, 0, 3, 0, 0, 0, 1 ), ( 0.5, 0, 0 ) }, Axes=[ " + axis + "0, " + axis + "0, " + axis + "4" + end +
            " ], ScanHeadDelay=0, HeadFormat=VL3_Dual3D, ConfigVersion=12");
  EXPECT_TRUE(hex.starts_with("97 0C 93 CB 40 F0 00 00") && hex.find(" 02 92 95 03 0A 92 99 CB 3F F0 00 00") != std::string::npos) << hex;
  monitoring.ScanHeadAxes = {Axes::XY, static_cast<Axes::_enumerated>(0x25)};
  EXPECT_EQ(through(monitoring, flatMonitoring), "Enabled=false, UsePingPong=false, Command=21120, Mask=11136, GoodValue=11136, Command1=0, Mask1=0, GoodValue1=0, "
            "Period=1000, MinConsecutiveErrors=3, ContinueOnError=false, ScanHeadAxes=[ XY, X|Z|SensorZ ], ConfigVersion=2");
  const std::pair<std::function<void()>, const char*> wrong[] = {  // one thing after the other
      {[&] { config.SetHeadFormat(static_cast<ScanHeadFormat::_enumerated>(3)); }, "Unknown head format"},
      {[&] { config.Heads[1].ConfigVersion = 11; through(config, flat); }, "The Version of the supplied config is newer than the newest supported version."},
      {[&] { config.Heads[0].Axes.resize(7); Flat::FromRecord(config, flat); }, "Error converting ScanHeadConfig to C."},
      {[&] { flat.HeadFormat = 3; Flat::Taken<ScannerConfig>(&flat); }, "ScanHeadFormat::_from_integral: invalid argument"},
      {[&] { flat.Heads.Items[1].Axes.Count = 7; Flat::Taken<ScannerConfig>(&flat); }, "Error converting ScannerConfig from C."},
      {[&] { monitoring.ScanHeadAxes.assign(3, Axes::X); Flat::FromRecord(monitoring, flatMonitoring); }, "Error converting ScannerMonitoringConfig to C."},
      {[&] { flatMonitoring.ScanHeadAxes.Items[0] = 64; Flat::Taken<ScannerMonitoringConfig>(&flatMonitoring); }, "Axes::_from_integral: invalid argument"},
  };
  for (const auto& [work, text] : wrong) EXPECT_EQ(Failure(work), text);
}

double Distance(const Transform3D& a, const Transform3D& b) {
  double distance = 0;
  for (std::size_t i = 0; i < 12; ++i) distance = std::max(distance, std::abs(a[i] - b[i]));
  return distance;
}

TEST(Transforms, HaveInversesOrTheNextBest) {
  const char* const singular = "The transform has no inverse.";
  const std::tuple<Transform3D, Transform3D, double, const char*> rows[] = {  // and what counts as zero, what inverting ends with
      {{{2, 0, 0, 0, 4, 0, 0, 0, 0.5}, {2, 4, 1}}, {{0.5, 0, 0, 0, 0.25, 0, 0, 0, 2}, {-1, -1, -2}}, 0, "no failure"},
      {{{1, 2, 3, 0, 1, 4, 5, 6, 0}, {1, 0, 0}}, {{-24, 18, 5, 20, -15, -4, -5, 4, 1}, {24, -20, 5}}, 0, "no failure"},
      {{{1e-20, 0, 0, 0, 1, 0, 0, 0, 1e20}, {}}, {{1e20, 0, 0, 0, 1, 0, 0, 0, 1e-20}, {}}, 0, "no failure"},
      {{{3, 0, 0, 0, 0.5, 0, 0, 0, 0}, {3, 4, 9}}, {{1 / 3., 0, 0, 0, 0, 0, 0, 0, 0}, {-1, 0, 0}}, 0.5, singular},
      {{{1, 1, 0, 1, 1, 0, 0, 0, 2}, {2, 2, 0}}, {{0.25, 0.25, 0, 0.25, 0.25, 0, 0, 0, 0.5}, {-1, -1, 0}}, 1e-9, singular},
      {{{1, 2, 3, 4, 5, 6, 7, 8, 9}, {}}, {{-23 / 36., -1 / 6., 11 / 36., -1 / 18., 0, 1 / 18., 19 / 36., 1 / 6., -7 / 36.}, {}}, 1e-9, singular},
  };
  for (const auto& [map, inverse, tolerance, end] : rows) {
    EXPECT_LT(Distance(map.PseudoInverse(tolerance), inverse), 1e-13 * (100 + std::abs(inverse[0]))) << map.ToString();
    EXPECT_EQ(Failure([&, &m = map, &i = inverse] { EXPECT_LT(Distance(m.Inverse(), i), 1e-13 * (100 + std::abs(i[0]))); }), end) << map.ToString();
  }
  std::mt19937 random(7);
  for (int round = 0; round < 1000; ++round) {
    Transform3D map;
    for (std::size_t i = 0; i < 12; ++i) map[i] = std::uniform_real_distribution<double>(-9, 9)(random);
    for (const Transform3D& back : {map.Inverse(), map.PseudoInverse(0)}) ASSERT_LT(Distance(Transform3D(map).append(back), {}), 1e-9) << map.ToString();
  }
  Transform3D map;  // what comes behind what
  map.Scale(2, 3).RotateZ(std::acos(0)).Translate(1, 2, 3).append(Transform3D::Rows{{{1, 0, 0, 10}, {0, 1, 0, 0}, {0, 0, -1, 0}}});
  EXPECT_LT(Distance(map, {{0, -3, 0, 2, 0, 0, 0, 0, -1}, {11, 2, -3}}), 1e-15);
  EXPECT_LT(Distance({{}, map({{1, 1, 1}}).Coordinates}, {{}, {8, 4, -4}}), 1e-15);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
