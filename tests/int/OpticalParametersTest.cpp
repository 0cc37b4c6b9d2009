// Optical parameters: hash code, JSON, text, bytes.

#include <nlohmann/json.hpp>

#include "Helpers.h"
#include "capi/FlatRecord.h"
#include "config/RecordWire.h"
#include "int/Filler.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

using Json = nlohmann::ordered_json;

constexpr double Nan = std::numeric_limits<double>::quiet_NaN(),
                 Inf = std::numeric_limits<double>::infinity();

// Parameters of which those that count have these values.
struct Counting {
  std::array<std::int32_t, 7> ints;  // minor version, axes, format, layers of x, y, z, m
  std::array<double, 8> first;       // those from MaxAngleX to MaxLensTravel
  std::array<double, 3> size, offset;
  std::array<double, 7> last;  // those from Aperture to BitPerMicronE1
  std::uint32_t hash;
};

OpticalParameters ParametersOf(const Counting& row) {
  OpticalParameters p;
  const auto& [i, f, size, offset, l, hash] = row;
  p.HeadFormat = ScanHeadFormat::_from_integral(i[2]);
  std::tie(p.MinorVersion, p.UsedAxes) = std::tie(i[0], i[1]);
  std::tie(p.XLayers, p.YLayers, p.ZLayers, p.MLayers) = std::tie(i[3], i[4], i[5], i[6]);
  std::tie(p.MaxAngleX, p.MaxAngleY, p.MaxMagnification, p.Y2Z0) = std::tie(f[0], f[1], f[2], f[3]);
  std::tie(p.X2Y, p.O2X, p.FocalLength, p.MaxLensTravel) = std::tie(f[4], f[5], f[6], f[7]);
  p.FieldSize.Coordinates = size;
  p.FieldOffset.Coordinates = offset;
  std::tie(p.Aperture, p.WorkingDistance, p.Wavelength) = std::tie(l[0], l[1], l[2]);
  std::tie(p.BitPerMicronZ0, p.BitPerMicronZ1) = std::tie(l[3], l[4]);
  std::tie(p.BitPerMicronE0, p.BitPerMicronE1) = std::tie(l[5], l[6]);
  return p;
}

TEST(OpticalParameters, HaveTheHashCodeOfTheRule) {
  constexpr double Z = -0.0;
  const Counting rows[] = {
      {{}, {}, {}, {}, {}, 0},
      {{3, 7, 1, 5, 6, 2, 4}, {}, {}, {}, {}, 0x00001772},
      {{-1, INT32_MAX, 118, INT32_MIN, 100000007, -77, 65536}, {}, {}, {}, {}, 0xf99c7d85},
      {{1}, {Z, Z, Z, Z, Z, Z, Z, Z}, {Z, Z, Z}, {Z, Z, Z}, {Z, Z, Z, Z, Z, Z, Z}, 0x00000281},
      {{}, {Nan}, {}, {}, {}, 0xf000000f},
      {{}, {0, 0, 0, 0, 0, 0, 0, -Inf}, {}, {}, {}, 0x70000007},
      {{}, {}, {}, {}, {0, 0, 0, 0, 0, 0, -Nan}, 0xf000000f},
      {{}, {}, {Nan}, {}, {}, 0x80000528},
      {{}, {}, {}, {0, 0, -Nan}, {}, 0x60000546},
      {{}, {}, {0, Inf, 0}, {}, {}, 0xf000026f},
      {{}, {}, {Nan, Nan, Nan}, {}, {}, 0x90000559},
      {{}, {}, {}, {Inf, -Inf, Inf}, {}, 0x10000271},
      {{}, {}, {0.1}, {}, {}, 0x1b000108},
      {{}, {}, {}, {0, 0, 1.7976931348623157e308}, {}, 0x05a00000},
      {{2, 7, 118, 3, 3, 1, 1},
       {0.35, 0.36, 4.5, 12.5, 17.25, 30, 163, 9.75},
       {100, 120.5, 4},
       {-1.5, 2.5, 1e300},
       {14, 181.75, 1064, 0.1, 0.2, 0.3, -5e-324},
       0x12d15c3a},
  };
  for (const Counting& row : rows) {
    const OpticalParameters p = ParametersOf(row);
    OpticalParameters other = p;
    other.Hash = "x", other.InputScale = {{1, 2, 3, 4}}, other.InputOffset = {{5, Nan, 7, 8}},
    other.ConfigVersion = 3;
    EXPECT_EQ(other.GetHashCode(), row.hash) << "these do not count";
    vlOpticalParameters flat{};
    std::uint32_t code = ~row.hash;
    Flat::FromRecord(p, flat);
    EXPECT_OK(vlOpticalParametersGetHashCode(&flat, &code));
    EXPECT_EQ(code, row.hash);
    flat.HeadFormat = 3;
    EXPECT_FAILS(vlOpticalParametersGetHashCode(&flat, &code),
                 "ScanHeadFormat::_from_integral: invalid argument");
  }
  EXPECT_EQ(hashDouble(-0.0), 0U);
  EXPECT_EQ(doubleHash(-0.0), 0U);
  EXPECT_EQ(hashDouble(0.0), 0U);
  EXPECT_EQ(hashDouble(-0.1), 0x26200003U);
}

