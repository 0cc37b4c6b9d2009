// Optical parameters: hash code, JSON, text, bytes. And the oddities of handles of card files.
#include "services/OpticalParameters.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "Helpers.h"
#include "capi/FlatRecord.h"
#include "config/RecordWire.h"
#include "kelvo/kelvo.h"
#include "services/FileHandle.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

using Json = nlohmann::ordered_json;

constexpr double Nan = std::numeric_limits<double>::quiet_NaN(),
                 Inf = std::numeric_limits<double>::infinity();

// Every field has a value of its own.
OpticalParameters Distinct() {
  OpticalParameters p;
  int next = 0;
  OpticalParameters::ForEachField(p, [&]<class T>(const char*, T& field) {
    ++next;
    if constexpr (std::is_same_v<T, ScanHeadFormat>)
      field = ScanHeadFormat::VL3_Dual3D;
    else if constexpr (std::is_same_v<T, std::string>)
      field = "h\u00e4sh";
    else if constexpr (std::is_arithmetic_v<T>)
      field = static_cast<T>(next + 0.5);
    else
      for (double& coordinate : field.Coordinates) coordinate = 0.25 + next++;
  });
  return p;
}

// An array in an array and so on, with `inner` in the innermost.
std::string Nested(std::size_t levels, const std::string& inner) {
  return std::string(levels, '[') + inner + std::string(levels, ']');
}

TEST(OpticalParameters, HaveTheHashCodeOfTheRule) {
  // Minor version, axes, format, layers of x, y, z, m; doubles up to MaxLensTravel; size; offset; doubles ahead of Hash.
  struct Row { int ints[7]; double first[8]; double size[3], offset[3], last[7]; std::uint32_t hash; };
  const Row rows[] = {
      {{}, {}, {}, {}, {}, 0},
      {{3, 7, 1, 5, 6, 2, 4}, {}, {}, {}, {}, 0x00001772},
      {{-1, 2147483647, 118, -2147483647 - 1, 100000007, -77, 65536}, {}, {}, {}, {}, 0xf99c7d85},
      {{1}, {-0., -0., -0., -0., -0., -0., -0., -0.}, {-0., -0., -0.}, {-0., -0., -0.}, {-0., -0., -0., -0., -0., -0., -0.}, 0x00000281},
      {{}, {Nan}, {}, {}, {}, 0xf000000f}, {{}, {0, 0, 0, 0, 0, 0, 0, -Inf}, {}, {}, {}, 0x70000007}, {{}, {}, {}, {}, {0, 0, 0, 0, 0, 0, -Nan}, 0xf000000f},
      {{}, {}, {Nan}, {}, {}, 0x80000528}, {{}, {}, {}, {0, 0, -Nan}, {}, 0x60000546}, {{}, {}, {0, Inf, 0}, {}, {}, 0xf000026f},
      {{}, {}, {Nan, Nan, Nan}, {}, {}, 0x90000559}, {{}, {}, {}, {Inf, -Inf, Inf}, {}, 0x10000271},
      {{}, {}, {0.1}, {}, {}, 0x1b000108}, {{}, {}, {}, {0, 0, 1.7976931348623157e308}, {}, 0x05a00000},
      {{2, 7, 118, 3, 3, 1, 1}, {0.35, 0.36, 4.5, 12.5, 17.25, 30, 163, 9.75}, {100, 120.5, 4}, {-1.5, 2.5, 1e300}, {14, 181.75, 1064, 0.1, 0.2, 0.3, -5e-324}, 0x12d15c3a},
  };
  for (const auto& [i, f, s, o, l, hash] : rows) {
    OpticalParameters p;
    p.MinorVersion = i[0], p.UsedAxes = i[1], p.HeadFormat = ScanHeadFormat::_from_integral(i[2]);
    p.XLayers = i[3], p.YLayers = i[4], p.ZLayers = i[5], p.MLayers = i[6];
    p.MaxAngleX = f[0], p.MaxAngleY = f[1], p.MaxMagnification = f[2], p.Y2Z0 = f[3], p.X2Y = f[4], p.O2X = f[5], p.FocalLength = f[6], p.MaxLensTravel = f[7];
    p.FieldSize = {{s[0], s[1], s[2]}}, p.FieldOffset = {{o[0], o[1], o[2]}};
    p.Aperture = l[0], p.WorkingDistance = l[1], p.Wavelength = l[2], p.BitPerMicronZ0 = l[3], p.BitPerMicronZ1 = l[4], p.BitPerMicronE0 = l[5], p.BitPerMicronE1 = l[6];
    vlOpticalParameters flat{}, flatOther{};
    std::uint32_t code = ~hash;
    bool equal = false;
    Flat::FromRecord(p, flat);
    EXPECT_TRUE(vlOpticalParametersGetHashCode(&flat, &code) == 0 && code == hash) << &i - &rows[0].ints << LastError();
    OpticalParameters other = p;
    other.Hash = "x", other.InputScale = {{1, 2, 3, 4}}, other.InputOffset = {{5, Nan, 7, 8}}, other.ConfigVersion = 3;
    EXPECT_EQ(other.GetHashCode(), hash);
    Flat::FromRecord(other, flatOther);
    EXPECT_TRUE(vlOpticalParametersEqualLayers(&flat, &flatOther, &equal) == 0 && equal) << LastError();
    for (std::int32_t* layers : {&flatOther.XLayers, &flatOther.YLayers, &flatOther.ZLayers, &flatOther.MLayers}) {
      *layers += 1, equal = true;
      EXPECT_TRUE(vlOpticalParametersEqualLayers(&flat, &flatOther, &equal) == 0 && !equal) << LastError();
      *layers -= 1;
    }
    flat.HeadFormat = 3;
    EXPECT_FAILS(vlOpticalParametersGetHashCode(&flat, &code), "ScanHeadFormat::_from_integral: invalid argument");
  }
  EXPECT_EQ(hashDouble(-0.0) | doubleHash(-0.0) | hashDouble(0.0), 0U);
  EXPECT_EQ(hashDouble(-0.1), 0x26200003U);
}

