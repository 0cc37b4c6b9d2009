// The formats of scan heads, the records of the scanner, and affine maps.
#include "capi/FlatRecord.h"
#include "config/ScannerConfig.h"
#include "config/ScannerMonitoringConfig.h"
#include "int/Helpers.h"

namespace VELTRO::KELVO::Test {
namespace {

struct Format {
  std::int32_t value;
  const char* name;
  std::int32_t heads, axes, count, dimensions;
  bool hasZoom;
  std::vector<std::int32_t> order;  // of the axes, by index
};
const Format formats[] = {
    {0, "XY2_Single3D", 1, 7, 3, 3, false, {0, 1, 2}},
    {1, "SL2_Single3D", 1, 7, 3, 3, false, {0, 1, 2}},
    {2, "VL3_Single3D", 1, 7, 3, 3, false, {0, 1, 2}},
    {8, "XY2_Dual3D", 2, 7, 3, 3, false, {0, 1, 2}},
    {9, "SL2_Dual2D", 2, 3, 2, 2, false, {0, 1}},
    {10, "VL3_Dual3D", 2, 7, 3, 3, false, {0, 1, 2}},
    {17, "SL2_Single3DA", 1, 23, 4, 3, false, {0, 1, 2, 4}},
    {18, "VL3_Single3DA", 1, 23, 4, 3, false, {0, 1, 2, 4}},
    {33, "SL2_Single3DX", 1, 39, 4, 3, false, {0, 1, 2, 5}},
    {34, "VL3_Single3DX", 1, 39, 4, 3, false, {0, 1, 2, 5}},
    {50, "VL3_Single3DXA", 1, 55, 5, 3, false, {0, 1, 2, 4, 5}},
    {65, "SL2_Single4D", 1, 15, 4, 4, true, {0, 1, 2, 3}},
    {66, "VL3_Single4D", 1, 15, 4, 4, true, {0, 1, 2, 3}},
    {69, "SL2_Single4DF", 1, 7, 3, 4, false, {0, 1, 2}},
    {70, "VL3_Single4DF", 1, 7, 3, 4, false, {0, 1, 2}},
    {82, "VL3_Single4DA", 1, 31, 5, 4, true, {0, 1, 2, 3, 4}},
    {85, "SL2_Single4DFA", 1, 23, 4, 4, false, {0, 1, 2, 4}},
    {86, "VL3_Single4DFA", 1, 23, 4, 4, false, {0, 1, 2, 4}},
    {98, "VL3_Single4DX", 1, 47, 5, 4, true, {0, 1, 2, 3, 5}},
    {101, "SL2_Single4DFX", 1, 39, 4, 4, false, {0, 1, 2, 5}},
    {102, "VL3_Single4DFX", 1, 39, 4, 4, false, {0, 1, 2, 5}},
    {114, "VL3_Single4DXA", 1, 63, 6, 4, true, {0, 1, 2, 3, 4, 5}},
    {118, "VL3_Single4DFXA", 1, 55, 5, 4, false, {0, 1, 2, 4, 5}},
};

TEST(HeadFormats, HaveTheAxesOfTheTable) {
  for (const Format& f : formats) {
    SCOPED_TRACE(f.name);
    EXPECT_EQ(std::string(ScanHeadFormat::_from_integral(f.value)._to_string()), f.name);
    std::int32_t heads = 0, axes = 0, count = 0, dimensions = 0, axis = 0, index = 0;
    bool hasZoom = false;
    EXPECT_EQ(Told(vlScannerHeadFormatGetHeadCount(f.value, &heads), heads), Told(0, f.heads));
    EXPECT_EQ(Told(vlScannerHeadFormatGetAxes(f.value, &axes), axes), Told(0, f.axes));
    EXPECT_EQ(Told(vlScannerHeadFormatGetAxisCount(f.value, &count), count), Told(0, f.count));
    EXPECT_EQ(Told(vlScannerHeadFormatGetDimensions(f.value, &dimensions), dimensions),
              Told(0, f.dimensions));
    EXPECT_EQ(Told(vlScannerHeadFormatHasOpticalZoom(f.value, &hasZoom), hasZoom), Told(0, f.hasZoom));
    for (std::int32_t i = 0; i < f.count; ++i) {
      const std::int32_t expected = f.order.at(static_cast<std::size_t>(i));
      EXPECT_EQ(Told(vlScannerHeadFormatGetAxisAtIndex(f.value, i, &axis), axis), Told(0, expected));
      EXPECT_EQ(Told(vlScannerHeadFormatGetIndexOfAxis(f.value, axis, &index), index), Told(0, i));
    }
    EXPECT_FAILS(vlScannerHeadFormatGetAxisAtIndex(f.value, f.count, &axis),
                 "The head format has no such axis.");
  }
}

TEST(HeadFormats, AreNoOthersThanThose) {
  for (std::int32_t format = -1; format < 260; ++format) {
    SCOPED_TRACE(format);
    std::int32_t value = 0;
    bool flag = false;
    EXPECT_OK(vlScannerHeadFormatIsExtended(format, &flag));
    EXPECT_EQ(flag, (format & vlSHFlags_Extended) != 0);
    EXPECT_OK(vlScannerHeadFormatHasAuxiliary(format, &flag));
    EXPECT_EQ(flag, (format & vlSHFlags_Auxiliary) != 0);
    if (std::ranges::find(formats, format, &Format::value) != std::end(formats)) continue;
    EXPECT_FAILS(vlScannerHeadFormatGetAxes(format, &value), "Unknown head format.");
    EXPECT_FAILS(vlScannerHeadFormatGetHeadCount(format, &value), "Unknown head format");
    EXPECT_FAILS(vlScannerHeadFormatGetAxisCount(format, &value), "Unknown head format");
    EXPECT_FAILS(vlScannerHeadFormatGetDimensions(format, &value), "Unknown head format");
    EXPECT_FAILS(vlScannerHeadFormatHasOpticalZoom(format, &flag), "Unknown head format");
  }
}

TEST(ScannerConfig, HasTheHeadsOfTheFormatThatItIsGiven) {
  vlScannerConfig flat{};
  EXPECT_OK(vlScannerInitConfig(&flat));
  flat.FieldSize.Y = 7, flat.Heads.Items[0].Axes.Items[1].HeadBias = 5, flat.HeadFormat = 3;
  for (const auto& [format, heads, axes] : {std::tuple(vlScanHeadFormat_VL3_Single4DXA, 1U, 6U),
                                            {vlScanHeadFormat_SL2_Dual2D, 2U, 2U},
                                            {vlScanHeadFormat_SL2_Single3D, 1U, 3U},
                                            {vlScanHeadFormat_VL3_Dual3D, 2U, 3U}}) {
    SCOPED_TRACE(format);
    EXPECT_OK(vlScannerConfigSetHeadFormat(&flat, format));
    EXPECT_EQ(flat.HeadFormat, format);
    EXPECT_TRUE(flat.HeadCount == static_cast<int>(heads) && flat.Heads.Count == heads) << flat.HeadCount;
    const vlScanHeadConfig& last = flat.Heads.Items[heads - 1];
    EXPECT_TRUE(last.AxisCount == static_cast<int>(axes) && last.Axes.Count == axes) << last.AxisCount;
    EXPECT_EQ(last.FieldTransform.A[2][2], 1);
    EXPECT_EQ(flat.FieldSize.Y, 7) << "the rest stays";
    EXPECT_EQ(flat.Heads.Items[0].Axes.Items[1].HeadBias, 5) << "the rest stays";
  }
  EXPECT_FAILS(vlScannerConfigSetHeadFormat(&flat, 3), "Unknown head format");
  EXPECT_EQ(flat.HeadFormat, vlScanHeadFormat_VL3_Dual3D);
}

TEST(ScannerConfig, IsRefusedWhereItDoesNotFit) {
  ScannerConfig config, newer, wide;
  ScannerMonitoringConfig monitoring;
  vlScannerConfig flat{}, wrongFormat{}, wrongCount{};
  vlScannerMonitoringConfig flatMonitoring{};
  for (ScannerConfig* each : {&newer, &wide}) each->SetHeadFormat(ScanHeadFormat::VL3_Dual3D);
  newer.Heads[1].ConfigVersion = 11;
  wide.Heads[0].Axes.resize(7);
  Flat::FromRecord(newer, wrongFormat);
  wrongFormat.HeadFormat = 3;
  Flat::FromRecord(newer, wrongCount);
  wrongCount.Heads.Items[1].Axes.Count = 7;
  monitoring.ScanHeadAxes.assign(3, Axes::X);
  flatMonitoring.ScanHeadAxes = {1, {64}};
  const std::pair<std::function<void()>, const char*> rows[] = {
      {[&] { config.SetHeadFormat(static_cast<ScanHeadFormat::_enumerated>(3)); }, "Unknown head format"},
      {[&] { Unpacked<ScannerConfig>(Packed(newer)); },
       "The Version of the supplied config is newer than the newest supported version."},
      {[&] { Flat::FromRecord(wide, flat); }, "Error converting ScanHeadConfig to C."},
      {[&] { Flat::Taken<ScannerConfig>(&wrongFormat); }, "ScanHeadFormat::_from_integral: invalid argument"},
      {[&] { Flat::Taken<ScannerConfig>(&wrongCount); }, "Error converting ScannerConfig from C."},
      {[&] { Flat::FromRecord(monitoring, flatMonitoring); },
       "Error converting ScannerMonitoringConfig to C."},
      {[&] { Flat::Taken<ScannerMonitoringConfig>(&flatMonitoring); },
       "Axes::_from_integral: invalid argument"},
  };
  for (const auto& [work, text] : rows) EXPECT_EQ(Failure(work), text);
}

double Distance(const Transform3D& a, const Transform3D& b) {
  double distance = 0;
  for (std::size_t i = 0; i < 12; ++i) distance = std::max(distance, std::abs(a[i] - b[i]));
  return distance;
}

TEST(Transforms, HaveInverses) {
  const std::pair<Transform3D, Transform3D> rows[] = {
      {{{2, 0, 0, 0, 4, 0, 0, 0, 0.5}, {2, 4, 1}}, {{0.5, 0, 0, 0, 0.25, 0, 0, 0, 2}, {-1, -1, -2}}},
      {{{1, 2, 3, 0, 1, 4, 5, 6, 0}, {1, 0, 0}}, {{-24, 18, 5, 20, -15, -4, -5, 4, 1}, {24, -20, 5}}},
      {{{1e-20, 0, 0, 0, 1, 0, 0, 0, 1e20}, {}}, {{1e20, 0, 0, 0, 1, 0, 0, 0, 1e-20}, {}}},
  };
  for (const auto& [map, inverse] : rows) {
    const double tolerance = 1e-13 * (100 + std::abs(inverse[0]));
    EXPECT_LT(Distance(map.Inverse(), inverse), tolerance) << map.ToString();
    EXPECT_LT(Distance(map.PseudoInverse(0), inverse), tolerance) << map.ToString();
  }
}

TEST(Transforms, HaveTheNextBestWhereTheyHaveNoInverse) {
  // A map, what counts as zero, the pseudo inverse.
  const std::tuple<Transform3D, double, Transform3D> rows[] = {
      {{{3, 0, 0, 0, 0.5, 0, 0, 0, 0}, {3, 4, 9}}, 0.5, {{1 / 3., 0, 0, 0, 0, 0, 0, 0, 0}, {-1, 0, 0}}},
      {{{1, 1, 0, 1, 1, 0, 0, 0, 2}, {2, 2, 0}},
       1e-9,
       {{0.25, 0.25, 0, 0.25, 0.25, 0, 0, 0, 0.5}, {-1, -1, 0}}},
      {{{1, 2, 3, 4, 5, 6, 7, 8, 9}, {}},
       1e-9,
       {{-23 / 36., -1 / 6., 11 / 36., -1 / 18., 0, 1 / 18., 19 / 36., 1 / 6., -7 / 36.}, {}}},
  };
  for (const auto& [map, tolerance, pseudoInverse] : rows) {
    EXPECT_LT(Distance(map.PseudoInverse(tolerance), pseudoInverse), 1e-11) << map.ToString();
    EXPECT_EQ(Failure([&m = map] { m.Inverse(); }), "The transform has no inverse.") << map.ToString();
  }
}

TEST(Transforms, ComeBackThroughTheirInverses) {
  std::mt19937 random(7);
  for (int round = 0; round < 1000; ++round) {
    Transform3D map;
    for (std::size_t i = 0; i < 12; ++i) map[i] = std::uniform_real_distribution<double>(-9, 9)(random);
    for (const Transform3D& back : {map.Inverse(), map.PseudoInverse(0)})
      ASSERT_LT(Distance(Transform3D(map).append(back), {}), 1e-9) << map.ToString();
  }
}

TEST(Transforms, ArePutBehindEachOther) {
  Transform3D map;
  map.Scale(2, 3)
      .RotateZ(std::acos(0))
      .Translate(1, 2, 3)
      .append(Transform3D::Rows{{{1, 0, 0, 10}, {0, 1, 0, 0}, {0, 0, -1, 0}}});
  EXPECT_LT(Distance(map, {{0, -3, 0, 2, 0, 0, 0, 0, -1}, {11, 2, -3}}), 1e-15);
  EXPECT_LT(Distance({{}, map({{1, 1, 1}}).Coordinates}, {{}, {8, 4, -4}}), 1e-15);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
