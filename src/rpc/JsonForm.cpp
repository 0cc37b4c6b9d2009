#include "rpc/JsonForm.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "rpc/PackDouble.h"

namespace VELTRO::KELVO::ClientLib::JsonForm {

namespace {

using Json = nlohmann::json;

constexpr std::size_t MostDepth = 256;
constexpr std::string_view Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view Marks[] = {"base64", "number", "map", "text", "extension"};

// The value of each digit; of what is none, Digits.size().
constexpr auto DigitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(static_cast<std::uint8_t>(Digits.size()));
  for (std::size_t i = 0; i < Digits.size(); ++i) {
    values[static_cast<unsigned char>(Digits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

// Pieces of megabytes are recorded while they are sent: this is to take less time than that.
void AppendBase64(std::string& text, std::string_view bytes) {
  const std::size_t before = text.size();
  text.resize(before + (bytes.size() + 2) / 3 * 4, '=');
  char* to = text.data() + before;
  const auto byte = [&](std::size_t i) -> std::uint32_t { return static_cast<unsigned char>(bytes[i]); };
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const std::uint32_t group = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
    *to++ = Digits[group >> 18];
    *to++ = Digits[group >> 12 & 63];
    *to++ = Digits[group >> 6 & 63];
    *to++ = Digits[group & 63];
  }
  if (i == bytes.size()) return;
  const bool areTwo = i + 2 == bytes.size();
  const std::uint32_t group = byte(i) << 16 | (areTwo ? byte(i + 1) << 8 : 0);
  *to++ = Digits[group >> 18];
  *to++ = Digits[group >> 12 & 63];
  if (areTwo) *to = Digits[group >> 6 & 63];
}

std::string FromBase64(std::string_view text) {
  const auto refuse = [] { throw std::runtime_error("A text in base64 is none."); };
  if (text.size() % 4 != 0) refuse();
  while (text.ends_with('=')) text.remove_suffix(1);
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    const std::uint32_t digit = DigitValues[static_cast<unsigned char>(c)];
    if (digit == Digits.size()) refuse();
    bits = bits << 6 | digit;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  if (count == 6 || (bits & ((1U << count) - 1)) != 0) refuse();
  return bytes;
}

bool IsMark(std::string_view key) {
  return std::find(std::begin(Marks), std::end(Marks), key) != std::end(Marks);
}

[[noreturn]] void RefuseMark(std::string_view key) {
  throw std::runtime_error("An object with the key '" + std::string(key) + "' is not of its kind.");
}

// ---- From JSON

enum class Kind : std::uint8_t { Nil, Boolean, Unsigned, Signed, Double, Text, Array, Object };

struct Node {
  Kind Is;
  std::uint32_t Size;   // bytes of a text, elements of an array, members of an object
  std::uint64_t Value;  // the bits of a number; where a text begins
};

// The values of a JSON text, each ahead of those that are in it; a member of an object is its key and its value.
struct Nodes {
  std::vector<Node> All;
  std::string Texts;

  std::string_view TextOf(const Node& node) const {
    return std::string_view(Texts).substr(node.Value, node.Size);
  }
};

// The names of the functions are those of the parser, which calls them for one thing after another.
class Reader {
 public:
  explicit Reader(Nodes& nodes) : nodes_(nodes) {}

  bool null() { return Add(Kind::Nil, 0); }
  bool boolean(bool value) { return Add(Kind::Boolean, value ? 1 : 0); }
  bool number_integer(std::int64_t value) { return Add(Kind::Signed, static_cast<std::uint64_t>(value)); }
  bool number_unsigned(std::uint64_t value) { return Add(Kind::Unsigned, value); }
  bool number_float(double value, const std::string&) {
    return Add(Kind::Double, std::bit_cast<std::uint64_t>(value));
  }
  bool string(const std::string& value) {
    Count();
    return AddText(value);
  }
  bool binary(const Json::binary_t&) { return false; }  // no text has them
  bool start_array(std::size_t) { return Open(Kind::Array); }
  bool end_array() { return Close(); }
  bool start_object(std::size_t) { return Open(Kind::Object); }
  bool end_object() { return Close(); }
  bool key(const std::string& name) {
    if (!open_.back().Keys.insert(name).second) {
      throw std::runtime_error("An object has the key '" + name + "' twice.");
    }
    return AddText(name);
  }
  bool parse_error(std::size_t, const std::string&, const Json::exception&) { return false; }

 private:
  struct Level {
    std::size_t Place;
    std::set<std::string> Keys;
  };

  // One more in what is open. Levels are counted while reading, so that the stack of the packing is as high as that.
  void Count() {
    if (open_.size() > MostDepth) throw std::runtime_error("The arguments are nested too deeply.");
    if (!open_.empty()) ++nodes_.All[open_.back().Place].Size;
  }
  bool Add(Kind kind, std::uint64_t value) {
    Count();
    nodes_.All.push_back({kind, 0, value});
    return true;
  }
  bool AddText(const std::string& text) {
    nodes_.All.push_back({Kind::Text, static_cast<std::uint32_t>(text.size()), nodes_.Texts.size()});
    nodes_.Texts += text;
    return true;
  }
  bool Open(Kind kind) {
    Add(kind, 0);
    open_.push_back({nodes_.All.size() - 1, {}});
    return true;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }

  Nodes& nodes_;
  std::vector<Level> open_;
};

class Packing {
 public:
  explicit Packing(const Nodes& nodes) : nodes_(nodes) {}

  // The next value, with all that is in it.
  void Pack() {
    const Node& node = nodes_.All[next_++];
    switch (node.Is) {
      case Kind::Nil:
        packer_.pack_nil();
        return;
      case Kind::Boolean:
        packer_.pack(node.Value != 0);
        return;
      case Kind::Unsigned:
        packer_.pack(node.Value);
        return;
      case Kind::Signed:
        packer_.pack(static_cast<std::int64_t>(node.Value));
        return;
      case Kind::Double:
        PackDouble(packer_, std::bit_cast<double>(node.Value));
        return;
      case Kind::Text:
        PackBytes(true, nodes_.TextOf(node));
        return;
      case Kind::Array:
        packer_.pack_array(node.Size);
        for (std::uint32_t i = 0; i < node.Size; ++i) Pack();
        return;
      case Kind::Object:
        PackObject(node);
        return;
    }
  }
  std::string Take() const { return {bytes_.data(), bytes_.size()}; }

 private:
  const Node& Take(Kind kind, std::string_view mark) {
    const Node& node = nodes_.All[next_++];
    if (node.Is != kind) RefuseMark(mark);
    return node;
  }
  // An array of two.
  void TakePair(std::string_view mark) {
    if (Take(Kind::Array, mark).Size != 2) RefuseMark(mark);
  }
  void PackObject(const Node& object) {
    if (object.Size == 1 && IsMark(nodes_.TextOf(nodes_.All[next_]))) {
      return PackMarked(nodes_.TextOf(nodes_.All[next_++]));
    }
    packer_.pack_map(object.Size);
    for (std::uint64_t i = 0; i < 2 * std::uint64_t{object.Size}; ++i) Pack();
  }
  void PackMarked(std::string_view mark) {
    if (mark == "map") return PackPairs();
    if (mark == "extension") return PackExtension();
    const std::string_view text = nodes_.TextOf(Take(Kind::Text, mark));
    if (mark == "number") return PackDouble(packer_, Number(text));
    PackBytes(mark == "text", FromBase64(text));
  }
  void PackPairs() {
    const std::uint32_t count = Take(Kind::Array, "map").Size;
    packer_.pack_map(count);
    for (std::uint32_t i = 0; i < count; ++i) {
      TakePair("map");
      Pack();
      Pack();
    }
  }
  void PackExtension() {
    TakePair("extension");
    const Node& number = nodes_.All[next_++];
    const auto type = static_cast<std::int8_t>(number.Value);
    const bool isInteger = number.Is == Kind::Signed || (number.Is == Kind::Unsigned && type >= 0);
    if (!isInteger || static_cast<std::uint64_t>(type) != number.Value) RefuseMark("extension");
    const std::string bytes = FromBase64(nodes_.TextOf(Take(Kind::Text, "extension")));
    packer_.pack_ext(bytes.size(), type);
    packer_.pack_ext_body(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  }
  void PackBytes(bool isText, std::string_view bytes) {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    isText ? packer_.pack_str(size) : packer_.pack_bin(size);
    isText ? packer_.pack_str_body(bytes.data(), size) : packer_.pack_bin_body(bytes.data(), size);
  }
  static double Number(std::string_view text) {
    if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
    if (text == "inf") return std::numeric_limits<double>::infinity();
    if (text == "-inf") return -std::numeric_limits<double>::infinity();
    RefuseMark("number");
  }

  const Nodes& nodes_;
  std::size_t next_ = 0;
  msgpack::sbuffer bytes_;
  msgpack::packer<msgpack::sbuffer> packer_{bytes_};
};

// ---- To JSON

bool IsUtf8(std::string_view text) {
  try {
    static_cast<void>(Json(text).dump());
    return true;
  } catch (const Json::type_error&) {
    return false;
  }
}

void Append(std::string& text, const msgpack::object& object);

void AppendMarked(std::string& text, std::string_view mark, std::string_view value) {
  text.append("{\"").append(mark).append("\":").append(value).append("}");
}

void AppendQuotedBase64(std::string& text, std::string_view bytes) {
  AppendBase64(text += '"', bytes);
  text += '"';
}

void AppendBytes(std::string& text, std::string_view mark, std::string_view bytes) {
  AppendQuotedBase64(text.append("{\"").append(mark).append("\":"), bytes);
  text += '}';
}

// Most texts are names, which are what they are between quotation marks.
bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c < '\x7F' && c != '"' && c != '\\'; });
}

void AppendQuoted(std::string& text, std::string_view bytes) {
  if (IsPlain(bytes)) {
    text.append("\"").append(bytes).append("\"");
  } else if (IsUtf8(bytes)) {
    text += Json(bytes).dump();
  } else {
    AppendBytes(text, "text", bytes);
  }
}

void AppendNumber(std::string& text, double number) {
  if (std::isfinite(number)) {
    text += Json(number).dump();
  } else {
    AppendMarked(text, "number", std::isnan(number) ? "\"nan\"" : number > 0 ? "\"inf\"" : "\"-inf\"");
  }
}

void AppendElements(std::string& text, std::span<const msgpack::object> elements) {
  const char* separator = "[";
  for (const msgpack::object& element : elements) Append(text.append(std::exchange(separator, ",")), element);
  text.append(elements.empty() ? "[]" : "]");
}

// Whether they can be the members of an object: with names, each its own, which does not look like one of those above.
bool AreMembers(std::span<const msgpack::object_kv> entries) {
  std::vector<std::string_view> names;
  for (const auto& [key, value] : entries) {
    if (key.type != msgpack::type::STR) return false;
    names.emplace_back(key.via.str.ptr, key.via.str.size);
    if (!IsUtf8(names.back())) return false;
  }
  if (names.size() == 1 && IsMark(names.front())) return false;
  std::ranges::sort(names);
  return std::ranges::adjacent_find(names) == names.end();
}

void AppendMap(std::string& text, std::span<const msgpack::object_kv> entries) {
  const bool areMembers = AreMembers(entries);
  text.append(areMembers ? "{" : "{\"map\":[");
  const char* separator = areMembers ? "" : "[";
  for (const auto& [key, value] : entries) {
    Append(text.append(std::exchange(separator, areMembers ? "," : "],[")), key);
    Append(text.append(areMembers ? ":" : ","), value);
  }
  text.append(areMembers ? "}" : "]]}");
}

void Append(std::string& text, const msgpack::object& object) {
  const auto& via = object.via;
  switch (object.type) {
    case msgpack::type::NIL:
      text += "null";
      return;
    case msgpack::type::BOOLEAN:
      text += via.boolean ? "true" : "false";
      return;
    case msgpack::type::POSITIVE_INTEGER:
      text += std::to_string(via.u64);
      return;
    case msgpack::type::NEGATIVE_INTEGER:
      text += std::to_string(via.i64);
      return;
    case msgpack::type::FLOAT32:
    case msgpack::type::FLOAT64:
      return AppendNumber(text, via.f64);
    case msgpack::type::STR:
      return AppendQuoted(text, {via.str.ptr, via.str.size});
    case msgpack::type::BIN:
      return AppendBytes(text, "base64", {via.bin.ptr, via.bin.size});
    case msgpack::type::EXT:
      text.append("{\"extension\":[").append(std::to_string(via.ext.type())).append(",");
      AppendQuotedBase64(text, {via.ext.data(), via.ext.size});
      text.append("]}");
      return;
    case msgpack::type::ARRAY:
      return AppendElements(text, {via.array.ptr, via.array.size});
    case msgpack::type::MAP:
      return AppendMap(text, {via.map.ptr, via.map.size});
  }
  throw msgpack::type_error();
}

}  // namespace

std::string Pack(std::string_view json) {
  Nodes nodes;
  Reader reader(nodes);
  if (!Json::sax_parse(json, &reader) || nodes.All.front().Is != Kind::Array) {
    throw std::runtime_error("The arguments are no JSON array.");
  }
  Packing packing(nodes);
  packing.Pack();
  return packing.Take();
}

std::string TextOf(const msgpack::object& object) {
  std::string text;
  Append(text, object);
  return text;
}

void AppendText(std::string& text, const msgpack::object& object) {
  Append(text, object);
}

void AppendString(std::string& text, std::string_view string) {
  AppendQuoted(text, string);
}

void AppendBinary(std::string& text, std::string_view bytes) {
  AppendBytes(text, "base64", bytes);
}

}  // namespace VELTRO::KELVO::ClientLib::JsonForm