TEST(OpticalParameters, AreTextJsonAndBytesInTheOrderOfTheirFields) {
  OpticalParameters p = Distinct();
  p.ConfigVersion = 5;
  const std::string text = "ConfigVersion=5, MinorVersion=1, UsedAxes=2, HeadFormat=VL3_Dual3D, XLayers=4, YLayers=5, ZLayers=6, MLayers=7, MaxAngleX=8.5, MaxAngleY=9.5, "
      "MaxMagnification=10.5, Y2Z0=11.5, X2Y=12.5, O2X=13.5, FocalLength=14.5, MaxLensTravel=15.5, FieldSize={ X=16.25, Y=17.25, Z=18.25 }, FieldOffset={ X=20.25, Y=21.25, Z=22.25 }, "
      "Aperture=24.5, WorkingDistance=25.5, Wavelength=26.5, BitPerMicronZ0=27.5, BitPerMicronZ1=28.5, BitPerMicronE0=29.5, BitPerMicronE1=30.5, Hash=h\u00e4sh, "
      "InputScale={ X=32.25, Y=33.25, Z=34.25, M=35.25 }, InputOffset={ X=37.25, Y=38.25, Z=39.25, M=40.25 }";
  EXPECT_EQ(p.ToString(), text);
  const std::string json = R"({"ConfigVersion":7,"MinorVersion":1,"UsedAxes":2,"HeadFormat":10,"XLayers":4,"YLayers":5,"ZLayers":6,"MLayers":7,"MaxAngleX":8.5,"MaxAngleY":9.5,)"
      R"("MaxMagnification":10.5,"Y2Z0":11.5,"X2Y":12.5,"O2X":13.5,"FocalLength":14.5,"MaxLensTravel":15.5,"FieldSize":{"X":16.25,"Y":17.25,"Z":18.25},"FieldOffset":{"X":20.25,"Y":21.25,"Z":22.25},)"
      R"("Aperture":24.5,"WorkingDistance":25.5,"Wavelength":26.5,"BitPerMicronZ0":27.5,"BitPerMicronZ1":28.5,"BitPerMicronE0":29.5,"BitPerMicronE1":30.5,"Hash":"h)" "\u00e4" R"(sh",)"
      R"("InputScale":{"X":32.25,"Y":33.25,"Z":34.25,"M":35.25},"InputOffset":{"X":37.25,"Y":38.25,"Z":39.25,"M":40.25}})";
  EXPECT_EQ(p.ToJson().dump(), json);
  EXPECT_EQ(p.ToJsonText(), Json::parse(json).dump(2));
  EXPECT_EQ(OpticalParameters::FromJsonText(json).ToString(), "ConfigVersion=7" + text.substr(15));
  msgpack::sbuffer bytes;
  msgpack::pack(bytes, p);
  const std::string hex = Hex(std::string(bytes.data(), bytes.size()));
  EXPECT_TRUE(hex.starts_with("DC 00 1C 05 01 02 0A 04 05 06 07 CB 40 21 00 00 00 00 00 00 CB ")) << hex;
  EXPECT_NE(hex.find(" 93 CB 40 30 40 00 00 00 00 00 CB "), std::string::npos) << hex;
  EXPECT_NE(hex.find(" A5 68 C3 A4 73 68 94 CB 40 40 20 00 00 00 00 00 CB "), std::string::npos) << hex;
  vlOpticalParameters flat{};
  Flat::FromRecord(msgpack::unpack(bytes.data(), bytes.size()).get().as<OpticalParameters>(), flat);
  EXPECT_EQ(Flat::Taken<OpticalParameters>(&flat).ToString(), text);
  EXPECT_TRUE(flat.InputOffset.M == 40.25 && flat.FieldOffset.Y == 21.25 && flat.BitPerMicronE1 == 30.5);
  for (const std::size_t length : {std::size_t{128}, std::size_t{129}}) {
    p.Hash = std::string(length, 'x');
    EXPECT_EQ(Failure([&] { Flat::FromRecord(p, flat); }), length == 128 ? "no failure" : "Illegal hash!");
  }
  std::memset(flat.Hash, 'x', sizeof flat.Hash);
  EXPECT_EQ(Failure([&] { Flat::Taken<OpticalParameters>(&flat); }), "Illegal hash!");
}

