#include "services/OpticalParameters.h"

#include <bit>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "config/RecordText.h"

namespace VELTRO::KELVO::ClientLib {

template class Record<OpticalParameters, 7>;

namespace {

using Json = nlohmann::ordered_json;

constexpr int MostLevels = 64;
constexpr std::size_t MostTextBytes = 16 << 20;
constexpr const char* Coordinates[] = {"X", "Y", "Z", "M"};

template <class T>
Json JsonOf(const T& value) {
  return value;
}
Json JsonOf(const ScanHeadFormat& format) {
  return format._to_integral();
}
template <std::size_t N>
Json JsonOf(const Point<N, double>& point) {
  Json json;
  for (std::size_t i = 0; i < N; ++i) json[Coordinates[i]] = point.Coordinates[i];
  return json;
}

void Take(const Json& json, const char*, double& value) {
  value = json.get<double>();
}
void Take(const Json& json, const char*, std::string& value) {
  value = json.get<std::string>();
}
// Like that library, by cutting off what is behind the point; but not beyond what the field can hold.
void Take(const Json& json, const char* name, std::int32_t& value) {
  const double number = std::trunc(json.get<double>());
  if (!(number >= INT32_MIN && number <= INT32_MAX)) {
    throw std::runtime_error(std::string(name) + " is out of range.");
  }
  value = static_cast<std::int32_t>(number);
}
void Take(const Json& json, const char* name, ScanHeadFormat& value) {
  std::int32_t number = 0;
  Take(json, name, number);
  value = ScanHeadFormat::_from_integral(number);
}
template <std::size_t N>
void Take(const Json& json, const char*, Point<N, double>& point) {
  for (std::size_t i = 0; i < N; ++i) point.Coordinates[i] = json.at(Coordinates[i]).template get<double>();
}

}  // namespace

std::string OpticalParameters::ToString() const {
  RecordText text;
  text.Field("ConfigVersion", ConfigVersion);
  WriteFields(*this, text);
  return text.Take();
}

Json OpticalParameters::ToJson() const {
  Json json;
  json["ConfigVersion"] = CurrentConfigVersion;
  ForEachField(*this, [&](const char* name, const auto& value) { json[name] = JsonOf(value); });
  return json;
}

OpticalParameters OpticalParameters::FromJson(const Json& json) {
  OpticalParameters parameters;
  const auto take = [&](const char* name, auto& value) { Take(json.at(name), name, value); };
  take("ConfigVersion", parameters.ConfigVersion);
  ForEachField(parameters, take);
  return parameters;
}

OpticalParameters OpticalParameters::FromJsonText(std::string_view text) {
  if (text.size() > MostTextBytes) throw std::runtime_error("The JSON text is too long.");
  // Levels are counted while reading, before there is anything of that depth.
  return FromJson(Json::parse(text, [](int level, Json::parse_event_t, Json&) {
    if (level > MostLevels) throw std::runtime_error("The JSON text is nested too deeply.");
    return true;
  }));
}

std::uint32_t hashDouble(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return static_cast<std::uint32_t>(bits ^ bits >> 32);
}

std::uint32_t doubleHash(double value) {
  if (std::isnan(value)) return 0xf000000f;
  if (std::isinf(value)) return 0x70000007;
  return value == 0 ? 0 : hashDouble(value);
}

std::uint32_t OpticalParameters::GetHashCode() const {
  const std::pair<std::int32_t, std::uint32_t> integers[] = {
      {MinorVersion, 641}, {UsedAxes, 587}, {HeadFormat._to_integral(), 135}, {XLayers, 77}, {YLayers, 44},
      {ZLayers, 59},       {MLayers, 33}};
  std::uint32_t hash = 0;
  for (const auto& [value, factor] : integers) hash ^= static_cast<std::uint32_t>(value) * factor;
  for (const double value :
       {MaxAngleX, MaxAngleY, MaxMagnification, Y2Z0, X2Y, O2X, FocalLength, MaxLensTravel, Aperture,
        WorkingDistance, Wavelength, BitPerMicronZ0, BitPerMicronZ1, BitPerMicronE0, BitPerMicronE1}) {
    hash ^= doubleHash(value);
  }
  for (const Point3D& point : {FieldSize, FieldOffset}) {
    for (std::uint32_t i = 0; i < 3; ++i) hash ^= doubleHash(point.Coordinates[i]) * (88 + i);
  }
  return hash;
}

bool OpticalParameters::EqualLayers(const OpticalParameters& other) const {
  return XLayers == other.XLayers && YLayers == other.YLayers && ZLayers == other.ZLayers &&
         MLayers == other.MLayers;
}

}  // namespace VELTRO::KELVO::ClientLib
