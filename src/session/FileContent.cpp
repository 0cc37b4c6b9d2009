#include "session/FileContent.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace VELTRO::KELVO::ClientLib::Recording {

namespace {

constexpr ContentPlace ContentPlaces[] = {
    {"FileRead", std::nullopt}, {"FileReadText", std::nullopt}, {"FileReadTextLine", std::nullopt},
    {"FileWrite", 1},           {"FileWriteText", 1},           {"FileWriteTextLine", 1},
};

}  // namespace

const ContentPlace* FindContent(std::string_view method, FrameWay way) {
  const auto* const found = std::ranges::find(ContentPlaces, method, &ContentPlace::Method);
  const bool isThere =
      found != std::end(ContentPlaces) && found->Argument.has_value() == (way == FrameWay::ToCard);
  return isThere ? found : nullptr;
}

std::uint64_t LeaveOut(msgpack::object& value, const ContentPlace& place) {
  msgpack::object* content = &value;
  if (place.Argument) {
    const bool isThere = value.type == msgpack::type::ARRAY && *place.Argument < value.via.array.size;
    if (!isThere) return 0;
    content = &value.via.array.ptr[*place.Argument];
  }
  std::uint64_t size = 0;
  if (content->type == msgpack::type::BIN) size = content->via.bin.size;
  if (content->type == msgpack::type::STR) size = content->via.str.size;
  if (size > 0) *content = msgpack::object();
  return size;
}

std::string PackedFiller(std::string_view method, std::uint64_t size) {
  msgpack::sbuffer bytes;
  if (method == "FileRead") {
    msgpack::pack(bytes, std::vector<char>(size));
  } else {
    msgpack::pack(bytes, std::string(size, ' '));
  }
  return {bytes.data(), bytes.size()};
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