TEST(OpticalParameters, AreOfEqualLayersWhateverElseTheyAre) {
  vlOpticalParameters one{}, other{};
  Flat::FromRecord(Filled<OpticalParameters>(), one);
  Flat::FromRecord(OpticalParameters(), other);
  std::int32_t vlOpticalParameters::*const layers[] = {
      &vlOpticalParameters::XLayers, &vlOpticalParameters::YLayers, &vlOpticalParameters::ZLayers,
      &vlOpticalParameters::MLayers};
  for (const auto layer : layers) other.*layer = one.*layer;
  bool equal = false;
  EXPECT_EQ(Told(vlOpticalParametersEqualLayers(&one, &other, &equal), equal), "0 1");
  for (const auto layer : layers) {
    ++(other.*layer);
    EXPECT_EQ(Told(vlOpticalParametersEqualLayers(&one, &other, &equal), equal), "0 0");
    --(other.*layer);
  }
}

// Of parameters with a value of its own in every field; its texts in single quotes.
const std::string quotedJson =
    R"({'ConfigVersion':7,'MinorVersion':1,'UsedAxes':2,'HeadFormat':8,'XLayers':3,'YLayers':4,'ZLayers':5,)"
    R"('MLayers':6,'MaxAngleX':7.5,'MaxAngleY':8.5,'MaxMagnification':9.5,'Y2Z0':10.5,'X2Y':11.5,'O2X':12.5,)"
    R"('FocalLength':13.5,'MaxLensTravel':14.5,'FieldSize':{'X':15.5,'Y':16.5,'Z':17.5},)"
    R"('FieldOffset':{'X':18.5,'Y':19.5,'Z':20.5},'Aperture':21.5,'WorkingDistance':22.5,'Wavelength':23.5,)"
    R"('BitPerMicronZ0':24.5,'BitPerMicronZ1':25.5,'BitPerMicronE0':26.5,'BitPerMicronE1':27.5,)"
    R"('Hash':'Asia/Kolkata','InputScale':{'X':28.5,'Y':29.5,'Z':30.5,'M':31.5},)"
    R"('InputOffset':{'X':32.5,'Y':33.5,'Z':34.5,'M':35.5}})";

std::string Quoted(std::string json) {
  std::ranges::replace(json, '\'', '"');
  return json;
}

