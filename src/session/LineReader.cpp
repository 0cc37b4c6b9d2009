#include "session/LineReader.h"

#include <algorithm>
#include <stdexcept>

#include "rpc/Body.h"
#include "rpc/JsonForm.h"

namespace VELTRO::KELVO::ClientLib::Recording {

namespace {

using namespace std::string_view_literals;  // whose length nobody has to count

template <class Value, std::size_t Count>
Value FromWord(const std::string_view (&words)[Count], const std::string& word, std::string_view name) {
  const auto* const found = std::ranges::find(words, word);
  if (found == std::end(words)) {
    throw std::runtime_error("'" + std::string(name) + "' is '" + word +
                             "', which this version does not know.");
  }
  return static_cast<Value>(found - std::begin(words));
}

std::chrono::microseconds TimeOf(const Object& members) {
  constexpr double MostSeconds =
      1e12;  // what a double still tells to the millisecond, and more than anybody records
  const auto seconds = members.Get<double>("time");
  if (!(seconds >= 0 && seconds <= MostSeconds)) RefuseMember("time");
  return std::chrono::round<std::chrono::microseconds>(std::chrono::duration<double>(seconds));
}

std::string BytesOf(const Object& members, std::string_view name) {
  const msgpack::object* const value = members.Find(name);
  if (value == nullptr || value->type != msgpack::type::BIN) RefuseMember(name);
  return {value->via.bin.ptr, value->via.bin.size};
}

// Unpacks the one object in `bytes`, which it refers to.
msgpack::object_handle UnpackWhole(const std::string& bytes) {
  std::size_t used = 0;
  msgpack::object_handle object = Body::Unpack(bytes, used, Body::UsualDepth, SIZE_MAX);
  if (used != bytes.size()) throw std::runtime_error("'packed' holds more than one value.");
  return object;
}

void TakeContent(Line& line, const Object& members) {
  const std::string_view name = ContentName(line.Head.Kind);
  if (members.Find("packed") != nullptr) {
    line.PackedBytes = std::make_unique<const std::string>(BytesOf(members, "packed"));
    line.PackedObject = UnpackWhole(*line.PackedBytes);
    line.Content = line.PackedObject.get();
  } else if (const msgpack::object* const value = members.Find(name)) {
    line.Content = *value;
  } else {
    RefuseMember(name);
  }
  if (line.Head.Kind == LineKind::Request && line.Content.type != msgpack::type::ARRAY) RefuseMember(name);
}

}  // namespace

void RefuseMember(std::string_view name) {
  throw std::runtime_error("'" + std::string(name) + "' is missing or not of its kind.");
}

const msgpack::object* Object::Find(std::string_view name) const {
  for (const auto& [key, value] : All) {
    const bool isText = key.type == msgpack::type::STR;
    if (isText && std::string_view(key.via.str.ptr, key.via.str.size) == name) return &value;
  }
  return nullptr;
}

Object ReadObject(std::string_view text) {
  std::string array;
  array.reserve(text.size() + 2);
  array.append("["sv).append(text).append("]"sv);
  Object object;
  try {
    object.Bytes = std::make_unique<const std::string>(JsonForm::Pack(array));
  } catch (const std::runtime_error& error) {
    // What is wrong with a value is worth telling, what the parser would have liked is not.
    const std::string_view what = error.what();
    if (what.starts_with("An object") || what.starts_with("A text")) throw;
    throw std::runtime_error("It is no JSON object.");
  }
  object.Handle = UnpackWhole(*object.Bytes);
  const auto& elements = object.Handle->via.array;
  if (elements.size != 1 || elements.ptr[0].type != msgpack::type::MAP) {
    throw std::runtime_error("It is no JSON object.");
  }
  object.All = {elements.ptr[0].via.map.ptr, elements.ptr[0].via.map.size};
  return object;
}

Line ReadLine(std::string_view text) {
  Line line;
  line.Whole = ReadObject(text);
  const Object& members = line.Whole;
  line.Head.Time = TimeOf(members);
  line.Head.Connection = members.Get<std::uint32_t>("connection");
  line.Head.Kind = FromWord<LineKind>(KindWords, members.Get<std::string>("kind"), "kind");
  const LineKind kind = line.Head.Kind;
  const bool hasWay = kind == LineKind::Missing ? members.Find("way") != nullptr : kind != LineKind::Opened;
  if (hasWay) {
    line.Head.Way = FromWord<FrameWay>(WayWords, members.Get<std::string>("way"), "way");
  }
  line.LeftOut = members.Get<std::uint64_t>("leftOut", 0);
  if (line.LeftOut > UINT32_MAX) RefuseMember("leftOut");
  switch (line.Head.Kind) {
    case LineKind::Request:
    case LineKind::Response:
    case LineKind::Error:
      line.Id = members.Get<std::uint32_t>("id");
      line.Method = members.Get<std::string>("method", "");
      if (line.Head.Kind == LineKind::Request && members.Find("method") == nullptr) RefuseMember("method");
      break;
    case LineKind::Raw:
      if (members.Find("leftOut") == nullptr) line.Raw = BytesOf(members, "raw");
      return line;
    case LineKind::Missing:
      line.MissingBytes = members.Get<std::uint64_t>("bytes", 0);
      if (line.MissingBytes == 0) line.Missing = members.Get<std::uint64_t>("frames");
      return line;
    case LineKind::Opened:
    case LineKind::Ended:
      return line;
    default:
      break;
  }
  TakeContent(line, members);
  return line;
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
