#include "rpc/JsonForm.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "rpc/OutputPacket.h"
#include "rpc/PackDouble.h"

namespace VELTRO::KELVO::ClientLib::JsonForm {

namespace {

using Json = nlohmann::ordered_json;

constexpr int MostDepth = 256;
constexpr std::string_view Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view Marks[] = {"base64", "number", "map", "text", "extension"};

std::string ToBase64(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? Digits[group >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

std::string FromBase64(std::string_view text) {
  const auto refuse = [] { throw std::runtime_error("A text in base64 is none."); };
  if (text.size() % 4 != 0) refuse();
  while (text.ends_with('=')) text.remove_suffix(1);
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    const std::size_t digit = Digits.find(c);
    if (digit == std::string_view::npos) refuse();
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
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

bool IsUtf8(std::string_view text) {
  try {
    static_cast<void>(Json(text).dump());
    return true;
  } catch (const Json::type_error&) {
    return false;
  }
}

Json FromText(std::string_view text) {
  return IsUtf8(text) ? Json(text) : Json{{"text", ToBase64(text)}};
}

Json FromNumber(double number) {
  if (std::isfinite(number)) return number;
  return {{"number", std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf"}};
}

Json FromMap(std::span<const msgpack::object_kv> entries) {
  Json object = Json::object();
  bool isObject = true;
  for (const auto& [key, value] : entries) {
    const std::string_view name = key.type == msgpack::type::STR
                                      ? std::string_view(key.via.str.ptr, key.via.str.size)
                                      : std::string_view();
    isObject = isObject && key.type == msgpack::type::STR && IsUtf8(name) && !object.contains(name);
    if (isObject) object[std::string(name)] = From(value);
  }
  if (isObject && !(entries.size() == 1 && IsMark(object.begin().key()))) return object;
  Json pairs = Json::array();
  for (const auto& [key, value] : entries) pairs.push_back(Json::array({From(key), From(value)}));
  return {{"map", std::move(pairs)}};
}

[[noreturn]] void RefuseMark(const std::string& key) {
  throw std::runtime_error("An object with the key '" + key + "' is not of its kind.");
}

const std::string& TextOf(const Json& json, const std::string& key) {
  if (!json.is_string()) RefuseMark(key);
  return json.get_ref<const std::string&>();
}

void PackBytes(msgpack::packer<OutputPacket>& packer, bool isText, const std::string& bytes) {
  const auto size = static_cast<std::uint32_t>(bytes.size());
  isText ? packer.pack_str(size) : packer.pack_bin(size);
  isText ? packer.pack_str_body(bytes.data(), size) : packer.pack_bin_body(bytes.data(), size);
}

class Packing {
 public:
  explicit Packing(OutputPacket& packet) : packer_(packet) {}

  void Pack(const Json& json, int depth) {
    if (depth > MostDepth) throw std::runtime_error("The arguments are nested too deeply.");
    if (json.is_null()) {
      packer_.pack_nil();
    } else if (json.is_boolean()) {
      packer_.pack(json.get<bool>());
    } else if (json.is_number_unsigned()) {
      packer_.pack(json.get<std::uint64_t>());
    } else if (json.is_number_integer()) {
      packer_.pack(json.get<std::int64_t>());
    } else if (json.is_number()) {
      PackDouble(packer_, json.get<double>());
    } else if (json.is_string()) {
      PackBytes(packer_, true, json.get_ref<const std::string&>());
    } else if (json.is_array()) {
      packer_.pack_array(static_cast<std::uint32_t>(json.size()));
      for (const Json& part : json) Pack(part, depth + 1);
    } else if (json.size() == 1 && IsMark(json.begin().key())) {
      PackMarked(json.begin().key(), json.front(), depth);
    } else {
      packer_.pack_map(static_cast<std::uint32_t>(json.size()));
      for (const auto& [key, value] : json.items()) {
        PackBytes(packer_, true, key);
        Pack(value, depth + 1);
      }
    }
  }

 private:
  void PackMarked(const std::string& key, const Json& value, int depth) {
    if (key == "map") return PackPairs(value, depth);
    if (key == "extension") return PackExtension(value);
    const std::string& text = TextOf(value, key);
    if (key == "number") return PackDouble(packer_, Number(text));
    PackBytes(packer_, key == "text", FromBase64(text));
  }

  void PackPairs(const Json& pairs, int depth) {
    if (!pairs.is_array()) RefuseMark("map");
    packer_.pack_map(static_cast<std::uint32_t>(pairs.size()));
    for (const Json& pair : pairs) {
      if (!pair.is_array() || pair.size() != 2) RefuseMark("map");
      Pack(pair[0], depth + 1);
      Pack(pair[1], depth + 1);
    }
  }

  void PackExtension(const Json& value) {
    if (!value.is_array() || value.size() != 2 || !value[0].is_number_integer()) RefuseMark("extension");
    const auto type = value[0].get<std::int64_t>();
    if (type < -128 || type > 127) RefuseMark("extension");
    const std::string bytes = FromBase64(TextOf(value[1], "extension"));
    packer_.pack_ext(bytes.size(), static_cast<std::int8_t>(type));
    packer_.pack_ext_body(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  }

  static double Number(const std::string& text) {
    if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
    if (text == "inf") return std::numeric_limits<double>::infinity();
    if (text == "-inf") return -std::numeric_limits<double>::infinity();
    RefuseMark("number");
  }

  msgpack::packer<OutputPacket> packer_;
};

}  // namespace

Json From(const msgpack::object& object) {
  switch (object.type) {
    case msgpack::type::NIL:
      return nullptr;
    case msgpack::type::BOOLEAN:
      return object.via.boolean;
    case msgpack::type::POSITIVE_INTEGER:
      return object.via.u64;
    case msgpack::type::NEGATIVE_INTEGER:
      return object.via.i64;
    case msgpack::type::FLOAT32:
    case msgpack::type::FLOAT64:
      return FromNumber(object.via.f64);
    case msgpack::type::STR:
      return FromText({object.via.str.ptr, object.via.str.size});
    case msgpack::type::BIN:
      return {{"base64", ToBase64({object.via.bin.ptr, object.via.bin.size})}};
    case msgpack::type::EXT:
      return {{"extension",
               Json::array({object.via.ext.type(), ToBase64({object.via.ext.data(), object.via.ext.size})})}};
    case msgpack::type::ARRAY: {
      Json array = Json::array();
      for (const msgpack::object& element : std::span(object.via.array.ptr, object.via.array.size)) {
        array.push_back(From(element));
      }
      return array;
    }
    case msgpack::type::MAP:
      return FromMap({object.via.map.ptr, object.via.map.size});
  }
  throw msgpack::type_error();
}

void Pack(const Json& json, OutputPacket& packet) {
  Packing(packet).Pack(json, 0);
}

}  // namespace VELTRO::KELVO::ClientLib::JsonForm