TEST(OpticalParameters, AreReadFromSoundJsonOnly) {
  const Json sound = Distinct().ToJson();
  const std::string text = sound.dump(), wrongKind = "[json.exception.type_error.302] type must be ";
  const std::pair<Json, const char*> kinds[] = {
      {nullptr, "null"}, {Json::object(), "object"}, {Json::array({1}), "array"}, {"1", "string"}, {true, "boolean"},
      {Json::binary({1}), "binary"}, {Json(Json::value_t::discarded), "discarded"}};
  const auto outcome = [](const Json& json) { return Failure([&] { OpticalParameters::FromJson(json); }); };
  for (const auto& [key, member] : sound.items()) {
    Json changed = sound;
    changed.erase(key);
    EXPECT_EQ(outcome(changed), "[json.exception.out_of_range.403] key '" + key + "' not found");
    for (const auto& [wrong, kind] : kinds) {
      const bool isText = key == "Hash", fits = isText && wrong.is_string();
      changed = sound;
      (member.is_object() ? changed[key]["Y"] : changed[key]) = wrong;
      EXPECT_EQ(outcome(changed), fits ? "no failure" : wrongKind + (isText ? "string" : "number") + ", but is " + kind) << key;
    }
  }
  const std::string deep(1000, '['), deeper(16000000, '[');
  const auto with = [&](const std::string& members) { return text.substr(0, text.size() - 1) + "," + members + "}"; };
  const std::pair<std::string, std::string> texts[] = {
      {with(R"("Unknown":[{"X":[]}],"":1)"), "no failure"}, {with(R"("XLayers":9)"), "no failure"},
      {with(R"("Hash":")" + std::string(10000000, 'x') + "\""), "no failure"},
      {with("\"Hash\":\"" + std::string(100000000, 'x') + "\""), "The JSON text is too long."},
      {with("\"Unknown\":" + deep), "The JSON text is nested too deeply."}, {deeper, "The JSON text is nested too deeply."},
      {with(R"("XLayers":2147483648)"), "XLayers is out of range."}, {with(R"("YLayers":-1e300)"), "YLayers is out of range."},
      {with(R"("MLayers":18446744073709551615)"), "MLayers is out of range."}, {with(R"("ZLayers":-2147483648.9)"), "ZLayers is no integer."}, {with(R"("ZLayers":1.9)"), "ZLayers is no integer."},
      {with(R"("ZLayers":2.0,"YLayers":-2147483648,"MLayers":2.147483647e9)"), "no failure"}, {with(R"("HeadFormat":118.5)"), "ScanHeadFormat::_from_integral: invalid argument"},
      {with(R"("HeadFormat":4294967306)"), "ScanHeadFormat::_from_integral: invalid argument"}, {with(R"("HeadFormat":1e300)"), "ScanHeadFormat::_from_integral: invalid argument"}, {with(R"("HeadFormat":10.0)"), "no failure"},
      {with(R"("XLayers":{"X":"x"},"XLayers":[],"XLayers":9)"), "no failure"}, {with(R"("FieldSize":{"X":1},"FieldSize":{"Y":2,"Z":3})"), "[json.exception.out_of_range.403] key 'X' not found"},
      {with(R"("Unknown":{"XLayers":"x","FieldSize":5},"FieldSize":{"X":1,"Y":2,"Z":3,"W":{"X":"x"},"Z":4})"), "no failure"}, {with(R"("FieldSize":{"X":1,"Y":{"X":1},"Z":3})"), wrongKind + "number, but is object"},
      {with("\"Unknown\":" + Nested(64, "")), "no failure"}, {with("\"Unknown\":" + Nested(64, "1")), "The JSON text is nested too deeply."}, {with("\"Unknown\":" + Nested(65, "")), "The JSON text is nested too deeply."},
      {with(R"("XLayers":1e400)"), "[json.exception.out_of_range.406] number overflow"}, {text + "}", "[json.exception.parse_error.101] "}, {"7", "[json.exception.type_error.304] cannot use at() with number"},
      {with(R"("HeadFormat":3)"), "ScanHeadFormat::_from_integral: invalid argument"},
      {with(R"("FieldSize":5)"), "[json.exception.type_error.304] cannot use at() with number"},
      {"[]", "[json.exception.type_error.304] cannot use at() with array"}, {"", "[json.exception.parse_error.101] "}, {text.substr(1), "[json.exception.parse_error.101] "},
      {with("\"Hash\":\"\xFF\""), "[json.exception.parse_error.101] "},
  };
  for (const auto& [json, expected] : texts) {
    EXPECT_EQ(Failure([&json = json] { OpticalParameters::FromJsonText(json); }).substr(0, expected.size()), expected) << json.substr(0, 99);
  }
  EXPECT_EQ(OpticalParameters::FromJsonText(with(R"("XLayers":9)")).XLayers, 9);
  OpticalParameters odd;
  odd.FieldSize.Coordinates[1] = Nan, odd.Hash = "\xFF";
  EXPECT_EQ(Failure([&] { odd.ToJson().dump(); }).substr(0, 37), "[json.exception.type_error.316] inval");
}

