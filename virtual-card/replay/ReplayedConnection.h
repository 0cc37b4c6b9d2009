// Answers the calls of one connection from a recording.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "replay/RecordedCalls.h"

namespace VELTRO::KELVO::VirtualCard {

// What a call is answered with.
struct ReplayedAnswer {
  const RecordedCall* Call = nullptr;  // the recorded one that it is; null: there is none
  bool IsRepeated = false;             // what came after that call has come already
  bool IsSilent = false;  // the recording ends the connection, or sends bytes, in place of an answer
  std::string Refusal;    // not empty: the answer is this error
  std::string Body;       // else the answer, packed, of this type
  ClientLib::PacketType Type = ClientLib::PacketType::Response;
};

class ReplayedConnection {
 public:
  // Both live longer. Strict: no answer is given more often than it is recorded.
  ReplayedConnection(const RecordedCalls& recording, const RecordedConnection& connection, bool isStrict)
      : recording_(recording), connection_(connection), isStrict_(isStrict) {}

  // Throws std::runtime_error for what are no arguments.
  ReplayedAnswer Answer(std::string_view method, std::span<const char> packedArguments);

 private:
  ReplayedAnswer AnswerWith(std::size_t call, bool isRepeated) const;
  bool AnswerFromHead(std::string_view method, ReplayedAnswer& answer) const;
  std::string TooOften(std::string_view method, std::size_t recorded, std::size_t asked) const;
  std::string NoSuchCall(std::string_view method, const std::string& arguments) const;
  std::string Elsewhere(const std::string& equality) const;
  std::string PlaceOf(const RecordedCall& call) const;

  const RecordedCalls& recording_;
  const RecordedConnection& connection_;
  const bool isStrict_;
  std::unordered_map<const void*, std::size_t> asked_;  // how often, by those that are equal
  std::size_t next_ = 0;                                // behind the latest that was asked
};

}  // namespace VELTRO::KELVO::VirtualCard
