#include "replay/ReplayedConnection.h"

#include <algorithm>
#include <optional>

#include "replay/Difference.h"
#include "rpc/Body.h"
#include "rpc/JsonForm.h"
#include "session/FileContent.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::PacketType;
namespace Body = ClientLib::Body;
namespace JsonForm = ClientLib::JsonForm;

namespace {

// Calls that change nothing, which clients make until they like the answer.
bool IsPolled(std::string_view method) {
  if (method == "ReadSerialPort") return false;  // what is read is gone
  for (const std::string_view begin : {"Get", "Is", "Read", "WaitFor"}) {
    if (method.starts_with(begin) && method != "GetFileHandle") return true;
  }
  return method.ends_with("Exists") || method == "FileGetSize";
}

std::string Ordinal(std::size_t number) {
  const std::size_t last = number % 100 / 10 == 1 ? 0 : number % 10;
  return std::to_string(number) + (last == 1 ? "st" : last == 2 ? "nd" : last == 3 ? "rd" : "th");
}

std::string Times(std::size_t count) {
  return count == 1 ? "once" : count == 2 ? "twice" : std::to_string(count) + " times";
}

// Arguments from their form; nothing for what has become too deep for it.
std::optional<msgpack::object_handle> Unpacked(const std::string& form, std::string& memory) {
  try {
    memory = form.starts_with('[') ? JsonForm::Pack(form) : form;
    std::size_t used = 0;
    return Body::Unpack(memory, used, Body::UsualDepth, SIZE_MAX);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::string Packed(const std::string& text) {
  msgpack::sbuffer bytes;
  msgpack::pack(bytes, text);
  return {bytes.data(), bytes.size()};
}

}  // namespace

ReplayedAnswer ReplayedConnection::Answer(std::string_view method, std::span<const char> packedArguments) {
  const std::string arguments = ArgumentsForm(method, packedArguments, recording_.GetHead().HasContent);
  const auto found = connection_.Equal.find(EqualityOf(method, arguments));
  ReplayedAnswer answer;
  if (found == connection_.Equal.end()) {
    if (!AnswerFromHead(method, answer)) answer.Refusal = NoSuchCall(method, arguments);
    return answer;
  }
  const auto& equal = found->second;
  const std::size_t before = asked_[&equal]++;
  if (before < equal.size()) {
    next_ = equal[before] + 1;
    return AnswerWith(equal[before], false);
  }
  if (!isStrict_ && IsPolled(method)) return AnswerWith(equal.back(), true);
  answer.Refusal = TooOften(method, equal.size(), before + 1);
  return answer;
}

ReplayedAnswer ReplayedConnection::AnswerWith(std::size_t place, bool isRepeated) const {
  const RecordedCall& call = connection_.Calls[place];
  ReplayedAnswer answer;
  answer.Call = &call;
  answer.IsRepeated = isRepeated;
  if (call.IsAnswered) {
    answer.Body =
        call.LeftOut > 0 ? ClientLib::Recording::PackedFiller(call.Method, call.LeftOut) : call.Answer;
    answer.Type = call.AnswerType;
    return answer;
  }
  const auto endsOrSends = [&](std::size_t i) {
    return std::ranges::any_of(connection_.Calls[i].Events, [](const RecordedEvent& event) {
      const auto type = event.Bytes.size() > 1 ? static_cast<unsigned char>(event.Bytes[1]) : 0U;
      return event.IsEnd || !ClientLib::IsNotification(static_cast<PacketType>(type));
    });
  };
  for (std::size_t i = place; i < connection_.Calls.size() && !answer.IsSilent; ++i)
    answer.IsSilent = endsOrSends(i);
  if (!answer.IsSilent) answer.Refusal = "The recording has no answer to " + PlaceOf(call) + ".";
  return answer;
}

// A recording that begins behind the calls of the connect knows what they are answered with.
bool ReplayedConnection::AnswerFromHead(std::string_view method, ReplayedAnswer& answer) const {
  const auto& head = recording_.GetHead();
  if (head.SerialNumber.empty() || connection_.OfMethod.contains("SetClientLibVersion")) return false;
  if (method == "SetClientLibVersion") {
    answer.Body = "\xC0";
  } else if (method == "GetFirmwareProductVersion") {
    answer.Body = Packed(head.Firmware);
  } else if (method == "GetCardSerialNumber") {
    answer.Body = Packed(head.SerialNumber);
  } else {
    return false;
  }
  return true;
}

std::string ReplayedConnection::PlaceOf(const RecordedCall& call) const {
  return call.Method + " of " + recording_.GetPath() + ":" + std::to_string(call.Line);
}

std::string ReplayedConnection::TooOften(std::string_view method, std::size_t recorded,
                                         std::size_t asked) const {
  std::string text(method);
  return text + " with these arguments is recorded " + Times(recorded) + " and asked for the " +
         Ordinal(asked) + " time.";
}

std::string ReplayedConnection::NoSuchCall(std::string_view method, const std::string& arguments) const {
  std::string text = "The recording has no such call: " + std::string(method);
  const auto found = connection_.OfMethod.find(std::string(method));
  if (found == connection_.OfMethod.end()) {
    text += " is not called on connection " + std::to_string(connection_.Number);
    text += Elsewhere(EqualityOf(method, arguments)) + ".";
    const auto& calls = connection_.Calls;
    if (!calls.empty()) text += " Next there is " + PlaceOf(calls[std::min(next_, calls.size() - 1)]) + ".";
    return text;
  }
  std::string ownMemory, memory;
  const auto own = Unpacked(arguments, ownMemory);
  const RecordedCall* nearest = &connection_.Calls[found->second.front()];
  Difference least;
  for (const std::size_t place : found->second) {
    const auto other = Unpacked(connection_.Calls[place].Arguments, memory);
    if (!own || !other) continue;
    Difference difference = FindDifference(own->get(), other->get());
    if (least.Count > 0 && difference.Count >= least.Count) continue;
    nearest = &connection_.Calls[place];
    least = std::move(difference);
  }
  text += Elsewhere(EqualityOf(method, arguments));
  if (least.Count == 0) return text + ". The nearest is " + PlaceOf(*nearest) + ".";
  return text + ", arguments" + least.Path + " is " + least.Left + " and not " + least.Right +
         " as in the nearest, " + PlaceOf(*nearest) + ".";
}

std::string ReplayedConnection::Elsewhere(const std::string& equality) const {
  for (const RecordedConnection& other : recording_.GetConnections()) {
    const auto found = other.Equal.find(equality);
    if (&other == &connection_ || found == other.Equal.end()) continue;
    return " (it is on connection " + std::to_string(other.Number) + ", line " +
           std::to_string(other.Calls[found->second.front()].Line) + ")";
  }
  return {};
}

}  // namespace VELTRO::KELVO::VirtualCard