TEST(OpticalParameters, AreReadInTimeThatGrowsWithTheText) {
  std::string text = "{";
  for (int i = 0; i < 200000; ++i) text += "\"" + std::to_string(i) + "\":0,";
  const Stopwatch watch;
  EXPECT_EQ(OpticalParameters::FromJsonText(text + Distinct().ToJson().dump().substr(1)).XLayers, 4);
  EXPECT_LT(watch.Milliseconds(), 5000);
}

TEST(OpticalParameters, SurviveEveryAllocationThatFails) {
  vlOpticalParameters flat{};
  Flat::FromRecord(Distinct(), flat);
  char buffer[4000] = "";
  std::uint32_t length = 0;
  const std::string text = R"({"Unknown":[[{}],"a text that needs memory of its own"],)" + Distinct().ToJson().dump().substr(1);
  const auto read = [&](const std::string& json) { return [json, &flat] { return vlOpticalParametersFromJson(json.c_str(), &flat); }; };
  const std::pair<std::function<std::int32_t()>, const char*> calls[] = {
      {[&] { return vlOpticalParametersToJson(&flat, buffer, sizeof buffer, &length); }, ""}, {read(text), ""}, {read("{\"ConfigVersion\":{}}"), "[json.exception.type_error.302] type must be number, but is object"},
      {read(text.substr(0, text.size() - 1) + ",\"XLayers\":1.5}"), "XLayers is no integer."}, {read("{"), "[json.exception.parse_error.101] "}};
  for (const auto& [call, outcome] : calls) {
    for (const std::int64_t failures : {std::int64_t{1}, INT64_MAX}) {
      for (long count = 0, hasFailed = 1; hasFailed != 0; ++count) {
        std::int32_t result = 0;
        {
          const FailingMemory memory(count, failures);
          result = call();
          hasFailed = memory.HasFailed();
        }
        const std::string error = LastError();
        if (hasFailed != 0) {
          const bool isTold = error == "std::bad_alloc" || error == "Unable to generate error message.";
          EXPECT_TRUE(result == -1 && isTold) << result << error << " after " << count;
        } else {
          EXPECT_EQ(error.substr(0, std::max(std::size_t{1}, std::string(outcome).size())), outcome);
          EXPECT_GT(count, 3);
        }
      }
    }
  }
}

TEST(FileHandles, SendAsMuchAsTheyMay) {
  const std::vector<std::uint8_t> bytes(3 * 921600, 7);
  const std::tuple<int, const char*, std::size_t, std::string> rows[] = {  // count, failure, calls and the last one's end
      {0, "no failure", 1, "C4 00 00"}, {1, "no failure", 1, "C4 01 07 01"}, {921600, "no failure", 1, "07 CE 00 0E 10 00"},
      {2 * 921600, "no failure", 2, "93 05 C4 00 CE 00 0E 10 00"},
      {921601, "cannot create std::vector larger than max_size()", 1, "07 CE 00 0E 10 00"},
      {3 * 921600, "cannot create std::vector larger than max_size()", 2, "93 05 C4 00 CE 00 0E 10 00"}};
  for (const auto& [count, failure, calls, end] : rows) {
    CallRecorder caller;
    EXPECT_EQ(Failure([&, count = count] { FileHandle(caller, 5).Write(bytes.data(), count); }), failure);
    ASSERT_EQ(caller.Calls.size(), calls + 1) << "one closes the file";
    EXPECT_TRUE(Hex(caller.Calls[calls - 1].substr(std::max<std::size_t>(caller.Calls[calls - 1].size(), 20) - 20)).ends_with(end)) << count;
    EXPECT_EQ(Hex(caller.Calls.back()), "91 05");
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