TEST(OpticalParameters, AreJsonInTheOrderOfTheirFields) {
  const OpticalParameters p = Filled<OpticalParameters>();
  const std::string json = Quoted(quotedJson);
  EXPECT_EQ(p.ToJson().dump(), json);
  EXPECT_EQ(p.ToJsonText(), Json::parse(json).dump(2));
  EXPECT_EQ(OpticalParameters::FromJsonText(json).ToString(), p.ToString());
  OpticalParameters odd;
  odd.Hash = "\xFF";  // is no text
  EXPECT_THAT(Failure([&] { odd.ToJson().dump(); }), StartsWith("[json.exception.type_error.316] inval"));
}

TEST(OpticalParameters, CrossToPlainStructsWithHashesThatFit) {
  OpticalParameters p = Filled<OpticalParameters>();
  vlOpticalParameters flat{};
  Flat::FromRecord(p, flat);
  EXPECT_EQ(Flat::Taken<OpticalParameters>(&flat).ToString(), p.ToString());
  p.Hash = std::string(128, 'x');
  EXPECT_FAILURE(Flat::FromRecord(p, flat), "no failure");
  p.Hash += 'x';
  EXPECT_FAILURE(Flat::FromRecord(p, flat), "Illegal hash!");
  std::memset(flat.Hash, 'x', sizeof flat.Hash);
  EXPECT_FAILURE(Flat::Taken<OpticalParameters>(&flat), "Illegal hash!");
}

TEST(OpticalParameters, AreNotReadFromJsonWithMembersThatAreMissingOrOfAWrongKind) {
  const Json sound = Filled<OpticalParameters>().ToJson();
  const std::pair<Json, std::string> kinds[] = {
      {nullptr, "null"},
      {Json::object(), "object"},
      {Json::array({1}), "array"},
      {"1", "string"},
      {true, "boolean"},
      {Json::binary({1}), "binary"},
      {Json(Json::value_t::discarded), "discarded"},
  };
  const auto outcome = [](const Json& json) { return Failure([&] { OpticalParameters::FromJson(json); }); };
  for (const auto& [key, member] : sound.items()) {
    Json changed = sound;
    changed.erase(key);
    EXPECT_EQ(outcome(changed), "[json.exception.out_of_range.403] key '" + key + "' not found");
    const std::string right = member.is_string() ? "string" : "number";
    for (const auto& [wrong, kind] : kinds) {
      changed = sound;
      (member.is_object() ? changed[key]["Y"] : changed[key]) = wrong;
      EXPECT_EQ(outcome(changed),
                kind == right ? "no failure"
                              : "[json.exception.type_error.302] type must be " + right + ", but is " + kind)
          << key;
    }
  }
}

// JSON with these members behind the sound ones.
std::string JsonWith(const std::string& members) {
  const std::string json = Quoted(quotedJson);
  return json.substr(0, json.size() - 1) + "," + Quoted(members) + "}";
}

TEST(OpticalParameters, AreReadFromJsonWhoseLatestMembersAreSound) {
  const char* const format = "ScanHeadFormat::_from_integral: invalid argument";
  const std::pair<const char*, const char*> rows[] = {
      {"'Unknown':[{'X':[]}],'':1", "no failure"},
      {"'XLayers':9", "no failure"},
      {"'XLayers':2147483648", "XLayers is out of range."},
      {"'YLayers':-1e300", "YLayers is out of range."},
      {"'MLayers':18446744073709551615", "MLayers is out of range."},
      {"'ZLayers':-2147483648.9", "ZLayers is no integer."},
      {"'ZLayers':1.9", "ZLayers is no integer."},
      {"'ZLayers':2.0,'YLayers':-2147483648,'MLayers':2.147483647e9", "no failure"},
      {"'XLayers':{'X':'x'},'XLayers':[],'XLayers':9", "no failure"},
      {"'XLayers':1e400", "[json.exception.out_of_range.406] number overflow"},
      {"'HeadFormat':118.5", format},
      {"'HeadFormat':4294967306", format},
      {"'HeadFormat':1e300", format},
      {"'HeadFormat':3", format},
      {"'HeadFormat':10.0", "no failure"},
      {"'FieldSize':5", "[json.exception.type_error.304] cannot use at() with number"},
      {"'FieldSize':{'X':1},'FieldSize':{'Y':2,'Z':3}",
       "[json.exception.out_of_range.403] key 'X' not found"},
      {"'FieldSize':{'X':1,'Y':{'X':1},'Z':3}",
       "[json.exception.type_error.302] type must be number, but is object"},
      {"'Unknown':{'XLayers':'x','FieldSize':5},'FieldSize':{'X':1,'Y':2,'Z':3,'W':{'X':'x'},'Z':4}",
       "no failure"},
      {"'Hash':'h\u00e4sh'", "no failure"},
      {"'Hash':'\xFF'", "[json.exception.parse_error.101] "},
  };
  for (const auto& [members, expected] : rows) {
    EXPECT_THAT(Failure([&json = members] { OpticalParameters::FromJsonText(JsonWith(json)); }),
                StartsWith(expected))
        << members;
  }
  EXPECT_EQ(OpticalParameters::FromJsonText(JsonWith("'XLayers':9")).XLayers, 9);
}

