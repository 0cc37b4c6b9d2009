// The records of the scanner, the formats of scan heads, and affine maps.
#include <cmath>
#include <random>

#include "capi/FlatRecord.h"
#include "config/ScannerMonitoringConfig.h"
#include "int/Helpers.h"
#include "kelvo/kelvo.h"

namespace VELTRO::KELVO::Test {
namespace {

std::string Packed(const auto& value) {
  msgpack::sbuffer bytes;
  msgpack::pack(bytes, value);
  return std::string(bytes.data(), bytes.size());
}

template <class T>
T Taken(const std::string& bytes) {
  return msgpack::unpack(bytes.data(), bytes.size()).get().as<T>();
}

TEST(ScannerRecords, GoIntoPlainStructsThatHaveRoom) {
  ScannerMonitoringConfig record;
  vlScannerMonitoringConfig flat{};
  const std::string text =
      "Enabled=false, UsePingPong=false, Command=21120, Mask=11136, GoodValue=11136, Command1=0, Mask1=0, "
      "GoodValue1=0, Period=1000, MinConsecutiveErrors=3, ContinueOnError=false, ScanHeadAxes=[ XY ], "
      "ConfigVersion=2";
  EXPECT_EQ(record.ToString(), text);
  Flat::FromRecord(Taken<ScannerMonitoringConfig>(Packed(record)), flat);
  EXPECT_EQ(Flat::Taken<ScannerMonitoringConfig>(&flat).ToString(), text);
  record.ScanHeadAxes.assign(3, Axes::X);
  EXPECT_EQ(Failure([&] { Flat::FromRecord(record, flat); }),
            "Error converting ScannerMonitoringConfig to C.");
  flat.ScanHeadAxes.Items[0] = 5;
  EXPECT_EQ(Failure([&] { Flat::Taken<ScannerMonitoringConfig>(&flat); }),
            "Axes::_from_integral: invalid argument");
  flat.ScanHeadAxes.Count = 3;
  EXPECT_EQ(Failure([&] { Flat::Taken<ScannerMonitoringConfig>(&flat); }),
            "Error converting ScannerMonitoringConfig from C.");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
