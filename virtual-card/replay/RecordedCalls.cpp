#include "replay/RecordedCalls.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "rpc/Body.h"
#include "rpc/JsonForm.h"
#include "session/FileContent.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::FrameWay;
using ClientLib::Packet;
using ClientLib::PacketType;
using ClientLib::Recording::Line;
using ClientLib::Recording::LineKind;
namespace Body = ClientLib::Body;
namespace JsonForm = ClientLib::JsonForm;

namespace {

std::string PackedForm(const Line& line) {
  if (line.PackedBytes) return *line.PackedBytes;
  // Through the text, so that every number is packed as what it is in the recording.
  std::string packed = JsonForm::Pack("[" + JsonForm::TextOf(line.Content) + "]");
  packed.erase(0, 1);  // the head of an array of one
  return packed;
}

}  // namespace

std::string FrameOf(PacketType type, std::string_view body) {
  std::string frame = {static_cast<char>(Packet::PacketStart), static_cast<char>(type)};
  for (int shift = 0; shift < 32; shift += 8) frame += static_cast<char>(body.size() >> shift & 0xFF);
  return frame.append(body);
}

std::string ArgumentsForm(std::string_view method, std::span<const char> packed, bool hasContent) {
  using namespace ClientLib::Recording;
  const ContentPlace* const leftOut = hasContent ? nullptr : FindContent(method, FrameWay::ToCard);
  if (packed.size() > MostAsText && leftOut == nullptr) return {packed.begin(), packed.end()};
  std::size_t used = 0;
  const msgpack::object_handle handle = Body::Unpack(packed, used, Body::UsualDepth, SIZE_MAX);
  msgpack::object arguments = handle.get();
  if (leftOut != nullptr) LeaveOut(arguments, *leftOut);
  return JsonForm::TextOf(arguments);
}

std::string EqualityOf(std::string_view method, std::string_view argumentsForm) {
  std::string equality(method);
  // Who names another version of the library makes the same call.
  if (method != "SetClientLibVersion") equality.append("\n").append(argumentsForm);
  return equality;
}

// What is known of the connections while the recording is read.
struct RecordedCalls::Reading {
  struct Progress {
    std::size_t Place = 0;               // among all connections
    std::chrono::microseconds Latest{};  // when the latest call was made, or the connection began
    std::unordered_map<std::uint32_t, std::pair<std::size_t, std::chrono::microseconds>> Unanswered;
    bool HasLeft = false;  // the application
  };
  std::unordered_map<std::uint32_t, Progress> Connections;
  std::uint64_t Missing = 0;
  std::uint64_t LeftOutFrames = 0;
};

RecordedCalls::RecordedCalls(const std::string& path) : path_(path) {
  ClientLib::Recording::SessionReader reader(path);
  head_ = reader.GetHead();
  Reading reading;
  try {
    while (const auto line = reader.Next()) Take(reading, *line, reader.GetLineNumber());
  } catch (const ClientLib::Recording::CutShort& cut) {
    remarks_.emplace_back(cut.what());
  }
  if (reading.Missing > 0) {
    remarks_.push_back(path_ + ": " + std::to_string(reading.Missing) +
                       " frames or bytes are missing in the recording.");
  }
  if (reading.LeftOutFrames > 0) {
    remarks_.push_back(path_ + ": " + std::to_string(reading.LeftOutFrames) +
                       " runs of bytes that were no frames are left out of the recording.");
  }
  Index();
}

