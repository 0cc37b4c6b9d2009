#include "session/LineMaker.h"

#include <algorithm>
#include <charconv>
#include <new>
#include <stdexcept>
#include <utility>

#include "rpc/Body.h"
#include "rpc/JsonForm.h"
#include "session/FileContent.h"

namespace VELTRO::KELVO::ClientLib::Recording {

namespace {

using namespace std::string_view_literals;  // whose length nobody has to count

// A level of MessagePack is up to three of JSON, of which the reader takes 256. Deeper bodies are kept as raw bytes.
constexpr std::uint32_t MostLevels = 64;
// Cards answer; what is beyond this is not waited for any more.
constexpr std::size_t MostUnanswered = 65536;

[[noreturn]] void RefuseFrame() {
  throw std::runtime_error("It is no frame of the protocol.");
}

template <class Number>
void AppendNumber(std::string& text, Number number) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  text.append(digits, end);
}

void AppendId(std::string& text, std::uint32_t id) {
  AppendNumber(text.append(",\"id\":"sv), id);
}

void AppendMethod(std::string& text, std::string_view method) {
  text.append(",\"method\":"sv);
  JsonForm::AppendString(text, method);
}

// Most values are short: nothing, numbers, names, and arrays of these. Their text is made without unpacking them. Says
// whether `bytes` began with such a one, and takes it from them; otherwise there may be a part of its text.
bool AppendSimple(std::string& text, std::span<const char>& bytes, int levels = 4) {
  if (bytes.empty()) return false;
  const auto first = static_cast<unsigned char>(bytes.front());
  const auto take = [&](std::size_t count) { bytes = bytes.subspan(count); };
  const auto number = [&](std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 1; i <= size; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
  };
  if (first < 0x80) {
    AppendNumber(text, int{first});
    take(1);
  } else if (first >= 0xE0) {
    AppendNumber(text, int{first} - 256);
    take(1);
  } else if (first == 0xC0 || first == 0xC2 || first == 0xC3) {
    text.append(first == 0xC0 ? "null"sv : first == 0xC2 ? "false"sv : "true"sv);
    take(1);
  } else if (first >= 0xCC && first <= 0xCF) {
    const std::size_t size = std::size_t{1} << (first - 0xCC);
    if (bytes.size() <= size) return false;
    AppendNumber(text, number(size));
    take(1 + size);
  } else if ((first & 0xE0U) == 0xA0) {
    const std::size_t size = first & 0x1FU;
    if (bytes.size() <= size) return false;
    JsonForm::AppendString(text, {bytes.data() + 1, size});
    take(1 + size);
  } else if ((first & 0xF0U) == 0x90 && levels > 0) {
    take(1);
    for (unsigned i = 0; i < (first & 0xFU); ++i) {
      text += i == 0 ? '[' : ',';
      if (!AppendSimple(text, bytes, levels - 1)) return false;
    }
    text.append(first == 0x90 ? "[]"sv : "]"sv);
  } else {
    return false;
  }
  return true;
}

// The name of a request's method, which it takes from the body.
std::string_view TakeMethod(std::span<const char>& body) {
  const auto first = static_cast<unsigned char>(body.empty() ? '\0' : body.front());
  const bool isShort = (first & 0xE0U) == 0xA0;
  if (!isShort && (first < 0xD9 || first > 0xDB)) RefuseFrame();
  const std::size_t shortSize = first & 0x1FU;
  std::span<const char> name;
  if (isShort && body.size() > shortSize) {
    name = body.subspan(1, shortSize);
  } else {
    name = Body::Bytes(body);
  }
  body = body.subspan(static_cast<std::size_t>(name.data() + name.size() - body.data()));
  return {name.data(), name.size()};
}

// The one object that is left of a body, as the value of `name`.
void AppendObject(std::string& text, std::string_view name, std::span<const char> bytes,
                  const ContentPlace* content) {
  if (content == nullptr && bytes.size() <= MostAsText) {
    const std::size_t before = text.size();
    text.append(",\""sv).append(name).append("\":"sv);
    std::span<const char> rest = bytes;
    if (AppendSimple(text, rest) && rest.empty()) return;
    text.resize(before);
  }
  std::size_t used = 0;
  if (bytes.size() > MostAsText && content == nullptr) {
    if (Body::Check(bytes, MostLevels, SIZE_MAX) != bytes.size()) RefuseFrame();
    text.append(",\"packed\":"sv);
    return JsonForm::AppendBinary(text, {bytes.data(), bytes.size()});
  }
  const msgpack::object_handle handle = Body::Unpack(bytes, used, MostLevels, SIZE_MAX);
  if (used != bytes.size()) RefuseFrame();
  msgpack::object object = handle.get();
  if (content != nullptr) {
    const std::uint64_t leftOut = LeaveOut(object, *content);
    if (leftOut > 0) text.append(",\"leftOut\":"sv).append(std::to_string(leftOut));
  }
  text.append(",\""sv).append(name).append("\":"sv);
  JsonForm::AppendText(text, object);
}

// The method of a call and a value of its.
void AppendValue(std::string& text, KnownValues& known, std::string_view name, std::string_view method,
                 std::span<const char> value, const ContentPlace* content) {
  if (content == nullptr && known.Append(text, name, method, value)) return;
  const std::size_t before = text.size();
  AppendMethod(text, method);
  AppendObject(text, name, value, content);
  if (content == nullptr) known.Keep(name, method, value, std::string_view(text).substr(before));
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

}  // namespace

void LineMaker::AppendHead(std::string& text, const LineHead& head) {
  char line[48] = "{\"time\":";
  // Numbers of microseconds are far from where a double would round them.
  const auto time = static_cast<std::uint64_t>(std::max<std::int64_t>(head.Time.count(), 0));
  char* const point = std::to_chars(line + 8, line + 40, time / 1000000).ptr;
  *point = '.';
  std::uint64_t rest = time % 1000000;
  for (int digit = 6; digit > 0; --digit, rest /= 10) point[digit] = static_cast<char>('0' + rest % 10);
  text.append(line, point + 7).append(HeadEndOf(head));
}

const std::string& LineMaker::HeadEndOf(const LineHead& head) {
  HeadEnd& end = headEnds_[static_cast<std::size_t>(head.Way)][static_cast<std::size_t>(head.Kind)];
  if (end.Connection == head.Connection && !end.Text.empty()) return end.Text;
  std::string text = ",\"connection\":" + std::to_string(head.Connection);
  if (head.Kind != LineKind::Opened && head.Kind != LineKind::Missing) {
    text.append(",\"way\":\""sv).append(WayWords[static_cast<std::size_t>(head.Way)]).append("\""sv);
  }
  text.append(",\"kind\":\""sv).append(KindWords[static_cast<std::size_t>(head.Kind)]).append("\""sv);
  end = {head.Connection, std::move(text)};
  return end.Text;
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
                            std::uint64_t missing) {
  AppendHead(text, head);
  if (head.Kind == LineKind::Raw && hasContent_) {
    JsonForm::AppendBinary(text.append(",\"raw\":"sv), bytes);
  } else if (head.Kind == LineKind::Raw) {
    text.append(",\"leftOut\":"sv).append(std::to_string(bytes.size()));
  }
  if (head.Kind == LineKind::Missing) text.append(",\"frames\":"sv).append(std::to_string(missing));
  text.append("}\n"sv);
}

void LineMaker::AppendMissingBytes(std::string& text, const LineHead& head, std::uint64_t bytes) {
  AppendHead(text, head);
  text.append(",\"way\":\""sv).append(WayWords[static_cast<std::size_t>(head.Way)]);
  text.append("\",\"bytes\":"sv).append(std::to_string(bytes)).append("}\n"sv);
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
  text.append("}\n"sv);
}

void LineMaker::AppendRequest(std::string& text, const LineHead& head, std::span<const char> body) {
  std::size_t position = 0;
  const std::uint32_t id = Body::TakeRequestId(body, position);
  body = body.subspan(position);
  const std::string_view method = TakeMethod(body);
  if (!BeginsArray(body)) RefuseFrame();
  AppendId(text, id);
  const ContentPlace* const content = hasContent_ ? nullptr : FindContent(method, FrameWay::ToCard);
  AppendValue(text, known_, ContentName(head.Kind), method, body, content);
  Ask(PlaceOf(head, id), method);
}

void LineMaker::Ask(Place place, std::string_view method) {
  Asked& slot = asked_[place % Slots];
  if (slot.IsOpen && slot.Where != place) {
    if (askedBefore_.size() >= MostUnanswered) askedBefore_.clear();
    askedBefore_[slot.Where] = slot.Method;
  }
  slot.Where = place;
  slot.IsOpen = true;
  slot.Method = method;
}

bool LineMaker::TakeAsked(Place place, std::string& method) {
  Asked& slot = asked_[place % Slots];
  if (slot.IsOpen && slot.Where == place) {
    slot.IsOpen = false;
    method = slot.Method;
    return true;
  }
  const auto before = askedBefore_.extract(place);
  if (!before.empty()) method = before.mapped();
  return !before.empty();
}

void LineMaker::AppendAnswer(std::string& text, const LineHead& head, std::span<const char> body) {
  std::size_t position = 0;
  const std::uint32_t id = Body::TakeRequestId(body, position);
  const bool isKnown = TakeAsked(PlaceOf(head, id), method_);
  AppendId(text, id);
  // An answer to a request from before the recording might be of any method.
  constexpr ContentPlace Any{{}, std::nullopt};
  const ContentPlace* content = nullptr;
  if (!hasContent_ && head.Kind != LineKind::Error) {
    content = isKnown ? FindContent(method_, FrameWay::FromCard) : &Any;
  }
  body = body.subspan(position);
  if (isKnown) {
    AppendValue(text, known_, ContentName(head.Kind), method_, body, content);
  } else {
    AppendObject(text, ContentName(head.Kind), body, content);
  }
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
