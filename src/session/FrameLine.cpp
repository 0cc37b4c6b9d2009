#include "session/FrameLine.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "rpc/Body.h"
#include "rpc/JsonForm.h"

namespace VELTRO::KELVO::ClientLib::Recording {

namespace {

// A level of MessagePack is up to three of JSON, of which the reader takes 256. Deeper bodies are kept as raw bytes.
constexpr std::uint32_t MostLevels = 64;
// Cards answer; what is beyond this is not waited for any more.
constexpr std::size_t MostUnanswered = 65536;

// Calls that carry the content of files, and which argument does; none: the result does.
struct ContentPlace {
  std::string_view Method;
  std::optional<std::size_t> Argument;
};
constexpr ContentPlace ContentPlaces[] = {
    {"FileRead", std::nullopt}, {"FileReadText", std::nullopt}, {"FileReadTextLine", std::nullopt},
    {"FileWrite", 1},           {"FileWriteText", 1},           {"FileWriteTextLine", 1},
};

const ContentPlace* FindContent(std::string_view method) {
  const auto* const found = std::ranges::find(ContentPlaces, method, &ContentPlace::Method);
  return found == std::end(ContentPlaces) ? nullptr : found;
}

// Takes bytes or a text out of a value; returns how many bytes they were.
std::uint64_t LeaveOut(msgpack::object& value) {
  std::uint64_t size = 0;
  if (value.type == msgpack::type::BIN) size = value.via.bin.size;
  if (value.type == msgpack::type::STR) size = value.via.str.size;
  if (size > 0) value = msgpack::object();
  return size;
}

std::uint64_t LeaveOutArgument(msgpack::object& arguments, std::size_t argument) {
  const bool isThere = arguments.type == msgpack::type::ARRAY && argument < arguments.via.array.size;
  return isThere ? LeaveOut(arguments.via.array.ptr[argument]) : 0;
}

[[noreturn]] void RefuseFrame() {
  throw std::runtime_error("It is no frame of the protocol.");
}

void AppendHead(std::string& text, const LineHead& head) {
  // Numbers of microseconds are far from where a double would round them.
  char begin[80];
  const auto time = std::max<std::int64_t>(head.Time.count(), 0);
  text.append(begin, static_cast<std::size_t>(
                         std::snprintf(begin, sizeof begin, "{\"time\":%lld.%06lld,\"connection\":%u",
                                       static_cast<long long>(time / 1000000),
                                       static_cast<long long>(time % 1000000), head.Connection)));
  if (head.Kind != LineKind::Opened && head.Kind != LineKind::Missing) {
    text.append(",\"way\":\"").append(WayWords[static_cast<std::size_t>(head.Way)]).append("\"");
  }
  text.append(",\"kind\":\"").append(KindWords[static_cast<std::size_t>(head.Kind)]).append("\"");
}

void AppendId(std::string& text, std::uint32_t id) {
  text.append(",\"id\":").append(std::to_string(id));
}

void AppendMethod(std::string& text, std::string_view method) {
  text.append(",\"method\":");
  JsonForm::AppendString(text, method);
}

// The one object that is left of a body, as the value of `name`.
void AppendObject(std::string& text, std::string_view name, std::span<const char> bytes,
                  const ContentPlace* content) {
  std::size_t used = 0;
  if (bytes.size() > MostAsText && content == nullptr) {
    if (Body::Check(bytes, MostLevels, SIZE_MAX) != bytes.size()) RefuseFrame();
    text.append(",\"packed\":");
    return JsonForm::AppendBinary(text, {bytes.data(), bytes.size()});
  }
  const msgpack::object_handle handle = Body::Unpack(bytes, used, MostLevels, SIZE_MAX);
  if (used != bytes.size()) RefuseFrame();
  msgpack::object object = handle.get();
  if (content != nullptr) {
    const std::uint64_t leftOut =
        content->Argument ? LeaveOutArgument(object, *content->Argument) : LeaveOut(object);
    if (leftOut > 0) text.append(",\"leftOut\":").append(std::to_string(leftOut));
  }
  text.append(",\"").append(name).append("\":");
  JsonForm::AppendText(text, object);
}

bool BeginsArray(std::span<const char> bytes) {
  if (bytes.empty()) return false;
  const auto first = static_cast<unsigned char>(bytes.front());
  return (first & 0xF0U) == 0x90 || first == 0xDC || first == 0xDD;
}

std::span<const char> BodyOf(std::span<const unsigned char> frame) {
  const auto body = frame.subspan(Packet::FullHeaderLen);
  return {reinterpret_cast<const char*>(body.data()), body.size()};
}

LineKind KindOf(std::span<const unsigned char> frame) {
  if (frame.size() < Packet::FullHeaderLen || frame[0] != Packet::PacketStart ||
      Packet::BodyLength(frame.data()) != frame.size() - Packet::FullHeaderLen) {
    return LineKind::Raw;
  }
  switch (static_cast<PacketType>(frame[1])) {
    case PacketType::Request:
      return LineKind::Request;
    case PacketType::Response:
      return LineKind::Response;
    case PacketType::ErrorResponse:
      return LineKind::Error;
    case PacketType::Notification:
      return LineKind::Notification;
    case PacketType::ErrorNotification:
      return LineKind::ErrorNotification;
  }
  return LineKind::Raw;
}

std::uint64_t PlaceOf(const LineHead& head, std::uint32_t id) {
  return std::uint64_t{head.Connection} << 32 | id;
}

// ---- Reading

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

// What a kind's value is called; nothing for a kind that has none.
std::string_view ContentName(LineKind kind) {
  switch (kind) {
    case LineKind::Request:
      return "arguments";
    case LineKind::Response:
      return "result";
    case LineKind::Notification:
      return "values";
    case LineKind::Error:
    case LineKind::ErrorNotification:
      return "error";
    default:
      return {};
  }
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

bool CarriesContent(std::string_view method) {
  const ContentPlace* const content = FindContent(method);
  return content != nullptr && content->Argument;
}

void LeaveOutContent(std::string_view method, msgpack::object& arguments) {
  if (CarriesContent(method)) LeaveOutArgument(arguments, *FindContent(method)->Argument);
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

void LineMaker::AppendFrame(std::string& text, const LineHead& head, std::span<const unsigned char> frame) {
  const std::size_t before = text.size();
  LineHead own = head;
  own.Kind = KindOf(frame);
  if (own.Kind != LineKind::Raw) {
    try {
      return AppendParsed(text, own, frame);
    } catch (const std::bad_alloc&) {
      text.resize(before);
      throw;
    } catch (const std::exception&) {
      text.resize(before);
      own.Kind = LineKind::Raw;
    }
  }
  AppendOther(text, own, {reinterpret_cast<const char*>(frame.data()), frame.size()});
}

void LineMaker::AppendOther(std::string& text, const LineHead& head, std::string_view bytes,
                            std::uint64_t missing) const {
  AppendHead(text, head);
  if (head.Kind == LineKind::Raw && hasContent_) {
    JsonForm::AppendBinary(text.append(",\"raw\":"), bytes);
  } else if (head.Kind == LineKind::Raw) {
    text.append(",\"leftOut\":").append(std::to_string(bytes.size()));
  }
  if (head.Kind == LineKind::Missing) text.append(",\"frames\":").append(std::to_string(missing));
  text.append("}\n");
}

void LineMaker::AppendMissingBytes(std::string& text, const LineHead& head, std::uint64_t bytes) {
  AppendHead(text, head);
  text.append(",\"way\":\"").append(WayWords[static_cast<std::size_t>(head.Way)]);
  text.append("\",\"bytes\":").append(std::to_string(bytes)).append("}\n");
}

void LineMaker::AppendParsed(std::string& text, const LineHead& head, std::span<const unsigned char> frame) {
  AppendHead(text, head);
  switch (head.Kind) {
    case LineKind::Request:
      AppendRequest(text, head, BodyOf(frame));
      break;
    case LineKind::Response:
    case LineKind::Error:
      AppendAnswer(text, head, BodyOf(frame));
      break;
    default:
      AppendObject(text, ContentName(head.Kind), BodyOf(frame), nullptr);
      break;
  }
  text.append("}\n");
}

void LineMaker::AppendRequest(std::string& text, const LineHead& head, std::span<const char> body) {
  std::size_t position = 0;
  const std::uint32_t id = Body::TakeRequestId(body, position);
  body = body.subspan(position);
  const std::size_t nameSize = Body::Check(body, 1);
  std::size_t used = 0;
  const msgpack::object_handle name = Body::Unpack(body.first(nameSize), used, MostLevels);
  body = body.subspan(nameSize);
  if (name->type != msgpack::type::STR || !BeginsArray(body)) RefuseFrame();
  const std::string_view method(name->via.str.ptr, name->via.str.size);
  AppendId(text, id);
  AppendMethod(text, method);
  const ContentPlace* content = hasContent_ ? nullptr : FindContent(method);
  if (content != nullptr && !content->Argument) content = nullptr;
  AppendObject(text, "arguments", body, content);
  if (unanswered_.size() >= MostUnanswered) unanswered_.clear();
  unanswered_[PlaceOf(head, id)] = method;
}

void LineMaker::AppendAnswer(std::string& text, const LineHead& head, std::span<const char> body) {
  std::size_t position = 0;
  const std::uint32_t id = Body::TakeRequestId(body, position);
  const auto request = unanswered_.extract(PlaceOf(head, id));
  AppendId(text, id);
  if (!request.empty()) AppendMethod(text, request.mapped());
  // An answer to a request from before the recording might be of any method.
  constexpr ContentPlace Any{{}, std::nullopt};
  const ContentPlace* content = request.empty() ? &Any : FindContent(request.mapped());
  if (hasContent_ || head.Kind == LineKind::Error || (content != nullptr && content->Argument))
    content = nullptr;
  AppendObject(text, ContentName(head.Kind), body.subspan(position), content);
}

Object ReadObject(std::string_view text) {
  std::string array;
  array.reserve(text.size() + 2);
  array.append("[").append(text).append("]");
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
      if (line.LeftOut == 0) line.Raw = BytesOf(members, "raw");
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
