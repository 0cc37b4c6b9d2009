#include "services/OpticalParameters.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <list>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "config/RecordText.h"

namespace VELTRO::KELVO::ClientLib {

template class Record<OpticalParameters>;

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t MostLevels = 64;
constexpr std::size_t MostTextBytes = 16 << 20;
constexpr const char* Coordinates[] = {"X", "Y", "Z", "M"};

using FieldNames = std::array<const char*, OpticalParameters::FieldCount + 1>;

const FieldNames& NamesOfFields() {
  static const FieldNames names = [] {
    FieldNames all{"ConfigVersion"};
    std::size_t count = 1;
    const OpticalParameters any;
    OpticalParameters::ForEachField(any, [&](const char* name, const auto&) { all[count++] = name; });
    return all;
  }();
  return names;
}

// ---- Writing. The text is made without a tree of values, whose end takes memory: where there is none, that would be
// the end of the process, too.

template <class T>
void AppendValue(std::string& text, const T& value) {
  text += Json(value).dump();
}
void AppendValue(std::string& text, const ScanHeadFormat& format) {
  AppendValue(text, format._to_integral());
}
template <std::size_t N>
void AppendValue(std::string& text, const Point<N, double>& point) {
  const char* separator = "{\n    \"";
  for (std::size_t i = 0; i < N; ++i) {
    text.append(std::exchange(separator, ",\n    \"")).append(Coordinates[i]).append("\": ");
    AppendValue(text, point.Coordinates[i]);
  }
  text += "\n  }";
}

// ---- Reading, from a value of that library or from one that was kept of a text.

template <class Source>
void Take(const Source& json, const char*, double& value) {
  value = json.template get<double>();
}
template <class Source>
void Take(const Source& json, const char*, std::string& value) {
  value = json.template get<std::string>();
}
bool Fits(double number) {
  return number >= INT32_MIN && number <= INT32_MAX;
}
template <class Source>
void Take(const Source& json, const char* name, std::int32_t& value) {
  const auto number = json.template get<double>();
  if (std::trunc(number) != number) throw std::runtime_error(std::string(name) + " is no integer.");
  if (!Fits(number)) throw std::runtime_error(std::string(name) + " is out of range.");
  value = static_cast<std::int32_t>(number);
}
template <class Source>
void Take(const Source& json, const char*, ScanHeadFormat& value) {
  constexpr std::int64_t None = -1;
  const auto number = json.template get<double>();
  const bool isInteger = Fits(number) && std::trunc(number) == number;
  value = ScanHeadFormat::_from_integral(isInteger ? static_cast<std::int64_t>(number) : None);
}
template <class Source, std::size_t N>
void Take(const Source& json, const char* name, Point<N, double>& point) {
  for (std::size_t i = 0; i < N; ++i) Take(json.at(Coordinates[i]), name, point.Coordinates[i]);
}

template <class Source>
OpticalParameters Read(const Source& json) {
  OpticalParameters parameters;
  const auto take = [&](const char* name, auto& value) { Take(json.at(name), name, value); };
  take("ConfigVersion", parameters.ConfigVersion);
  OpticalParameters::ForEachField(parameters, take);
  return parameters;
}

// What is kept of a value in a text: a number, text and the like as it is, and of an object the members that have a
// name which matters. Asked like a value of that library it fails in its words.
struct Kept {
  explicit Kept(const char* name) : Name(name) {}

  const char* Name;
  Json Value;  // of an object or an array an empty one
  std::list<Kept> Members;