void RecordedCalls::Take(Reading& reading, const Line& line, std::size_t number) {
  if (line.Head.Kind == LineKind::Missing) {
    reading.Missing += line.Missing + line.MissingBytes;
    return;
  }
  const auto [entry, isNew] = reading.Connections.try_emplace(line.Head.Connection);
  Reading::Progress& progress = entry->second;
  if (isNew) {
    progress.Place = connections_.size();
    progress.Latest = line.Head.Time;
    connections_.emplace_back().Number = line.Head.Connection;
  }
  const bool isFromCard = line.Head.Way == FrameWay::FromCard;
  switch (line.Head.Kind) {
    case LineKind::Request:
      return TakeRequest(reading, line, number);
    case LineKind::Response:
    case LineKind::Error:
      return TakeAnswer(reading, line);
    case LineKind::Notification:
      return TakeEvent(reading, line, FrameOf(PacketType::Notification, PackedForm(line)), false);
    case LineKind::ErrorNotification:
      return TakeEvent(reading, line, FrameOf(PacketType::ErrorNotification, PackedForm(line)), false);
    case LineKind::Raw:
      if (line.LeftOut > 0) ++reading.LeftOutFrames;
      if (isFromCard && line.LeftOut == 0) TakeEvent(reading, line, line.Raw, false);
      return;
    case LineKind::Ended:
      if (!isFromCard) progress.HasLeft = true;
      // What a card does when its client has gone is the same here.
      if (isFromCard && !progress.HasLeft) TakeEvent(reading, line, {}, true);
      return;
    default:
      return;
  }
}

void RecordedCalls::TakeRequest(Reading& reading, const Line& line, std::size_t number) {
  Reading::Progress& progress = reading.Connections[line.Head.Connection];
  auto& calls = connections_[progress.Place].Calls;
  progress.Unanswered[line.Id] = {calls.size(), line.Head.Time};
  progress.Latest = line.Head.Time;
  RecordedCall& call = calls.emplace_back();
  call.Line = number;
  call.Method = line.Method;
  call.Arguments = ArgumentsForm(line.Method, PackedForm(line), head_.HasContent);
}

void RecordedCalls::TakeAnswer(Reading& reading, const Line& line) {
  Reading::Progress& progress = reading.Connections[line.Head.Connection];
  const auto found = progress.Unanswered.find(line.Id);
  if (found == progress.Unanswered.end()) return;  // its request came before the recording began
  const auto [place, asked] = found->second;
  progress.Unanswered.erase(found);
  RecordedCall& call = connections_[progress.Place].Calls[place];
  call.IsAnswered = true;
  call.AnswerType = line.Head.Kind == LineKind::Response ? PacketType::Response : PacketType::ErrorResponse;
  call.Took = line.Head.Time - asked;
  call.LeftOut = line.LeftOut;
  if (call.LeftOut == 0) call.Answer = PackedForm(line);
}

void RecordedCalls::TakeEvent(Reading& reading, const Line& line, std::string bytes, bool isEnd) {
  const Reading::Progress& progress = reading.Connections[line.Head.Connection];
  RecordedConnection& connection = connections_[progress.Place];
  const bool isFirst = connection.Calls.empty();
  auto& events = isFirst ? connection.Beginning : connection.Calls.back().Events;
  events.push_back({line.Head.Time - progress.Latest, std::move(bytes), isEnd,
                    !isFirst && !connection.Calls.back().IsAnswered});
}

void RecordedCalls::Index() {
  for (RecordedConnection& connection : connections_) {
    for (std::size_t i = 0; i < connection.Calls.size(); ++i) {
      const RecordedCall& call = connection.Calls[i];
      auto& equal = connection.Equal[EqualityOf(call.Method, call.Arguments)];
      if (equal.empty()) connection.OfMethod[call.Method].push_back(i);
      equal.push_back(i);
    }
  }
}

std::string RecordedCalls::GetSerialNumber() const {
  if (!head_.SerialNumber.empty()) return head_.SerialNumber;
  for (const RecordedConnection& connection : connections_) {
    const auto found = connection.OfMethod.find("GetCardSerialNumber");
    if (found == connection.OfMethod.end()) continue;
    const RecordedCall& call = connection.Calls[found->second.front()];
    std::size_t used = 0;
    if (!call.IsAnswered || call.AnswerType != PacketType::Response) continue;
    const msgpack::object_handle answer = Body::Unpack(call.Answer, used, 1);
    if (answer->type == msgpack::type::STR) return answer->as<std::string>();
  }
  return {};
}

}  // namespace VELTRO::KELVO::VirtualCard