TEST(OpticalParameters, AreReadFromWholeJsonOfSomeSizeOnly) {
  SKIP_UNDER_THREAD_SANITIZER();
  const std::string json = Quoted(quotedJson), deep = "The JSON text is nested too deeply.";
  const auto nested = [](std::size_t levels, const std::string& inner) {
    return JsonWith("'Unknown':" + std::string(levels, '[') + inner + std::string(levels, ']'));
  };
  const std::pair<std::string, std::string> rows[] = {
      {JsonWith("'Hash':'" + std::string(10000000, 'x') + "'"), "no failure"},
      {JsonWith("'Hash':'" + std::string(100000000, 'x') + "'"), "The JSON text is too long."},
      {nested(64, ""), "no failure"},
      {nested(64, "1"), deep},
      {nested(65, ""), deep},
      {JsonWith("'Unknown':" + std::string(1000, '[')), deep},
      {std::string(16000000, '['), deep},
      {json + "}", "[json.exception.parse_error.101] "},
      {json.substr(1), "[json.exception.parse_error.101] "},
      {"", "[json.exception.parse_error.101] "},
      {"7", "[json.exception.type_error.304] cannot use at() with number"},
      {"[]", "[json.exception.type_error.304] cannot use at() with array"},
  };
  for (const auto& [whole, expected] : rows) {
    EXPECT_THAT(Failure([&json = whole] { OpticalParameters::FromJsonText(json); }), StartsWith(expected));
  }
}

TEST(OpticalParameters, AreReadInTimeThatGrowsWithTheText) {
  std::string members;
  for (int i = 0; i < 200000; ++i) members += "'" + std::to_string(i) + "':0,";
  const AtMost promptly(20000);
  EXPECT_EQ(OpticalParameters::FromJsonText(JsonWith(members + "'end':0")).XLayers, 3);
}

TEST(OpticalParameters, SurviveEveryAllocationThatFails) {
  vlOpticalParameters flat{};
  Flat::FromRecord(Filled<OpticalParameters>(), flat);
  char buffer[4000] = "";
  std::uint32_t length = 0;
  const std::string json = JsonWith("'Unknown':[[{}],'a text that needs memory of its own']");
  const auto read = [&](const std::string& whole) {
    return [whole, &flat] { return vlOpticalParametersFromJson(whole.c_str(), &flat); };
  };
  const std::pair<std::function<std::int32_t()>, const char*> calls[] = {
      {[&] { return vlOpticalParametersToJson(&flat, buffer, sizeof buffer, &length); }, ""},
      {read(json), ""},
      {read("{\"ConfigVersion\":{}}"), "[json.exception.type_error.302] type must be number, but is object"},
      {read(JsonWith("'XLayers':1.5")), "XLayers is no integer."},
      {read("{"), "[json.exception.parse_error.101] "},
  };
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

}  // namespace
}  // namespace VELTRO::KELVO::Test