  const Kept& at(const char* name) const {
    for (const Kept& member : Members) {
      if (std::string_view(member.Name) == name) return member;
    }
    static_cast<void>(Value.at(name));  // throws
    return *this;
  }
  template <class T>
  T get() const {
    return Value.get<T>();
  }
  // A member anew, of which nothing is known yet; null when the name is none of those.
  Kept* Add(std::span<const char* const> names, std::string_view name) {
    const auto known = std::ranges::find(names, name);
    if (known == names.end()) return nullptr;
    const auto found = std::ranges::find(Members, *known, &Kept::Name);
    Kept& member = found == Members.end() ? Members.emplace_back(*known) : *found;
    member.Value = nullptr;
    member.Members.clear();
    return &member;
  }
};

// Takes what the parser reads, one thing after another, and keeps what matters. So neither time nor memory depends on
// what else is in the text. The names of the functions are the parser's.
class Keeper {
 public:
  explicit Keeper(Kept& root) : next_(&root) {}

  bool null() { return Put(nullptr); }
  bool boolean(bool value) { return Put(value); }
  bool number_integer(Json::number_integer_t value) { return Put(value); }
  bool number_unsigned(Json::number_unsigned_t value) { return Put(value); }
  bool number_float(Json::number_float_t value, const std::string&) { return Put(value); }
  bool string(std::string& value) { return Put(std::move(value)); }
  bool binary(Json::binary_t&) { return Put(nullptr); }  // no text has them
  bool start_array(std::size_t) { return Open(Json::array(), {}); }
  bool end_array() { return Close(); }
  bool start_object(std::size_t) {
    if (open_.empty()) return Open(Json::object(), NamesOfFields());
    return Open(Json::object(), open_.size() == 1 ? std::span(Coordinates) : std::span<const char* const>());
  }
  bool end_object() { return Close(); }
  bool key(const std::string& name) {
    CheckLevel();
    const Level& level = open_.back();
    next_ = level.Object == nullptr ? nullptr : level.Object->Add(level.Names, name);
    return true;
  }
  template <class Exception>
  bool parse_error(std::size_t, const std::string&, const Exception& error) {
    throw error;
  }

 private:
  struct Level {
    Kept* Object;  // null when nothing of it matters
    std::span<const char* const> Names;
  };

  // Levels are counted while reading, so that the stack is as high as that at most.
  void CheckLevel() const {
    if (open_.size() > MostLevels) throw std::runtime_error("The JSON text is nested too deeply.");
  }
  template <class T>
  bool Put(T&& value) {
    CheckLevel();
    if (next_ != nullptr) std::exchange(next_, nullptr)->Value = Json(std::forward<T>(value));
    return true;
  }
  bool Open(Json empty, std::span<const char* const> names) {
    Kept* const object = next_;
    Put(std::move(empty));
    open_.push_back({names.empty() ? nullptr : object, names});
    return true;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }

  Kept* next_;  // where the next value belongs; null when it does not matter
  std::vector<Level> open_;
};

}  // namespace

std::string OpticalParameters::ToString() const {
  RecordText text;
  text.Field("ConfigVersion", ConfigVersion);
  WriteFields(*this, text);
  return text.Take();
}

std::string OpticalParameters::ToJsonText() const {
  std::string text = "{\n  \"ConfigVersion\": ";
  AppendValue(text, CurrentConfigVersion);
  ForEachField(*this, [&](const char* name, const auto& value) {
    text.append(",\n  \"").append(name).append("\": ");
    AppendValue(text, value);
  });
  return text += "\n}";
}

Json OpticalParameters::ToJson() const {
  return Json::parse(ToJsonText());
}

OpticalParameters OpticalParameters::FromJson(const Json& json) {
  return Read(json);
}

OpticalParameters OpticalParameters::FromJsonText(std::string_view text) {
  if (text.size() > MostTextBytes) throw std::runtime_error("The JSON text is too long.");
  Kept root("");
  Keeper keeper(root);
  Json::sax_parse(text, &keeper);
  return Read(root);
}

std::uint32_t hashDouble(double value) {
  if (value == 0) return 0;
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return static_cast<std::uint32_t>(bits ^ bits >> 32);
}

std::uint32_t doubleHash(double value) {
  if (std::isnan(value)) return 0xf000000f;
  if (std::isinf(value)) return 0x70000007;
  return hashDouble(value);
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
