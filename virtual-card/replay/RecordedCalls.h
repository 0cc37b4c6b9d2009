// A recorded session, as it is answered from: the calls of each connection, with what came after them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "rpc/Packet.h"
#include "session/SessionReader.h"

namespace VELTRO::KELVO::VirtualCard {

// What the card sent, or did, that is no answer.
struct RecordedEvent {
  std::chrono::microseconds Delay{};  // since the call that it follows, or since the connection's beginning
  std::string Bytes;
  bool IsEnd = false;    // it closed the connection
  bool IsAhead = false;  // of the answer to that call
};

struct RecordedCall {
  std::size_t Line = 0;  // of the recording
  std::string Method;
  std::string Arguments;  // in the form of ArgumentsForm
  bool IsAnswered = false;
  ClientLib::PacketType AnswerType{};
  std::string Answer;                // behind the request id
  std::uint64_t LeftOut = 0;         // bytes of a file, in place of the answer
  std::chrono::microseconds Took{};  // until it was answered
  std::vector<RecordedEvent> Events;
};

// Calls in the order in which they were made, by method and arguments.
struct RecordedConnection {
  std::uint32_t Number = 0;
  std::vector<RecordedEvent> Beginning;  // ahead of the first call
  std::vector<RecordedCall> Calls;
  std::unordered_map<std::string, std::vector<std::size_t>> Equal;     // by method and arguments
  std::unordered_map<std::string, std::vector<std::size_t>> OfMethod;  // the first of each that are equal
};

// Arguments in a form that is the same for equal ones: JSON, or MessagePack where they stay packed in a recording. What
// files contain is left out unless the recording has it. Throws std::runtime_error for what are no arguments.
std::string ArgumentsForm(std::string_view method, std::span<const char> packed, bool hasContent);
std::string FrameOf(ClientLib::PacketType type, std::string_view body);
// What calls are equal by.
std::string EqualityOf(std::string_view method, std::string_view argumentsForm);

class RecordedCalls {
 public:
  // Reads all of it. A recording that is cut short is taken as far as it goes. Throws as Recording::SessionReader does.
  explicit RecordedCalls(const std::string& path);

  const ClientLib::Recording::SessionHead& GetHead() const { return head_; }
  const std::string& GetPath() const { return path_; }
  // In the order in which they began.
  const std::vector<RecordedConnection>& GetConnections() const { return connections_; }
  // What whoever replays it should know: it is cut short, say.
  const std::vector<std::string>& GetRemarks() const { return remarks_; }
  // The card's, as the recording begins with it or a call was answered with it; else empty.
  std::string GetSerialNumber() const;

 private:
  struct Reading;

  void Take(Reading& reading, const ClientLib::Recording::Line& line, std::size_t number);
  void TakeRequest(Reading& reading, const ClientLib::Recording::Line& line, std::size_t number);
  void TakeAnswer(Reading& reading, const ClientLib::Recording::Line& line);
  void TakeEvent(Reading& reading, const ClientLib::Recording::Line& line, std::string bytes, bool isEnd);
  void Index();

  const std::string path_;
  ClientLib::Recording::SessionHead head_;
  std::vector<RecordedConnection> connections_;
  std::vector<std::string> remarks_;
};

}  // namespace VELTRO::KELVO::VirtualCard
