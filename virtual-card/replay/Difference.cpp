#include "replay/Difference.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "common/Characters.h"
#include "rpc/JsonForm.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

// Long values are told by their beginning.
constexpr std::size_t MostShown = 60;

std::string Shown(const msgpack::object* value) {
  if (value == nullptr) return "nothing";
  std::string text = ClientLib::JsonForm::TextOf(*value);
  if (text.size() <= MostShown) return text;
  text.resize(ClientLib::WholeCharacters(text, MostShown));
  return text + "...";
}

std::string NameOf(const msgpack::object& key) {
  if (key.type != msgpack::type::STR) return "[" + ClientLib::JsonForm::TextOf(key) + "]";
  return "." + std::string(key.via.str.ptr, key.via.str.size);
}

const msgpack::object* ValueOf(const msgpack::object& map, const msgpack::object& key) {
  const std::span<const msgpack::object_kv> entries(map.via.map.ptr, map.via.map.size);
  const auto found = std::ranges::find_if(entries, [&](const auto& entry) { return entry.key == key; });
  return found == entries.end() ? nullptr : &found->val;
}

class Comparison {
 public:
  Difference Found;

  void Compare(const msgpack::object* left, const msgpack::object* right) {
    const bool areBoth = left != nullptr && right != nullptr && left->type == right->type;
    if (areBoth && left->type == msgpack::type::ARRAY) {
      const std::size_t most = std::max(left->via.array.size, right->via.array.size);
      for (std::size_t i = 0; i < most; ++i) {
        Inside("[" + std::to_string(i) + "]", Element(*left, i), Element(*right, i));
      }
    } else if (areBoth && left->type == msgpack::type::MAP) {
      CompareMaps(*left, *right);
    } else if (!areBoth || Shown(left) != Shown(right) || !(*left == *right || IsNan(*left))) {
      if (Found.Count++ == 0) Found = {1, path_, Shown(left), Shown(right)};
    }
  }

 private:
  static const msgpack::object* Element(const msgpack::object& array, std::size_t index) {
    return index < array.via.array.size ? &array.via.array.ptr[index] : nullptr;
  }
  static bool IsNan(const msgpack::object& value) {
    return value.type == msgpack::type::FLOAT64 && value.via.f64 != value.via.f64;
  }
  void CompareMaps(const msgpack::object& left, const msgpack::object& right) {
    for (const auto& [key, value] : std::span(left.via.map.ptr, left.via.map.size)) {
      Inside(NameOf(key), &value, ValueOf(right, key));
    }
    for (const auto& [key, value] : std::span(right.via.map.ptr, right.via.map.size)) {
      if (ValueOf(left, key) == nullptr) Inside(NameOf(key), nullptr, &value);
    }
  }
  void Inside(const std::string& step, const msgpack::object* left, const msgpack::object* right) {
    const std::size_t before = path_.size();
    path_ += step;
    Compare(left, right);
    path_.resize(before);
  }

  std::string path_;
};

}  // namespace

Difference FindDifference(const msgpack::object& left, const msgpack::object& right) {
  Comparison comparison;
  comparison.Compare(&left, &right);
  return std::move(comparison.Found);
}

}  // namespace VELTRO::KELVO::VirtualCard
